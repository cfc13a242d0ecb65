#include "prehodevro.h"

#include "core/dates.h"
#include "core/formats.h"
#include "core/version.h"
#include "forms/commandday.h"
#include "forms/dateentry.h"
#include "forms/messageservice.h"
#include "forms/waitcursor.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QVBoxLayout>

namespace zarek {

namespace {

const char *bandCaptions[6] = {"До 20 км", "20 - 30 км", "30 - 50 км", "50 - 100 км", "100 - 200 км", "Над 200 км"};

// A table of texts; the column that names what a row is takes the room left over.
QTableWidget *makeTable(const QString &name, const QStringList &captions, int nameColumn, QWidget *parent)
{
    auto *table = new QTableWidget(0, static_cast<int>(captions.size()), parent);
    table->setObjectName(name);
    table->setHorizontalHeaderLabels(captions);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setAlternatingRowColors(true);
    table->verticalHeader()->setVisible(false);
    table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 6);
    table->horizontalHeader()->setStretchLastSection(false);
    table->horizontalHeader()->setSectionResizeMode(nameColumn, QHeaderView::Stretch);
    table->setWordWrap(false);
    return table;
}

// One row of texts; the cells from firstNumber on are figures, aligned right.
void addRow(QTableWidget *table, const QStringList &cells, int firstNumber)
{
    const int row = table->rowCount();
    table->insertRow(row);
    for (int c = 0; c < cells.size(); ++c) {
        auto *item = new QTableWidgetItem(cells.at(c));
        if (c >= firstNumber)
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        table->setItem(row, c, item);
    }
}

// "1 курс", "3 курса": a count with the word in its number.
QString counted(int count, const char *one, const char *many)
{
    return QString::number(count) + QLatin1Char(' ') + QString::fromUtf8(count == 1 ? one : many);
}

QString inLeva(double price) { return formatAmount(price) + QLatin1Char(' ') + amountUnit(Currency::Leva); }
QString inEuro(double price) { return formatAmount(price) + QLatin1Char(' ') + amountUnit(Currency::Euro); }
QString quantity(double value) { return bulgarianLocale().toString(value, 'g', 12); }

}

PrehodEvro::PrehodEvro(QSqlDatabase db, QWidget *parent) : QDialog(parent), m_db(std::move(db))
{
    setObjectName(QStringLiteral("PrehodEvro"));
    setWindowTitle(QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - Преминаване към евро"));

    auto *intro = new QLabel(QStringLiteral("От датата на преминаване сметките на фирмата се водят в евро по курс "
                                            "1 %1 = %2 %3 Документите отпреди нея остават в лева.\n"
                                            "Прегледайте цените, които стоят отворени, преди да ги преизчислите.")
                                 .arg(amountUnit(Currency::Euro),
                                      formatFixed(static_cast<double>(euroRateScaled) / euroRateScale, 5),
                                      amountUnit(Currency::Leva)),
                             this);
    intro->setObjectName(QStringLiteral("lblIntro"));
    intro->setWordWrap(true);

    auto *dateCaption = new QLabel(QStringLiteral("&Дата на преминаване:"), this);
    m_date = new DateEntry(this);
    m_date->setObjectName(QStringLiteral("txtData"));
    m_date->setDate(euroAdoptionDate());
    m_date->setMaximumWidth(130);
    dateCaption->setBuddy(m_date);
    m_show = new QPushButton(QStringLiteral("&Преглед"), this);
    m_show->setObjectName(QStringLiteral("cmdPreview"));
    m_show->setAutoDefault(false);
    auto *dateRow = new QHBoxLayout;
    dateRow->addWidget(dateCaption);
    dateRow->addWidget(m_date);
    dateRow->addWidget(m_show);
    dateRow->addStretch(1);

    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("tbsEvro"));
    const QString leva = amountUnit(Currency::Leva);
    const QString euro = amountUnit(Currency::Euro);
    m_tariffs = makeTable(QStringLiteral("grdTariffs"), {QStringLiteral("Тарифа"), leva + QStringLiteral(" за т.км"),
                                                         euro + QStringLiteral(" за т.км")},
                          0, m_tabs);
    m_stock = makeTable(QStringLiteral("grdStock"), {QStringLiteral("Артикул"), QStringLiteral("Наличност"),
                                                     QStringLiteral("Цена в ") + leva, QStringLiteral("Цена в ") + euro},
                        0, m_tabs);
    m_receipts = makeTable(QStringLiteral("grdReceipts"),
                           {QStringLiteral("Дата"), QStringLiteral("Документ"), QStringLiteral("Артикул"),
                            QStringLiteral("Неизписано"), QStringLiteral("Цена в ") + leva,
                            QStringLiteral("Цена в ") + euro},
                           2, m_tabs);
    m_tabs->addTab(m_tariffs, QStringLiteral("Тарифи"));
    m_tabs->addTab(m_stock, QStringLiteral("Наличност в склада"));
    m_tabs->addTab(m_receipts, QStringLiteral("Неизписани доставки"));

    m_summary = new QLabel(this);
    m_summary->setObjectName(QStringLiteral("lblSummary"));
    m_warning = new QLabel(this);
    m_warning->setObjectName(QStringLiteral("lblWarning"));
    m_warning->setWordWrap(true);
    m_warning->setStyleSheet(QStringLiteral("color: #b00000;"));
    m_warning->setVisible(false);

    m_ok = new QPushButton(QStringLiteral("Премини към &евро"), this);
    m_ok->setObjectName(QStringLiteral("cmdOK"));
    m_ok->setAutoDefault(false);
    auto *cancel = new QPushButton(QStringLiteral("&Отказ"), this);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    cancel->setAutoDefault(false);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_summary, 1);
    buttons->addWidget(m_ok);
    buttons->addWidget(cancel);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addLayout(dateRow);
    layout->addWidget(m_tabs, 1);
    layout->addWidget(m_warning);
    layout->addLayout(buttons);

    connect(m_show, &QPushButton::clicked, this, &PrehodEvro::review);
    connect(m_date, &QLineEdit::returnPressed, this, &PrehodEvro::review);
    // A date typed anew needs its own review before anything can be converted.
    connect(m_date, &QLineEdit::textEdited, this, &PrehodEvro::forgetReview);
    connect(m_ok, &QPushButton::clicked, this, &PrehodEvro::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    resize(760, 520);
    m_date->setFocus();
    review();
}

void PrehodEvro::forgetReview()
{
    m_review.reset();
    m_ok->setEnabled(false);
    m_summary->setText(QStringLiteral("Натиснете „Преглед“ за новата дата."));
}

bool PrehodEvro::review()
{
    const QDate date = m_date->date();
    if (!date.isValid()) {
        forgetReview();
        MessageService::instance().inform(UserMessage::twoLines(changeoverTitle(), QStringLiteral("Неверна дата!"),
                                                                QStringLiteral("Моля, въведете датата на преминаване."),
                                                                UserMessage::Icon::Exclamation));
        m_date->setFocus();
        return false;
    }
    Checked<ChangeoverReview> read = UserMessage{};
    {
        WaitCursor wait;
        read = reviewChangeover(m_db, date);
    }
    if (!read) {
        forgetReview();
        MessageService::instance().inform(read.message());
        return false;
    }
    m_review = read.value();
    m_date->setText(formatDate(date));
    showReview();
    return true;
}

void PrehodEvro::showReview()
{
    for (QTableWidget *table : {m_tariffs, m_stock, m_receipts})
        table->setRowCount(0);
    const ChangeoverReview &review = *m_review;
    if (review.tariffs) {
        for (int i = 0; i < 6; ++i)
            addRow(m_tariffs, {QString::fromUtf8(bandCaptions[i]), formatRate(review.tariffs->leva[size_t(i)]),
                               formatRate(review.tariffs->euro[size_t(i)])},
                   1);
    }
    for (const ChangeoverReview::Stock &stock : review.stock)
        addRow(m_stock, {stock.name, quantity(stock.broi), inLeva(stock.leva), inEuro(stock.euro)}, 1);
    for (const ChangeoverReview::Receipt &receipt : review.receipts)
        addRow(m_receipts, {formatDate(receipt.data), (receipt.docVid + QLatin1Char(' ') + receipt.docNom).trimmed(),
                            receipt.name, quantity(receipt.ostat), inLeva(receipt.leva), inEuro(receipt.euro)},
               3);
    for (QTableWidget *table : {m_tariffs, m_stock, m_receipts})
        table->resizeColumnsToContents();
    m_tabs->setTabText(1, QStringLiteral("Наличност в склада (%1)").arg(review.stock.size()));
    m_tabs->setTabText(2, QStringLiteral("Неизписани доставки (%1)").arg(review.receipts.size()));
    m_summary->setText(QStringLiteral("Тарифи: %1, цени на наличност: %2, неизписани доставки: %3")
                           .arg(review.tariffs ? 6 : 0)
                           .arg(review.stock.size())
                           .arg(review.receipts.size()));
    // Documents already dated from the changeover were written in leva, but will read as euro.
    if (review.documentsFrom() > 0) {
        QStringList documents;
        if (review.coursesFrom > 0)
            documents.append(counted(review.coursesFrom, "курс", "курса"));
        if (review.movementsFrom > 0)
            documents.append(counted(review.movementsFrom, "складово движение", "складови движения"));
        if (review.waybillsFrom > 0)
            documents.append(counted(review.waybillsFrom, "пътен лист", "пътни листа"));
        if (review.tripsFrom > 0)
            documents.append(counted(review.tripsFrom, "международен курс", "международни курса"));
        m_warning->setText(QStringLiteral("Внимание: от %1 нататък вече има записани %2. Сумите им ще се четат в евро - "
                                          "проверете ги след преминаването.")
                               .arg(formatDate(review.date), documents.join(QStringLiteral(", "))));
        m_warning->setVisible(true);
    } else {
        m_warning->setVisible(false);
    }
    m_ok->setEnabled(true);
}

void PrehodEvro::accept()
{
    if (!m_review)
        return;
    const UserMessage question = UserMessage::twoLines(
        changeoverTitle(),
        QStringLiteral("Сметките на фирмата ще се водят в евро от %1. Преминаването се прави само веднъж и не може "
                       "да се отмени.")
            .arg(formatDate(m_review->date)),
        QStringLiteral("Да преизчисля ли показаните цени в евро?"), UserMessage::Icon::Question);
    if (!MessageService::instance().askYesNo(question))
        return;
    std::optional<UserMessage> failure;
    {
        WaitCursor wait;
        failure = runChangeover(m_db, *m_review, clock(), beforeWrite);
    }
    if (failure) {
        MessageService::instance().inform(*failure);
        // Rows changed since the review: read them again, so that what is converted is what is shown.
        const Checked<Changeover> now = loadChangeover(m_db);
        if (now && now.value().isSet())
            QDialog::reject();
        else
            review();
        return;
    }
    m_done = true;
    setCommandDay({Changeover{m_review->date}, commandDay().today});
    MessageService::instance().inform(UserMessage::twoLines(
        changeoverTitle(), QStringLiteral("Фирмата води сметките си в евро от %1.").arg(formatDate(m_review->date)),
        QStringLiteral("Документите отпреди тази дата остават в лева."), UserMessage::Icon::Information));
    QDialog::accept();
}

}
