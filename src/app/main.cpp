#include "app/appstartup.h"
#include "core/version.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Zarek"));
    QApplication::setOrganizationName(QStringLiteral("Zarek"));
    QApplication::setApplicationVersion(zarek::version::text());
    return zarek::runZarek(app);
}
