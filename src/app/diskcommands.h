#pragma once

#include <QDateTime>
#include <QSqlDatabase>
#include <QString>
#include <functional>

class QFileDialog;
class QWidget;

namespace zarek {

class CommandRegistry;

// The "Дискети" menu: "Записване" (an archive of the whole database), "Зареждане" (an archive
// loaded in place of the data, after a safety copy) and "Нова година" (the year's archive, then
// the courses deleted). The mechanism is data/archive.h; these are its dialogs and messages.
void registerDiskCommands(CommandRegistry &commands);

enum class ArchiveDialog { Save, Open };

// Qt's file dialog of "Записване" or "Зареждане": its title, the filter of archive files and, for
// saving, the default extension and the question before a file is overwritten.
QFileDialog *makeArchiveFileDialog(ArchiveDialog kind, QWidget *parent, const QString &folder = QString());

// The folder both dialogs open in: the folder of the last archive chosen in this run, else the
// data folder where the database and its archives are kept (the home folder while it does not exist).
QString archiveDialogFolder(const QSqlDatabase &db);

// What tests give instead of the user and the machine: the file chosen (empty as if the dialog was
// cancelled), the folder of safety copies and year archives, and the clock. Empty members keep
// the real dialog, the database's own folder and the system clock.
struct DiskCommandHooks {
    std::function<QString(ArchiveDialog)> chooseFile;
    QString dataFolder;
    std::function<QDateTime()> now;
};
void setDiskCommandHooks(const DiskCommandHooks &hooks);

}
