#include "qttranslations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace zarek {

bool loadQtTranslations(QCoreApplication &app)
{
    auto *translator = new QTranslator(&app);
    if (!translator->load(QLocale(QLocale::Bulgarian, QLocale::Bulgaria), QStringLiteral("qtbase"), QStringLiteral("_"),
                          QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        delete translator;
        return false;
    }
    return QCoreApplication::installTranslator(translator);
}

}
