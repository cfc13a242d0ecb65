#include "klients.h"

#include "core/dates.h"
#include "core/formats.h"
#include "core/valueformat.h"
#include "core/version.h"
#include "courses/coursecheck.h"
#include "data/currencyrows.h"
#include "data/scratchdatabase.h"
#include "forms/messageservice.h"
#include "forms/progdialog.h"
#include "forms/waitcursor.h"
#include "reports/reportpreview.h"
#include "settlement/clientstatement.h"
#include "settlement/klfile.h"
#include "settlement/klientsreport.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QStandardPaths>
#include <QTableView>

namespace zarek {

using namespace settlement;  // the client statement's lines and tax

namespace {

// The folder the file dialogs open in: the last one used in this run, at first the documents.
QString &lastFolder()
{
    static QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return folder;
}

void rememberFolder(const QString &path)
{
    lastFolder() = QFileInfo(path).absolutePath();
}

QString askFileToOpen(QWidget *parent)
{
    return QFileDialog::getOpenFileName(parent, QStringLiteral("Зареждане на данни за клиенти"), lastFolder(),
                                        statementFileFilter());
}

QString askFileToSave(QWidget *parent)
{
    QFileDialog dialog(parent, QStringLiteral("Запис на данни за клиенти"), lastFolder(), statementFileFilter());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(statementFileSuffix());
    dialog.setOption(QFileDialog::DontConfirmOverwrite, false);  // asks before overwriting
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    return dialog.selectedFiles().constFirst();
}

UserMessage rateMessage(const QVariant &value)
{
    return UserMessage::twoLines(QStringLiteral("ГРЕШКА при запис!"),
                                 QStringLiteral("\"%1\" не е тарифа: нужно е число от 0 до %2!")
                                     .arg(formatReportValue(value, {}), formatFixed(maxCourseRate, 0)),
                                 QStringLiteral("Моля, въведете тарифата отново."));
}

UserMessage switchedMessage(const QString &path, const StatementHeading &heading)
{
    return UserMessage::twoLines(QStringLiteral("Зареждане на файл"),
                                 QStringLiteral("Файлът \"%1\" е справка за клиент \"%2\" за периода от %3 до %4.")
                                     .arg(QFileInfo(path).fileName(), heading.klient, formatDate(heading.period.from),
                                          formatDate(heading.period.to)),
                                 QStringLiteral("Справката е превключена към този клиент и период."),
                                 UserMessage::Icon::Information);
}

UserMessage kmMessage(const QVariant &value)
{
    return UserMessage::twoLines(QStringLiteral("ГРЕШКА при запис!"),
                                 QStringLiteral("\"%1\" не са километри: нужно е цяло число от 0 до 32767!")
                                     .arg(formatReportValue(value, {})),
                                 QStringLiteral("Моля, въведете километрите отново."));
}

}

ResultGridConfig Klients::config(const QString &klient)
{
    ResultGridConfig config;
    config.formName = QStringLiteral("Klients");
    config.caption = QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - Курсове на ") + klient;
    config.text1 = QStringLiteral("Курсове за клиент към ") + formatDate(QDate::currentDate());
    config.columns = {
        {QStringLiteral("Data"), QStringLiteral("Дата"), 1200, {}, Qt::AlignLeft},
        {QStringLiteral("Marsh"), QStringLiteral("Маршрут"), 2600, {}, Qt::AlignLeft},
        {QStringLiteral("VidTovar"), QStringLiteral("Товар"), 2500, {}, Qt::AlignLeft},
        {QStringLiteral("Kola"), QStringLiteral("Кола"), 1200, {}, Qt::AlignHCenter, false, false, false, true},
        {QStringLiteral("KM"), QStringLiteral("Км"), 750, {}, Qt::AlignRight, true},
        {QStringLiteral("Ton"), QStringLiteral("Тонаж"), 900, QStringLiteral("###0.000"), Qt::AlignRight},
        {QStringLiteral("Tarifa"), QStringLiteral("Тар."), 750, QStringLiteral("###0.000#####"), Qt::AlignRight, true},
        {QStringLiteral("Suma"), QStringLiteral("Сума"), 1100, QStringLiteral("###0.00"), Qt::AlignRight, false, false,
         false, false, true},
    };
    config.dateField = QStringLiteral("Data");
    config.sumCaption = QStringLiteral("Всичко:");
    config.sumCaptionName = QStringLiteral("Label1");
    config.sumLabelName = QStringLiteral("Label4");
    config.legend = {{QStringLiteral("Label5"), QStringLiteral("F4")},
                     {QStringLiteral("Label6"), QStringLiteral("- Корекция")},
                     {QStringLiteral("Label7"), QStringLiteral("Delete")},
                     {QStringLiteral("Label8"), QStringLiteral("- Изтрива ред")}};
    config.editSwitchKeys = true;
    config.emptyMessage = QStringLiteral("Няма курсове при тези условия!\n\nПроверете си условията за търсене!");
    return config;
}

Klients::Klients(const SearchConditions &conditions, QSqlDatabase db, std::unique_ptr<ScratchDatabase> scratch,
                 std::function<const FirmProfile &()> firm, QWidget *parent)
    : ResultGridScreen(config(conditions.SeekKlient), parent), chooseFileToOpen(askFileToOpen),
      chooseFileToSave(askFileToSave), m_conditions(conditions), m_scratch(std::move(scratch)), m_firm(std::move(firm))
{
    m_sumKmLabel = addTotalLabel(QStringLiteral("Label2"));
    addTotalLabel(QStringLiteral("lblKm"), QStringLiteral("км"), false);
    m_sumTonLabel = addTotalLabel(QStringLiteral("Label3"));
    addTotalLabel(QStringLiteral("lblTon"), QStringLiteral("тон"), false);
    m_openFile = addButton(QStringLiteral("cmdOpenFile"), QStringLiteral("Зареди файл"));
    m_saveFile = addButton(QStringLiteral("cmdSaveFile"), QStringLiteral("Запис файл"));
    m_saveFile->setEnabled(false);  // a list nobody touched is not saved
    connect(m_openFile, &QPushButton::clicked, this, &Klients::openFile);
    connect(m_saveFile, &QPushButton::clicked, this, &Klients::saveFile);
    model()->setEditHook([this](int row, const QString &field, const QVariant &value) {
        return writeCell(row, field, value);
    });
    load(std::move(db));
}

Klients::~Klients() = default;

ScratchDatabase *Klients::scratch()
{
    std::optional<UserMessage> refusal = writeWorkingList();
    if (!refusal)
        refusal = writePrintCopy();
    if (refusal)
        MessageService::instance().inform(*refusal);
    return m_scratch.get();
}

void Klients::load(QSqlDatabase db)
{
    WaitCursor wait;
    const Checked<RowSet> courses = KlientsStore::clientCourses(db, m_conditions);
    if (!courses) {
        MessageService::instance().inform(courses.message());
        return;
    }
    m_unwritten = courses.value();
    m_listWritten = false;
    setRows(KlientsStore::workingRows(m_unwritten));
    if (!m_unwritten.isEmpty())
        showSums(m_unwritten, QStringLiteral("data"), QStringLiteral("km"), QStringLiteral("ton"), QStringLiteral("bruto"));
}

std::optional<UserMessage> Klients::writeWorkingList()
{
    if (m_listWritten)
        return std::nullopt;
    WaitCursor wait;
    if (auto refusal = m_scratch->RebuildScratchTable(QStringLiteral("TempKlients")))
        return refusal;
    KlientsStore store(m_scratch->db());
    ProgDialog progress(QStringLiteral("Обработка на курсовете на клиент..."), m_unwritten.rowCount() + 1, this);
    if (auto refusal = store.fillWorkingList(m_unwritten, [&progress](int done) { progress.setValue(done); }))
        return refusal;
    m_listWritten = true;
    m_unwritten = RowSet();
    return std::nullopt;
}

std::optional<UserMessage> Klients::writePrintCopy()
{
    if (!m_unwrittenCopy)
        return std::nullopt;
    WaitCursor wait;
    KlientsStore store(m_scratch->db());
    ProgDialog progress(QStringLiteral("Обработвам данните за справката..."), m_unwrittenCopy->rowCount() + 1, this);
    if (auto refusal = store.writePrintCopy(*m_unwrittenCopy, [&progress](int done) { progress.setValue(done); }))
        return refusal;
    m_unwrittenCopy.reset();
    return std::nullopt;
}

// The sums under the grid. The money of courses of both currencies adds up in euro, each leva sum converted.
void Klients::showSums(const RowSet &rows, const QString &dateColumn, const QString &kmColumn, const QString &tonColumn,
                       const QString &moneyColumn)
{
    m_sumKm = 0;
    m_sumTon = 0;
    m_sumBruto = Money();
    const int date = rows.column(dateColumn);
    const int km = rows.column(kmColumn);
    const int ton = rows.column(tonColumn);
    const int money = rows.column(moneyColumn);
    const auto number = [&rows](int row, int column) { return column < 0 ? 0.0 : rows.value(row, column).toDouble(); };
    for (int row = 0; row < rows.rowCount(); ++row) {
        m_sumKm += wholeKm(number(row, km));
        m_sumTon += number(row, ton);
        m_sumBruto += convertAmount(Money::fromAmount(number(row, money)), zarek::rowCurrency(books(), rows, row, date),
                                    totalsCurrency());
    }
    m_sumKmLabel->setText(formatFixed(m_sumKm, 0));
    m_sumTonLabel->setText(formatFixed(m_sumTon, 2));
    setRunningTotal(m_sumBruto, true);
}

bool Klients::keyPressed(QKeyEvent *key)
{
    switch (key->key()) {
    case Qt::Key_F4:
        touch();
        return false;  // and the grid allows editing
    case Qt::Key_Delete:
        setEditingAllowed(false);
        touch();
        deleteCurrentRow();
        return true;
    default:
        return false;
    }
}

// A touched list can be saved, and no other file loaded over it.
void Klients::touch()
{
    m_dirty = true;
    m_saveFile->setEnabled(true);
    m_saveFile->setVisible(true);
    m_openFile->setEnabled(false);
    m_openFile->setVisible(false);
}

void Klients::deleteCurrentRow()
{
    const int row = currentRow();
    if (row < 0)
        return;
    const int column = grid()->currentIndex().column();
    if (auto refusal = writeWorkingList()) {
        MessageService::instance().inform(*refusal);
        return;
    }
    KlientsStore store(m_scratch->db());
    if (auto refusal = store.removeRow(model()->value(row, QStringLiteral("RowKey")).toLongLong())) {
        MessageService::instance().inform(*refusal);
        return;
    }
    model()->takeRow(row);
    if (model()->rowCount() > 0)
        grid()->setCurrentIndex(model()->index(std::min(row, model()->rowCount() - 1), std::max(column, 0)));
}

std::optional<UserMessage> Klients::writeCell(int row, const QString &field, const QVariant &value)
{
    QVariant stored = value;
    if (field == QLatin1String("KM")) {
        const std::optional<qlonglong> km = statementKm(value.toDouble());
        if (!km)
            return kmMessage(value);
        stored = *km;
    } else if (field == QLatin1String("Tarifa")) {
        const std::optional<double> rate = statementRate(value.toDouble());
        if (!rate)
            return rateMessage(value);
        stored = *rate;
    }
    if (auto refusal = writeWorkingList())
        return refusal;
    KlientsStore store(m_scratch->db());
    return store.setValue(model()->value(row, QStringLiteral("RowKey")).toLongLong(), field, stored);
}

void Klients::rebind(const RowSet &rows)
{
    model()->setRows(rows);
    if (model()->rowCount() > 0) {
        grid()->setCurrentIndex(model()->index(0, 0));
        grid()->setFocus();
    }
}

void Klients::openFile()
{
    const QString path = chooseFileToOpen ? chooseFileToOpen(this) : QString();
    if (path.isEmpty())
        return;
    rememberFolder(path);
    Checked<StatementFile> file = statementFileCancelled();
    {
        WaitCursor wait;
        ProgDialog progress(QStringLiteral("Зареждане на данни за клиенти..."), 1, this);
        progress.setCancelButtonText(QStringLiteral("Отказ"));
        progress.setCloseEnabled(true);
        file = readStatementFile(path, [&progress](int done, int total) {
            progress.setMaximum(std::max(total, 1));
            progress.setValue(std::min(done, std::max(total, 1)));
            return !progress.wasCanceled();
        });
    }
    if (!file) {
        // A cancelled reading needs no word: the dispatcher asked for it.
        if (!(file.message() == statementFileCancelled()))
            MessageService::instance().inform(file.message());
        return;
    }
    const StatementHeading &heading = file.value().heading;
    const bool switched = heading.klient != m_conditions.SeekKlient || heading.period != m_conditions.period;
    // The file's rows replace the list, written or not.
    if (!m_listWritten) {
        if (auto refusal = m_scratch->RebuildScratchTable(QStringLiteral("TempKlients"))) {
            MessageService::instance().inform(*refusal);
            return;
        }
    }
    KlientsStore store(m_scratch->db());
    if (auto refusal = store.replaceRows(file.value().rows)) {
        MessageService::instance().inform(*refusal);
        return;
    }
    m_listWritten = true;
    m_unwritten = RowSet();
    m_unwrittenCopy.reset();  // the file's rows replaced the printed copy too
    m_openPath = path;
    m_fileLoaded = true;
    const Checked<RowSet> working = store.workingList(KlientsStore::Order::AsEntered);
    if (!working) {
        MessageService::instance().inform(working.message());
        return;
    }
    // The screen shows whose statement the file holds: its client and period head the grid, the
    // sums and the paper, never those of the statement it replaced.
    m_conditions.SeekKlient = heading.klient;
    m_conditions.period = heading.period;
    m_conditions.SeekTovar.clear();
    m_conditions.SeekMarsh.clear();
    m_conditions.SeekKola.clear();
    setWindowTitle(config(heading.klient).caption);
    setRows(working.value());
    showSums(working.value(), QStringLiteral("Data"), QStringLiteral("KM"), QStringLiteral("Ton"), QStringLiteral("Suma"));
    if (model()->rowCount() > 0) {
        grid()->setCurrentIndex(model()->index(0, 0));
        grid()->setFocus();
    }
    if (switched)
        MessageService::instance().inform(switchedMessage(path, heading));
}

void Klients::saveFile()
{
    QString path = chooseFileToSave ? chooseFileToSave(this) : QString();
    if (!path.isEmpty()) {
        if (QFileInfo(path).suffix().compare(statementFileSuffix(), Qt::CaseInsensitive) != 0)
            path += QLatin1Char('.') + statementFileSuffix();
        rememberFolder(path);
        std::optional<UserMessage> refusal = writeWorkingList();
        if (!refusal)
            refusal = writePrintCopy();
        if (!refusal) {
            WaitCursor wait;
            refusal = saveStatementFile(m_scratch->db(), {m_conditions.SeekKlient, m_conditions.period}, path);
        }
        if (refusal) {
            // The corrections stay on screen to be saved elsewhere.
            MessageService::instance().inform(*refusal);
            return;
        }
        m_savePath = path;
        m_fileSaved = true;
    }
    // Saving ends the screen; without a file the close asks first.
    close();
}

ReportPreview *Klients::print()
{
    m_printed = true;
    if (auto refusal = writeWorkingList()) {
        MessageService::instance().inform(*refusal);
        return nullptr;
    }
    KlientsStore store(m_scratch->db());
    const Checked<RowSet> byRoute = store.workingList(KlientsStore::Order::ByRouteAndDate);
    if (!byRoute) {
        MessageService::instance().inform(byRoute.message());
        return nullptr;
    }
    if (byRoute.value().isEmpty()) {
        MessageService::instance().inform(UserMessage{QStringLiteral("Зарек"), QStringLiteral("Няма!!!!!!!!")});
        return nullptr;
    }
    // The grid follows the statement's order: route, then date.
    rebind(byRoute.value());
    // The printed copy goes to the scratch database when a saved file needs it.
    KlientsStore::PrintedCopy copy = KlientsStore::printedCopy(books(), byRoute.value());
    m_unwrittenCopy = copy.lines;
    const Checked<Report> report =
        ReportKlientS(copy.lines, copy.totals, m_conditions.SeekKlient, m_conditions.period, m_firm());
    if (!report) {
        MessageService::instance().inform(report.message());
        return nullptr;
    }
    // The preview stands beside the main window and outlives this screen; its first page shows at once.
    return showReport(Checked<StreamedReport>(StreamedReport{report.value(), nullptr}), parentWidget());
}

bool Klients::mayClose()
{
    if (!m_dirty || m_fileSaved)
        return true;
    return MessageService::instance().askDestructive(UserMessage::twoLines(
        QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Корекциите в списъка не са записани във файл!"),
        QStringLiteral("Затваряте ли справката без запис?"), UserMessage::Icon::Question));
}

}
