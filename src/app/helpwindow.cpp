#include "helpwindow.h"

#include "app/helptopics.h"

#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace zarek {

HelpWindow::HelpWindow(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("HelpWindow"));
    setWindowTitle(QStringLiteral("Зарек – Помощ"));
    m_browser = new QTextBrowser(this);
    m_browser->setObjectName(QStringLiteral("helpText"));
    m_browser->setOpenLinks(false);
    connect(m_browser, &QTextBrowser::anchorClicked, this, [this](const QUrl &url) { showTopic(url.toString().toInt()); });
    auto *contents = new QPushButton(QStringLiteral("Съдържание"), this);
    contents->setObjectName(QStringLiteral("cmdContents"));
    connect(contents, &QPushButton::clicked, this, [this] { showTopic(helpContentsTopic); });
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_browser);
    layout->addWidget(contents, 0, Qt::AlignLeft);
    resize(720, 560);
    showTopic(helpContentsTopic);
}

void HelpWindow::showTopic(int number)
{
    const HelpTopic *topic = findHelpTopic(number);
    if (!topic)
        topic = findHelpTopic(helpContentsTopic);
    m_current = topic->number;
    m_browser->setHtml(QStringLiteral("<h2>%1</h2>%2").arg(topic->title.toHtmlEscaped(), topic->html));
}

}
