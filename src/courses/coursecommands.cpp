#include "courses/coursecommands.h"

#include "clients/clientscommands.h"
#include "courses/coursejournal.h"
#include "courses/coursereports.h"
#include "courses/editkm.h"
#include "courses/kurs.h"
#include "courses/searchcommand.h"
#include "forms/commandday.h"
#include "reports/reportpreview.h"

namespace zarek {

namespace {

// A new client the editor adds to the register opens there, for its ЕИК and address.
void offerRegister(CommandRegistry &commands, Kurs &screen)
{
    QObject::connect(&screen, &Kurs::newClientAdded, &screen,
                     [&commands, &screen](qint64 id) { clients::editClientOver(commands, &screen, id); });
}

}

void registerCourseCommands(CommandRegistry &commands)
{
    CommandContext &context = commands.context();
    addSearchCommand(commands,
                     {QStringLiteral("mnuSprKola"), SearchMode::Kola, SearchDialogKind::Seek,
                      QStringLiteral("Търсене - Курсове на кола №"), QStringLiteral("Справка за кола")},
                     [&context](const SearchConditions &c) {
                         showReport(streamReportKola(c, context.db, context.firm(), commandDay()), context.window);
                     });
    addSearchCommand(commands,
                     {QStringLiteral("mnuSprPer"), SearchMode::All, SearchDialogKind::SeekAlt,
                      QStringLiteral("Търсене - Всички курсове на фирмата"), QStringLiteral("Справка за период")},
                     [&context](const SearchConditions &c) {
                         showReport(streamReportAll(c, context.db, context.firm(), commandDay()), context.window);
                     });
    addSearchCommand(commands,
                     {QStringLiteral("mnuSprKlient"), SearchMode::Klients, SearchDialogKind::Seek,
                      QStringLiteral("Търсене - Всички курсове на клиент"), QStringLiteral("Справка за клиент")},
                     [&context](const SearchConditions &c) {
                         showReport(streamReportKlient(c, context.db, context.firm(), commandDay()), context.window);
                     });
    addSearchCommand(commands,
                     {QStringLiteral("mnuDataKorКм"), SearchMode::Kola, SearchDialogKind::Seek,
                      QStringLiteral("Търсене - Корекция КМ на курсовете на кола №"), QStringLiteral("Корекция КМ на курс"),
                      SearchBusy::TextOnly},
                     [&commands, &context](const SearchConditions &c) {
                         context.setPanel(QStringLiteral("Корекция на курсове..."));
                         EditKM screen(c.SeekKola, c.period, context.db, context.window);
                         commands.runModal(screen, context.helpTopic(QStringLiteral("mnuDataKorКм")));
                     });
    addSearchCommand(commands,
                     {QStringLiteral("mnuDataKyrc"), SearchMode::Kola, SearchDialogKind::Seek,
                      QStringLiteral("Търсене - Корекция на курсове на кола №"), QStringLiteral("Корекция на курс")},
                     [&commands, &context](const SearchConditions &c) {
                         context.searchMode = SearchMode::EditKurs;
                         Kurs screen(context.db, c.SeekKola, c.period, context.window);
                         offerRegister(commands, screen);
                         commands.runModal(screen, context.helpTopic(QStringLiteral("mnuDataKyrc")));
                     });
    commands.add(QStringLiteral("mnuSprJournal"), [&commands, &context] {
        context.setPanel(QStringLiteral("Журнал на курсовете"));
        commands.showOnce(
            QStringLiteral("CourseJournal"),
            [&commands, &context]() -> QWidget * {
                auto *journal = new CourseJournal(context.db, context.window);
                journal->openCourse = [&commands, &context](qint64 id) {
                    context.searchMode = SearchMode::EditKurs;
                    const std::unique_ptr<Kurs> screen = Kurs::forCourse(context.db, id, context.window);
                    if (!screen)
                        return true;  // gone meanwhile: the journal reads again
                    offerRegister(commands, *screen);
                    commands.runModal(*screen, context.helpTopic(QStringLiteral("mnuDataKyrc")));
                    return true;
                };
                return journal;
            },
            context.helpTopic(QStringLiteral("mnuSprJournal")));
    });
    commands.add(QStringLiteral("mnuDataNew"), [&commands, &context] {
        context.setPanel(QStringLiteral("Въвеждане на нов курс"));
        context.searchMode = SearchMode::NewKurs;
        Kurs screen(context.db, context.window);
        offerRegister(commands, screen);
        commands.runModal(screen, context.helpTopic(QStringLiteral("mnuDataNew")));
    });
}

}
