#include "exportservice.h"

#include "forms/messageservice.h"
#include "forms/waitcursor.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace zarek::exportservice {

namespace {

const QString folderKey = QStringLiteral("Settings/ExportFolder");

QSettings settings()
{
    return QSettings(QStringLiteral("Zarek"), QStringLiteral("Zarek"));
}

}

QString folder()
{
    const QString remembered = settings().value(folderKey).toString();
    if (!remembered.isEmpty() && QDir(remembered).exists())
        return remembered;
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QDir(documents).exists() ? documents : QDir::homePath();  // no documents folder: the home folder
}

bool write(const ExportTable &table, const QString &fileName)
{
    return write([&table]() -> Checked<ExportTable> { return table; }, fileName);
}

bool write(const std::function<Checked<ExportTable>()> &table, const QString &fileName)
{
    WaitCursor wait;
    const Checked<ExportTable> made = table();
    if (!made) {
        MessageService::instance().inform(made.message());
        return false;
    }
    if (const auto error = writeTable(made.value(), fileName)) {
        MessageService::instance().inform(*error);
        return false;
    }
    return true;
}

bool chooseAndWrite(QWidget *parent, const QString &title, const QString &subject,
                    const std::function<Checked<ExportTable>()> &table)
{
    const QString fileName = QFileDialog::getSaveFileName(
        parent, title, folder() + QLatin1Char('/') + exportFileName(subject) + QStringLiteral(".xlsx"),
        QStringLiteral("Книга на Excel (*.xlsx);;Текст, разделен с точка и запетая (*.csv)"));
    if (fileName.isEmpty() || !write(table, fileName))
        return false;
    settings().setValue(folderKey, QFileInfo(fileName).absolutePath());  // the next list goes beside it
    return true;
}

}
