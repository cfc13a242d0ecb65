#include "helptopics.h"

#include "app/menutree.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTextDocument>
#include <algorithm>

namespace zarek {

namespace {

// A page of the resources: ":/help/<number>.html", its first line the <title> of the topic.
QString readPage(const QString &name)
{
    QFile file(QStringLiteral(":/help/") + name);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll());
}

// The guide, written in Markdown in docs/guide and shown here with its pictures.
std::optional<HelpTopic> guideTopic()
{
    QFile file(QStringLiteral(":/guide/README.md"));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QString markdown = QString::fromUtf8(file.readAll());
    // The first heading is the topic's title.
    static const QRegularExpression heading(QStringLiteral("^#\\s+([^\\n]*)\\n"));
    QString title = QStringLiteral("Ръководство");
    if (const auto match = heading.match(markdown); match.hasMatch()) {
        title = match.captured(1).trimmed();
        markdown.remove(0, match.capturedLength());
    }
    QTextDocument document;
    document.setMarkdown(markdown);
    QString html = document.toHtml();
    html.replace(QStringLiteral("src=\"images/"), QStringLiteral("src=\"qrc:/guide/images/"));
    return HelpTopic{helpGuideTopic, title, html};
}

std::optional<HelpTopic> topicOfPage(int number)
{
    if (number == helpKeysTopic)
        return HelpTopic{helpKeysTopic, QStringLiteral("Клавишни комбинации"), keyboardShortcutsHtml()};
    if (number == helpGuideTopic)
        return guideTopic();
    QString html = readPage(QString::number(number) + QStringLiteral(".html"));
    if (html.isEmpty())
        return std::nullopt;
    static const QRegularExpression titleTag(QStringLiteral("^\\s*<title>(.*?)</title>\\s*"));
    QString title;
    if (const auto match = titleTag.match(html); match.hasMatch()) {
        title = match.captured(1);
        html.remove(0, match.capturedLength());
    }
    return HelpTopic{number, title, html};
}

}

QString keyboardShortcutsHtml()
{
    QString html = QStringLiteral("<table cellpadding=\"3\">");
    for (const KeyRow &row : keyboardShortcuts())
        html += QStringLiteral("<tr><td><b>%1</b></td><td>%2</td></tr>").arg(row.keys.toHtmlEscaped(), row.action.toHtmlEscaped());
    return html + QStringLiteral("</table>");
}

const QList<HelpTopic> &helpTopics()
{
    static const QList<HelpTopic> topics = [] {
        // The menus' topics in menu order, then the screens' own topics by number.
        QList<int> numbers;
        for (const MenuEntry &entry : menuTree()) {
            if (entry.help > 0 && entry.help != helpContentsTopic && !numbers.contains(entry.help))
                numbers.append(entry.help);
        }
        QList<int> screens;
        for (const QString &name : QDir(QStringLiteral(":/help")).entryList({QStringLiteral("*.html")})) {
            bool isNumber = false;
            const int number = name.chopped(5).toInt(&isNumber);
            if (isNumber && number != helpContentsTopic && !numbers.contains(number))
                screens.append(number);
        }
        std::sort(screens.begin(), screens.end());
        numbers += screens;

        QList<HelpTopic> list;
        for (int number : std::as_const(numbers)) {
            if (auto topic = topicOfPage(number))
                list.append(*topic);
        }
        QString contents = QStringLiteral("<p>Зарек води курсовете на транспортната фирма и всичко, което следва от "
                                          "тях. Изберете тема:</p><ul>");
        for (const HelpTopic &t : std::as_const(list))
            contents += QStringLiteral("<li><a href=\"%1\">%2</a></li>").arg(t.number).arg(t.title.toHtmlEscaped());
        contents += QStringLiteral("</ul><p><b>F1</b> върху команда от менюто или в отворен екран показва темата "
                                   "му.</p>") + readPage(QStringLiteral("period-note.html"));
        list.prepend({helpContentsTopic, QStringLiteral("Съдържание"), contents});
        return list;
    }();
    return topics;
}

const HelpTopic *findHelpTopic(int number)
{
    for (const HelpTopic &t : helpTopics()) {
        if (t.number == number)
            return &t;
    }
    return nullptr;
}

}
