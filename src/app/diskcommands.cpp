#include "diskcommands.h"

#include "data/archive.h"
#include "data/restore.h"
#include "data/yearclose.h"
#include "data/firmstore.h"
#include "forms/commands.h"
#include "forms/messageservice.h"
#include "forms/progdialog.h"
#include "forms/waitcursor.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QPointer>
#include <QStandardPaths>

namespace zarek {

namespace {

DiskCommandHooks &hooks()
{
    static DiskCommandHooks installed;
    return installed;
}

// The folder of the last file chosen in either dialog, for the next one; empty before the first.
QString &lastFolder()
{
    static QString folder;
    return folder;
}

QDateTime now()
{
    return hooks().now ? hooks().now() : QDateTime::currentDateTime();
}

QString dataFolder(const QSqlDatabase &db)
{
    return hooks().dataFolder.isEmpty() ? archiveFolder(db) : hooks().dataFolder;
}

QString shown(const QString &path)
{
    return QDir::toNativeSeparators(path);
}

// The file the user chose; empty when the dialog was cancelled. Nothing is remembered from an
// earlier choice, so a cancelled dialog never acts on the file of the last one.
QString chooseFile(ArchiveDialog kind, CommandContext &context)
{
    if (hooks().chooseFile)
        return hooks().chooseFile(kind);
    QPointer<QFileDialog> dialog = makeArchiveFileDialog(kind, context.window, archiveDialogFolder(context.db));
    // F1 in the dialog tells about its command.
    if (context.helpTopic)
        dialog->setProperty("helpTopic", context.helpTopic(kind == ArchiveDialog::Save ? QStringLiteral("mnuDiskZap")
                                                                                        : QStringLiteral("mnuDiskZar")));
    const bool chosen = dialog->exec() == QDialog::Accepted && !dialog->selectedFiles().isEmpty();
    const QString file = chosen ? dialog->selectedFiles().constFirst() : QString();
    delete dialog;
    if (!file.isEmpty())
        lastFolder() = QFileInfo(file).absolutePath();
    return file;
}

// The progress box of one piece of work, shown when it lasts; it goes with the work.
class Progress {
public:
    Progress(const QString &label, QWidget *parent) : m_box(label, 1, parent) {}
    ArchiveProgress callback()
    {
        return [this](int done, int total) {
            m_box.setMaximum(total);
            m_box.setValue(done);
        };
    }

private:
    WaitCursor m_wait;
    ProgDialog m_box;
};

// "1 курс", "3 курса": a count with its noun.
QString counted(qint64 count, const QString &one, const QString &many)
{
    return QLocale(QLocale::Bulgarian).toString(count) + QLatin1Char(' ') + (count == 1 ? one : many);
}

void saveArchive(CommandRegistry &commands)
{
    CommandContext &context = commands.context();
    QString path = chooseFile(ArchiveDialog::Save, context);
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += QStringLiteral(".abd");
    Checked<RowCounts> written = RowCounts();
    {
        Progress progress(QStringLiteral("Запис на данни..."), context.window);
        written = writeArchive(context.db, path, progress.callback());
    }
    if (!written) {
        MessageService::instance().inform(written.message());
        return;
    }
    MessageService::instance().inform(
        {QString(),
         QStringLiteral("Данните са записани във файла:\n%1\nАрхивът е проверен: %2, %3.")
             .arg(shown(QFileInfo(path).absoluteFilePath()),
                  counted(written.value().value(QStringLiteral("tabl")), QStringLiteral("курс"), QStringLiteral("курса")),
                  counted(written.value().value(QStringLiteral("Sklad")), QStringLiteral("складово движение"),
                          QStringLiteral("складови движения"))),
         UserMessage::Icon::Information});
}

void loadArchive(CommandRegistry &commands)
{
    CommandContext &context = commands.context();
    const QString path = chooseFile(ArchiveDialog::Open, context);
    if (path.isEmpty())
        return;
    const QString folder = dataFolder(context.db);
    PreparedArchive archive;
    std::optional<UserMessage> refusal;
    {
        WaitCursor wait;
        refusal = archive.prepare(path, folder);
    }
    if (refusal) {
        MessageService::instance().inform(*refusal);
        return;
    }
    // No screen stays open on the data it replaces; one that holds typing asks first, and keeping
    // it stops the restore here, with nothing changed.
    if (!commands.closeWindows())
        return;
    Checked<RestoreOutcome> restored = RestoreOutcome();
    {
        Progress progress(QStringLiteral("Зареждане на архивни данни..."), context.window);
        restored = restoreArchive(context.db, archive, folder, now(), progress.callback());
    }
    if (!restored) {
        MessageService::instance().inform(restored.message());
        return;
    }
    const FirmProfileLoad firm = LoadFirmProfile(context.db);
    if (firm.profile && context.firmChanged)
        context.firmChanged(*firm.profile);
    MessageService::instance().inform(
        {QString(),
         QStringLiteral("Данните са заредени от файла:\n%1\nДосегашните данни са запазени във файла:\n%2")
             .arg(shown(archive.archivePath()), shown(restored.value().safetyCopy)),
         UserMessage::Icon::Information});
}

void closeTheYear(CommandRegistry &commands)
{
    CommandContext &context = commands.context();
    context.setPanel(QStringLiteral("Приключване на годината..."));
    if (!MessageService::instance().askDestructive(
            {QString(), QStringLiteral("Данните ще бъдат изтрити!\n\nДа продължа ли?"), UserMessage::Icon::Question}))
        return;
    if (!commands.closeWindows())
        return;
    const QString folder = dataFolder(context.db);
    const QDateTime moment = now();
    const int year = closingYear(context.db, moment.date());
    const QString path = yearArchivePath(folder, year);
    const bool replace = QFileInfo::exists(path);
    if (replace
        && !MessageService::instance().askYesNo(
            {QString(),
             QStringLiteral("Архивът на %1 година вече е записан:\n%2\nДа го заменя ли с нов? "
                            "Досегашният ще остане в същата папка под друго име.")
                 .arg(year)
                 .arg(shown(path)),
             UserMessage::Icon::Question}))
        return;
    Checked<YearCloseOutcome> closed = YearCloseOutcome();
    {
        Progress progress(QStringLiteral("Приключване на годината..."), context.window);
        closed = closeYear(context.db, folder, year, replace, moment, progress.callback());
    }
    if (!closed) {
        MessageService::instance().inform(closed.message());
        return;
    }
    QString text = QStringLiteral("Операцията завърши успешно\nАрхив на %1 година:\n%2").arg(year).arg(shown(closed.value().archive));
    if (!closed.value().previous.isEmpty())
        text += QStringLiteral("\nДосегашният архив е запазен като:\n%1").arg(shown(closed.value().previous));
    MessageService::instance().inform({QString(), text, UserMessage::Icon::Information});
}

}

QString archiveDialogFolder(const QSqlDatabase &db)
{
    if (!lastFolder().isEmpty())
        return lastFolder();
    const QString folder = dataFolder(db);
    return QFileInfo(folder).isDir() ? folder : QDir::homePath();  // a shared database kept no file here yet
}

QFileDialog *makeArchiveFileDialog(ArchiveDialog kind, QWidget *parent, const QString &folder)
{
    const bool save = kind == ArchiveDialog::Save;
    auto *dialog = new QFileDialog(parent, save ? QStringLiteral("Запис на данни") : QStringLiteral("Зареждане на архивни данни"),
                                   folder);
    dialog->setObjectName(QStringLiteral("CommonDialog1"));
    dialog->setNameFilters({QStringLiteral("Архивни файлове с данни (*.abd)"), QStringLiteral("Всички файлове (*.*)")});
    dialog->setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog->setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    if (save) {
        // Qt asks before a file is overwritten unless told not to.
        dialog->setDefaultSuffix(QStringLiteral("abd"));
        dialog->selectFile(QStringLiteral("Зарек %1.abd").arg(now().date().toString(QStringLiteral("yyyy-MM-dd"))));
    }
    return dialog;
}

void setDiskCommandHooks(const DiskCommandHooks &hooks_)
{
    hooks() = hooks_;
}

void registerDiskCommands(CommandRegistry &commands)
{
    commands.add(QStringLiteral("mnuDiskZap"), [&commands] { saveArchive(commands); });
    commands.add(QStringLiteral("mnuDiskZar"), [&commands] { loadArchive(commands); });
    commands.add(QStringLiteral("mnuNewPer"), [&commands] { closeTheYear(commands); });
}

}
