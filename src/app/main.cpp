#include "app/appstartup.h"
#include "app/desktopconventions.h"
#include "app/qttranslations.h"
#include "core/version.h"

#include <QApplication>
#include <cstdio>

int main(int argc, char *argv[])
{
    // --help and --version answer without a display.
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    const zarek::StartOptions options = zarek::parseStartOptions(arguments);
    if (options.answers()) {
        const QByteArray text = options.answer.toUtf8();
        std::fwrite(text.constData(), 1, size_t(text.size()), options.answerExitCode == 0 ? stdout : stderr);
        return options.answerExitCode;
    }

    QApplication app(argc, argv);
    std::future<void> fonts = zarek::startReadingFonts();
    QApplication::setApplicationName(QStringLiteral("Zarek"));
    QApplication::setOrganizationName(QStringLiteral("Zarek"));
    QApplication::setApplicationVersion(zarek::version::text());
    zarek::applyDesktopIdentity(app);
    zarek::DesktopConventions::install(app);
    zarek::loadQtTranslations(app);  // before the first dialog
    return zarek::runZarek(app, options, std::move(fonts));
}
