#include "windowtitle.h"

#include <QRegularExpression>

namespace zarek {

QString screenOfCaption(const QString &caption)
{
    // "Зарек", a version such as 2.3 or 2.3.4, then a dash of any kind (or nothing more).
    static const QRegularExpression ownPrefix(QStringLiteral("^\\s*Зарек(\\s+\\d+(\\.\\d+)*)?\\s*([-–—]|$)"));
    QString screen = caption;
    if (const auto match = ownPrefix.match(screen); match.hasMatch())
        screen.remove(0, match.capturedLength());
    return screen.trimmed();
}

QString screenTitle(const QString &caption)
{
    const QString screen = screenOfCaption(caption);
    return screen.isEmpty() ? QStringLiteral("Зарек") : QStringLiteral("Зарек – ") + screen;
}

QString fileNameOf(const QString &text)
{
    static const QString forbidden = QStringLiteral("/\\:*?\"<>|");
    QString name = text;
    for (QChar &c : name) {
        if (forbidden.contains(c) || c.unicode() < 0x20)
            c = QLatin1Char('-');
    }
    return name.simplified();
}

}
