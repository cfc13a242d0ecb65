#include "documentscommands.h"

#include "documents/documents.h"
#include "documents/documentstore.h"
#include "documents/duedocuments.h"
#include "documents/duenotice.h"
#include "forms/commands.h"
#include "forms/recordform.h"

#include <QSettings>

namespace zarek::documents {

namespace {

const QString documentsMenu = QStringLiteral("mnuDataDok");
const QString dueMenu = QStringLiteral("mnuSprDok");

Documents *openDocuments(CommandRegistry &commands);

void openDueList(CommandRegistry &commands)
{
    CommandContext &context = commands.context();
    context.setPanel(QStringLiteral("Изтичащи документи"));
    commands.showReplacing(
        dueMenu,
        [&commands, &context] {
            auto *screen = new DueDocuments(context.db, context.firm(), context.window);
            QObject::connect(screen, &DueDocuments::openDocument, screen, [&commands](qint64 id) {
                if (Documents *documents = openDocuments(commands))
                    documents->showDocument(id);
            });
            return screen;
        },
        context.helpTopic(dueMenu));
}

Documents *openDocuments(CommandRegistry &commands)
{
    CommandContext &context = commands.context();
    QWidget *window = commands.showOnce(
        documentsMenu,
        [&commands, &context] {
            auto *screen = new Documents(context.db, context.window);
            QObject::connect(screen, &Documents::dueListRequested, screen, [&commands] { openDueList(commands); });
            // A document written refreshes an open due list.
            QObject::connect(screen->recordForm(), &RecordForm::saved, screen, [&commands] {
                if (auto *due = qobject_cast<DueDocuments *>(commands.openWindow(dueMenu)))
                    due->refresh();
            });
            return screen;
        },
        context.helpTopic(documentsMenu));
    return qobject_cast<Documents *>(window);
}

}

void registerDocumentCommands(CommandRegistry &commands)
{
    commands.add(documentsMenu, [&commands] { openDocuments(commands); });
    commands.add(dueMenu, [&commands] { openDueList(commands); });
    // Another screen that names a document (by its id) opens it in "Документи".
    commands.addTarget(documentsMenu, [&commands](const std::any &given) {
        if (const auto *id = std::any_cast<qint64>(&given)) {
            if (Documents *documents = openDocuments(commands))
                documents->showDocument(*id);
        }
    });
}

bool showDueNotice(CommandRegistry &commands, QSettings &settings, const QString &user, const QDate &today)
{
    if (!dueNoticeWanted(settings, user))
        return false;
    const auto counted = DocumentStore(commands.context().db).dueCount(today);
    if (!counted || counted.value().first == 0)
        return false;
    auto *notice = new DueNotice(counted.value().first, counted.value().second, commands.context().window);
    notice->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(notice, &DueNotice::listRequested, notice, [&commands] { openDueList(commands); });
    const QString fileName = settings.fileName();
    const QSettings::Format format = settings.format();
    const QString group = settings.group();
    QObject::connect(notice, &DueNotice::switchedOff, notice, [fileName, format, group, user](bool off) {
        QSettings store(fileName, format);
        store.beginGroup(group);
        setDueNoticeWanted(store, user, !off);
    });
    notice->showInCorner();
    return true;
}

}
