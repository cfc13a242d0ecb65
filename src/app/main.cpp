#include "app/appstartup.h"
#include "app/qttranslations.h"
#include "core/version.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Zarek"));
    QApplication::setOrganizationName(QStringLiteral("Zarek"));
    QApplication::setApplicationVersion(zarek::version::text());
    zarek::loadQtTranslations(app);  // before the first dialog
    return zarek::runZarek(app);
}
