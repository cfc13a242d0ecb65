#include "insidekurs.h"
#include "ui_insidekurs.h"

#include "core/dates.h"
#include "core/docnumber.h"
#include "core/formats.h"
#include "forms/commandday.h"
#include "forms/boxfocus.h"
#include "forms/messageservice.h"
#include "forms/recordform.h"
#include "forms/waitcursor.h"
#include "international/sendresive.h"
#include "international/tripstore.h"

#include <QApplication>
#include <QComboBox>
#include <QCompleter>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QTimer>

namespace zarek {

namespace {

const QString saveCaption = QStringLiteral("ГРЕШКА при запис!");

// The colours of the boxes a trip cannot be saved without, while it is entered.
const QColor requiredBackground(0xFF, 0xFF, 0x80);
const QColor requiredText(0x00, 0x00, 0xC0);

// Keeps a box over the run of blanks of its caption ("Приход:          лв."), where the caption
// leaves room for it, whatever the font.
class BoxInCaption : public QObject {
public:
    BoxInCaption(QLabel *caption, QLineEdit *box) : QObject(caption), m_caption(caption), m_box(box)
    {
        box->setParent(caption);
        caption->setMinimumHeight(box->sizeHint().height());
        caption->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        caption->installEventFilter(this);
        place();
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Resize || event->type() == QEvent::Show || event->type() == QEvent::FontChange
            || event->type() == QEvent::LayoutRequest)
            place();
        return QObject::eventFilter(watched, event);
    }

private:
    void place()
    {
        const QString text = m_caption->text();
        const int start = int(text.indexOf(QStringLiteral("  ")));
        if (start < 0)
            return;
        int end = start;
        while (end < text.size() && text.at(end) == QLatin1Char(' '))
            ++end;
        const QFontMetrics metrics(m_caption->font());
        const int blank = metrics.horizontalAdvance(QLatin1Char(' '));
        const int left = m_caption->contentsRect().left() + metrics.horizontalAdvance(text.left(start)) + blank;
        const int right = m_caption->contentsRect().left() + metrics.horizontalAdvance(text.left(end)) - blank;
        const int height = m_box->sizeHint().height();
        m_box->setGeometry(left, (m_caption->height() - height) / 2, std::max(40, right - left), height);
        m_box->show();
    }

    QLabel *m_caption;
    QLineEdit *m_box;
};

}

InsideKurs::InsideKurs(QSqlDatabase db, QWidget *parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::InsideKurs>()), m_db(std::move(db))
{
    m_ui->setupUi(this);
    setProperty("helpTopic", 260);
    for (int index = 0; index < tripColumns().size(); ++index)
        m_fields.append(findChild<QLineEdit *>(QStringLiteral("txtFields_%1").arg(index)));
    m_combos = {m_ui->ComboNameShof, m_ui->ComboTruckV, m_ui->ComboTruckR};
    setUpForm();
    setUpScreen();
    if (m_form->open())
        setTabOrder();
}

InsideKurs::~InsideKurs() = default;

QLineEdit *InsideKurs::field(int index) const
{
    return m_fields.value(index);
}

void InsideKurs::setUpForm()
{
    RecordFormConfig config;
    config.suffix = QStringLiteral("Razh");
    config.statusText = QStringLiteral("Запис № ");
    config.newText = QStringLiteral("Нов запис");
    config.editText = QStringLiteral("Корекция запис");
    config.lazyRows = true;  // the register grows by the year: ids at opening, values a page at a time
    config.numberColumns = tripNumberColumns();
    config.dateColumns = tripDateColumns();
    config.deleteQuestion = tripDeleteQuestion();
    config.validate = [](QVariantMap &entry) -> std::optional<UserMessage> {
        if (auto failure = checkTrip(entry))
            return failure;
        // The number goes in padded even when its box was never left.
        const Checked<QString> number = padDocumentNumber(entry.value(QStringLiteral("KursID")).toString());
        if (!number)
            return number.message();
        entry.insert(QStringLiteral("KursID"), number.value());
        return std::nullopt;
    };
    config.write = [this](const RecordRow &row, bool adding) {
        const Checked<RecordRow> written = TripStore(m_db).save(row, adding, saveCaption);
        if (!written && written.message() == tripNumberTakenMessage())
            returnToBox(field(0));
        return written;
    };
    m_form = new RecordForm(TripStore(m_db).trips(), config, this);
    m_form->bindColumns(this);  // the boxes of insidekurs.ui name their columns
    m_ui->mainLayout->addWidget(m_form);

    connect(m_form, &RecordForm::closeRequested, this, &QDialog::close);
    connect(m_form, &RecordForm::stateChanged, this, &InsideKurs::onStateChanged);
    connect(m_form, &RecordForm::added, this, &InsideKurs::onAdded);
    connect(m_form, &RecordForm::editStarted, this, &InsideKurs::onEditStarted);
}

void InsideKurs::setUpScreen()
{
    // The sums stand in the blanks of their captions, each followed by the unit of the trip's day.
    for (const auto &[label, box] : {std::pair{m_ui->lblLabels_21, m_ui->txtFields_21},
                                     std::pair{m_ui->lblLabels_22, m_ui->txtFields_22}}) {
        m_sumCaptions.append(label->text());
        new BoxInCaption(label, box);
    }
    connect(field(1), &QLineEdit::textChanged, this, &InsideKurs::showUnits);
    showUnits();
    for (QComboBox *combo : std::as_const(m_combos)) {
        combo->setInsertPolicy(QComboBox::NoInsert);
        combo->setMaxVisibleItems(20);
        combo->completer()->setFilterMode(Qt::MatchContains);
        combo->completer()->setCaseSensitivity(Qt::CaseInsensitive);
        combo->installEventFilter(this);
    }
    // The two panels are pickers: a hand over them, a right click (or F4 in their boxes) opens the book.
    const QIcon book = style()->standardIcon(QStyle::SP_FileDialogContentsView);
    for (QLabel *picture : {m_ui->Picture1, m_ui->Picture2})
        picture->setPixmap(book.pixmap(16, 16));
    for (QWidget *panel : {static_cast<QWidget *>(m_ui->Frame2), static_cast<QWidget *>(m_ui->Frame3)}) {
        panel->setCursor(Qt::PointingHandCursor);
        panel->installEventFilter(this);
    }
    for (QLabel *hint : {m_ui->lblHintFrame2, m_ui->lblHintFrame3}) {
        QFont small = hint->font();
        small.setItalic(true);
        hint->setFont(small);
        hint->setEnabled(false);  // a grey hint, not a value
    }
    for (QLineEdit *box : std::as_const(m_fields))
        box->installEventFilter(this);
    for (QPushButton *button : m_form->findChildren<QPushButton *>())
        button->installEventFilter(this);

    // The expenses of the trip: the columns stand ready, nothing fills them.
    QHeaderView *header = m_ui->GridEX1->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setStretchLastSection(true);
    m_ui->GridEX1->verticalHeader()->hide();
    m_ui->GridEX1->setFocusPolicy(Qt::NoFocus);
    const int widths[] = {80, 130, 100, 90, 60, 50};
    for (int column = 0; column < 6; ++column)
        m_ui->GridEX1->setColumnWidth(column, widths[column]);
    m_ui->GridEX1->setMinimumHeight(110);

    for (QLineEdit *box : {field(6), field(7), field(8), field(21), field(22)})
        box->setAlignment(Qt::AlignRight);
    resize(860, 640);
}

// The boxes in the order a CMR note is read: the trip, the sender, the receiver, the two places,
// the sums; then the buttons of the strips.
void InsideKurs::setTabOrder()
{
    QList<QWidget *> order = {field(0), field(1), field(2), m_combos[0], field(3), m_combos[1], field(4), m_combos[2]};
    for (int index = 5; index < m_fields.size(); ++index)
        order.append(field(index));
    for (const char *name : {"cmdAdd", "cmdEdit", "cmdDelete", "cmdUpdate", "cmdCancel", "cmdClose", "cmdFirst",
                             "cmdPrevious", "cmdNext", "cmdLast"})
        order.append(m_form->button(QString::fromLatin1(name)));
    for (qsizetype i = 1; i < order.size(); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);
}

bool InsideKurs::isPending() const
{
    return m_form && m_form->state() != RecordForm::State::Browsing;
}

// The list of a combo from the database, added to what it holds (each opening repeats it); an
// empty list is told, and the value is then typed.
void InsideKurs::fillTripCombo(QComboBox *combo, const QStringList &items)
{
    if (items.isEmpty()) {
        MessageService::instance().inform({QStringLiteral("ВНИМАНИЕ!"),
                                           QStringLiteral("Списъка е празен\nЩе се създаде нов!"),
                                           UserMessage::Icon::Exclamation});
        return;
    }
    const QString typed = combo->currentText();
    combo->addItems(items);
    combo->setEditText(typed);  // a list filled is no choice made
}

void InsideKurs::fillCombos()
{
    WaitCursor wait;
    const TripStore store(m_db);
    fillTripCombo(m_combos[0], store.driverNames());
    fillTripCombo(m_combos[1], store.tractors());
    fillTripCombo(m_combos[2], store.trailers());  // trailers are known from earlier trips only
}

void InsideKurs::markTripRequired(bool on)
{
    QList<QWidget *> boxes = {field(0), field(1)};
    for (QComboBox *combo : std::as_const(m_combos))
        boxes.append(combo);
    for (QWidget *box : boxes) {
        QPalette palette = box->parentWidget()->palette();
        if (on) {
            palette.setColor(QPalette::Base, requiredBackground);
            palette.setColor(QPalette::Text, requiredText);
        }
        box->setPalette(palette);
    }
}

void InsideKurs::showUnits()
{
    const QDate date = parseDate(field(1)->text()).value_or(QDate());
    const QString unit = amountUnit(commandDay().currencyOn(date));
    m_ui->lblLabels_21->setText(m_sumCaptions.value(0) + unit);
    m_ui->lblLabels_22->setText(m_sumCaptions.value(1) + unit);
}

void InsideKurs::onStateChanged()
{
    markTripRequired(isPending());
}

void InsideKurs::onAdded()
{
    for (QComboBox *combo : std::as_const(m_combos))
        combo->setEditText(QString());  // a new trip starts with nobody picked
    fillCombos();
    field(0)->setFocus();
}

void InsideKurs::onEditStarted()
{
    fillCombos();
    for (int i = 0; i < m_combos.size(); ++i)
        m_combos[i]->setEditText(field(2 + i)->text());
    field(0)->setFocus();
}

void InsideKurs::pickFirm(Panel panel)
{
    if (!isPending())
        return;
    SendResive picker(m_db, this);
    picker.exec();
    // Closed without a pick: the panel keeps what it holds.
    if (picker.pickedFirm())
        fillPanel(panel, *picker.pickedFirm());
}

void InsideKurs::fillPanel(Panel panel, const FirmAddress &firm)
{
    const int first = panel == Panel::Send ? 9 : 13;
    const QString parts[] = {firm.name, firm.adres, firm.city, firm.country};
    for (int i = 0; i < 4; ++i)
        field(first + i)->setText(parts[i]);
    field(first)->setFocus();
}

// Leaving the number: it is padded to ten characters, and a number another trip carries is told
// at once, with the box to correct it in. Going on to "Запиши" or "Отказ" asks nothing: the save
// checks the number again, and a cancel drops it.
void InsideKurs::numberLeft(QWidget *nextFocus)
{
    QLineEdit *box = field(0);
    if (!isPending() || box->text().trimmed().isEmpty())
        return;
    const Checked<QString> number = padDocumentNumber(box->text());
    if (!number) {
        MessageService::instance().inform(number.message());
        returnToBox(box);
        return;
    }
    box->setText(number.value());
    if (nextFocus && (nextFocus == m_form->button(QStringLiteral("cmdUpdate"))
                      || nextFocus == m_form->button(QStringLiteral("cmdCancel"))))
        return;
    const RecordRow *row = m_form->currentRow();
    const qint64 own = m_form->state() == RecordForm::State::Editing && row ? row->id : 0;
    const Checked<bool> taken = TripStore(m_db).numberTaken(number.value(), own);
    if (!taken) {
        MessageService::instance().inform(taken.message());
        return;
    }
    if (taken.value()) {
        MessageService::instance().inform(tripNumberTakenMessage());
        returnToBox(box);
    }
}

std::optional<InsideKurs::Panel> InsideKurs::panelOf(QObject *watched) const
{
    if (watched == m_ui->Frame2)
        return Panel::Send;
    if (watched == m_ui->Frame3)
        return Panel::Resiv;
    for (int index = 9; index <= 16; ++index) {
        if (watched == field(index))
            return index < 13 ? Panel::Send : Panel::Resiv;
    }
    return std::nullopt;
}

bool InsideKurs::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        if (static_cast<QMouseEvent *>(event)->button() == Qt::RightButton
            && (watched == m_ui->Frame2 || watched == m_ui->Frame3)) {
            pickFirm(*panelOf(watched));
            return true;
        }
        break;
    case QEvent::FocusOut: {
        // Only the user leaving the box counts, not a window or a list popping up over it.
        const auto reason = static_cast<QFocusEvent *>(event)->reason();
        if (watched == field(0) && reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
            numberLeft(QApplication::focusWidget());
        break;
    }
    case QEvent::KeyPress: {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_F4 && isPending()) {
            if (const auto panel = panelOf(watched)) {
                pickFirm(*panel);
                return true;
            }
        }
        if (key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter)
            break;
        if (auto *button = qobject_cast<QPushButton *>(watched)) {
            button->click();
            return true;
        }
        if (!isPending())
            break;
        if (key->modifiers() & Qt::ControlModifier)
            m_form->update();  // Ctrl+Enter saves from any box
        else
            focusNextChild();  // Enter goes on to the next box, as Tab does
        return true;
    }
    default: break;
    }
    return QDialog::eventFilter(watched, event);
}

}
