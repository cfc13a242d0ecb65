#include "dai.h"
#include "ui_dai.h"

#include "attestation/attestationreport.h"
#include "attestation/birthdate.h"
#include "core/dates.h"
#include "forms/messageservice.h"
#include "forms/waitcursor.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"

#include <QApplication>
#include <QCheckBox>
#include <QAbstractItemView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>

namespace zarek {

namespace {

UserMessage emptyListMessage()
{
    return {QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Списъка е празен\nЩе се създаде нов!"),
            UserMessage::Icon::Exclamation};
}

void setBold(QWidget *widget, double pointSize = 0)
{
    QFont font = widget->font();
    font.setBold(true);
    if (pointSize > 0)
        font.setPointSizeF(pointSize);
    widget->setFont(font);
}

}

DAI::DAI(QSqlDatabase db, FirmProfile firm, QWidget *parent, QDate today)
    : QDialog(parent), m_ui(std::make_unique<Ui::DAI>()), m_db(std::move(db)), m_firm(std::move(firm)), m_today(today)
{
    m_ui->setupUi(this);
    setProperty("helpTopic", 230);

    setBold(m_ui->lblTitle, font().pointSizeF() + 5);
    setBold(m_ui->lblSubtitle);
    setBold(m_ui->lblFirmPart);
    for (QLabel *label : {m_ui->lblTitle, m_ui->lblSubtitle, m_ui->lblNotes})
        label->setAlignment(Qt::AlignCenter);
    QFont notes = m_ui->lblNotes->font();
    notes.setItalic(true);
    m_ui->lblNotes->setFont(notes);
    for (QLabel *value : {m_ui->lblFirmaName, m_ui->lblFirmaAdres, m_ui->lblFirmaTel, m_ui->lblFirmaFax,
                          m_ui->lblFirmaEmail, m_ui->lblFirmaMOL, m_ui->lblFirmaPosition, m_ui->lblDriverName,
                          m_ui->lblDriverBorn, m_ui->lblDriverLK, m_ui->lblDataStart, m_ui->lblDataStop,
                          m_ui->lblPlace16, m_ui->lblDate16, m_ui->lblPlace18, m_ui->lblDate18})
        setBold(value);

    // The captions of the items wrap within their column; the boxes keep to the width of a date.
    for (QLabel *caption : findChildren<QLabel *>(QRegularExpression(QStringLiteral("^lblItem(\\d+|From|To|Started)$"))))
        caption->setMaximumWidth(360);
    for (QLineEdit *box : {m_ui->Text1_0, m_ui->Text1_1, static_cast<QLineEdit *>(m_ui->txtStarted)})
        box->setMaximumWidth(220);
    m_ui->sheetGrid->setColumnMinimumWidth(0, 290);
    m_ui->sheetGrid->setColumnStretch(1, 1);

    // A value that replaced its box is corrected by a click on it, or Enter when it has the focus.
    for (QLabel *value : {m_ui->lblDriverName, m_ui->lblDataStart, m_ui->lblDataStop}) {
        value->setFocusPolicy(Qt::StrongFocus);
        value->setCursor(Qt::PointingHandCursor);
        value->setToolTip(QStringLiteral("Щракнете или натиснете Enter, за да поправите"));
        value->setStyleSheet(QStringLiteral("QLabel:focus { background: palette(highlight); "
                                            "color: palette(highlighted-text); }"));
        value->installEventFilter(this);
    }
    for (QWidget *box : {static_cast<QWidget *>(m_ui->Combo1), static_cast<QWidget *>(m_ui->Text1_0),
                         static_cast<QWidget *>(m_ui->Text1_1), static_cast<QWidget *>(m_ui->txtHour_0),
                         static_cast<QWidget *>(m_ui->txtHour_1)})
        box->installEventFilter(this);

    // One reason only: ticking a box clears the others, so the one cross printed is the one shown.
    for (QCheckBox *box : reasonBoxes()) {
        connect(box, &QCheckBox::toggled, this, [this, box](bool ticked) {
            if (!ticked)
                return;
            for (QCheckBox *other : reasonBoxes()) {
                if (other != box)
                    other->setChecked(false);
            }
        });
    }

    m_ui->cboForm->addItem(QStringLiteral("Решение 2007/230/ЕО – 18 точки"));
    m_ui->cboForm->addItem(QStringLiteral("Решение 2009/959/ЕС – 22 точки (в сила от 2010 г.)"));
    m_ui->cboForm->setCurrentIndex(1);  // the form in use; the older one stays a choice
    connect(m_ui->cboForm, &QComboBox::currentIndexChanged, this, &DAI::applyFormTexts);
    connect(m_ui->cmdPrint, &QPushButton::clicked, this, &DAI::print);
    connect(m_ui->cmdClose, &QPushButton::clicked, this, &QDialog::close);
    connect(m_ui->Combo1, &QComboBox::activated, this, [this](int index) {
        pickDriver(m_ui->Combo1->itemText(index), !m_pickingByKey);
    });

    // The values that show only once they are known.
    for (QWidget *hidden : {static_cast<QWidget *>(m_ui->lblDriverLK), static_cast<QWidget *>(m_ui->lblDriverName),
                            static_cast<QWidget *>(m_ui->lblDriverBorn), static_cast<QWidget *>(m_ui->lblDataStart),
                            static_cast<QWidget *>(m_ui->lblDataStop)})
        hidden->hide();
    loadDrivers();
    showFirm();
    applyFormTexts();
    setTabOrder();
    m_ui->Combo1->setFocus();
}

DAI::~DAI() = default;

QList<QCheckBox *> DAI::reasonBoxes() const
{
    return {m_ui->Check1, m_ui->Check2, m_ui->Check3, m_ui->Check4, m_ui->Check5, m_ui->Check6};
}

AttestationReason DAI::reasonOf(const QCheckBox *box) const
{
    const AttestationReason reasons[] = {AttestationReason::SickLeave,     AttestationReason::AnnualLeave,
                                         AttestationReason::ExemptVehicle, AttestationReason::LeaveOrRest,
                                         AttestationReason::OtherWork,     AttestationReason::Available};
    const int index = int(reasonBoxes().indexOf(const_cast<QCheckBox *>(box)));
    return index < 0 ? AttestationReason::None : reasons[index];
}

QLineEdit *DAI::periodBox(int index) const
{
    return index == 0 ? m_ui->Text1_0 : m_ui->Text1_1;
}

QLabel *DAI::periodLabel(int index) const
{
    return index == 0 ? m_ui->lblDataStart : m_ui->lblDataStop;
}

QLineEdit *DAI::hourBox(int index) const
{
    return index == 0 ? m_ui->txtHour_0 : m_ui->txtHour_1;
}

QList<QWidget *> DAI::periodBoxes(int index) const
{
    return {hourBox(index), index == 0 ? m_ui->lblHourOn_0 : m_ui->lblHourOn_1, periodBox(index)};
}

void DAI::showFirm()
{
    m_ui->lblFirmaName->setText(m_firm.UserName);
    m_ui->lblFirmaAdres->setText(m_firm.UserAdres + QStringLiteral(", ") + m_firm.UserCity + QStringLiteral(", ")
                                 + m_firm.UserCountry);
    m_ui->lblFirmaTel->setText(m_firm.UserTel);
    m_ui->lblFirmaFax->setText(m_firm.UserGSM);  // the firm's second number stands under "факс"
    m_ui->lblFirmaMOL->setText(m_firm.UserMOL);
    m_ui->lblFirmaEmail->setText(m_firm.UserEmail);
    for (QLabel *place : {m_ui->lblPlace16, m_ui->lblPlace18})
        place->setText(m_firm.UserCity);
    for (QLabel *date : {m_ui->lblDate16, m_ui->lblDate18})
        date->setText(formatDate(m_today));
}

// The drivers by code. None is picked yet: the list shows an invitation, and a print leaves the
// driver's items empty, as the screen does.
void DAI::loadDrivers()
{
    WaitCursor wait;
    const Checked<QStringList> names = attestationDriverNames(m_db);
    if (!names) {
        MessageService::instance().inform(names.message());
        return;
    }
    if (names.value().isEmpty())
        MessageService::instance().inform(emptyListMessage());
    m_ui->Combo1->addItems(names.value());
    m_ui->Combo1->setPlaceholderText(QStringLiteral("изберете шофьор"));
    m_ui->Combo1->setCurrentIndex(-1);
    m_ui->Combo1->setMinimumContentsLength(30);
}

void DAI::pickDriver(const QString &name, bool leavePicker)
{
    WaitCursor wait;
    const auto found = findAttestationDriver(m_db, name);
    if (!found) {
        MessageService::instance().inform(found.message());
        return;
    }
    if (!found.value()) {
        MessageService::instance().inform(emptyListMessage());  // deleted since the list was read
        return;
    }
    m_driver = *found.value();
    const Checked<QString> born = birthDateFromEgn(m_driver->egn);
    m_birthDate = born ? born.value() : QString();
    m_ui->lblDriverName->setText(m_driver->name);
    m_ui->lblDriverBorn->setText(m_birthDate.isEmpty() ? QString() : m_birthDate + QStringLiteral(" г."));
    m_ui->lblDriverLK->setText(m_driver->card);
    m_ui->lblDriverBorn->show();
    m_ui->lblDriverLK->show();
    if (!born)
        MessageService::instance().inform(born.message());
    if (leavePicker) {
        m_ui->lblDriverName->show();
        m_ui->Combo1->hide();
    }
}

void DAI::showDriverPicker()
{
    m_ui->lblDriverName->hide();
    m_ui->Combo1->show();
    m_ui->Combo1->setFocus();
}

// The hour and the day of a bound of the period are one entry: going from one box to the other
// keeps them open; leaving both shows the bound as it prints.
void DAI::leavePeriodBox(int index)
{
    if (QApplication::focusWidget() == hourBox(index) || QApplication::focusWidget() == periodBox(index))
        return;
    const QString hour = hourBox(index)->text();
    periodLabel(index)->setText(attestationPeriodText(attestationHour(hour).value_or(hour), periodBox(index)->text()));
    periodLabel(index)->show();
    for (QWidget *box : periodBoxes(index))
        box->hide();
}

void DAI::showPeriodBox(int index)
{
    periodLabel(index)->hide();
    for (QWidget *box : periodBoxes(index))
        box->show();
    periodBox(index)->setFocus();
    periodBox(index)->selectAll();
}

AttestationForm DAI::form() const
{
    return m_ui->cboForm->currentIndex() == 1 ? AttestationForm::Decision2009 : AttestationForm::Decision2007;
}

void DAI::setForm(AttestationForm form)
{
    m_ui->cboForm->setCurrentIndex(form == AttestationForm::Decision2009 ? 1 : 0);
}

// The sheet of the form chosen: its wording and item numbers, and only its items. A reason the
// form does not have is cleared, so what prints is what shows.
void DAI::applyFormTexts()
{
    const AttestationForm chosen = form();
    const QHash<QString, QString> &texts = attestationScreenTexts(chosen);
    for (auto it = texts.cbegin(); it != texts.cend(); ++it) {
        if (auto *label = findChild<QLabel *>(it.key()))
            label->setText(it.value());
        else if (auto *box = findChild<QCheckBox *>(it.key()))
            box->setText(it.value());
    }
    const bool today = chosen == AttestationForm::Decision2009;
    for (QWidget *item : {static_cast<QWidget *>(m_ui->lblFirmPart), static_cast<QWidget *>(m_ui->lblItemStarted),
                          static_cast<QWidget *>(m_ui->txtStarted), static_cast<QWidget *>(m_ui->lblItemLeave),
                          static_cast<QWidget *>(m_ui->lblItemOther), static_cast<QWidget *>(m_ui->lblItemAvailable),
                          static_cast<QWidget *>(m_ui->lblChooseOne), static_cast<QWidget *>(m_ui->lblFootnote)})
        item->setVisible(today);
    const QList<AttestationReason> offered = attestationReasons(chosen);
    for (QCheckBox *box : reasonBoxes()) {
        const bool onForm = offered.contains(reasonOf(box));
        if (!onForm)
            box->setChecked(false);
        box->setVisible(onForm);
    }
    if (isVisible())
        fitToSheet();
}

// The window as large as the sheet of the form needs, wrapped captions included, within the
// screen; on a smaller screen the sheet scrolls.
void DAI::fitToSheet()
{
    QScrollArea *scroll = m_ui->sheetScroll;
    QWidget *sheet = m_ui->Sheet;
    sheet->layout()->activate();
    const int chromeWidth = width() - scroll->viewport()->width();
    const int chromeHeight = height() - scroll->viewport()->height();
    const int sheetWidth = std::max(sheet->sizeHint().width(), scroll->viewport()->width());
    const int sheetHeight = std::max(sheet->heightForWidth(sheetWidth), sheet->sizeHint().height());
    const QRect room = screen()->availableGeometry();
    const int height = std::min(sheetHeight + chromeHeight, room.height() - 40);
    const int scrollBar = height < sheetHeight + chromeHeight ? style()->pixelMetric(QStyle::PM_ScrollBarExtent) : 0;
    resize(std::min(sheetWidth + chromeWidth + scrollBar, room.width()), height);
}

void DAI::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!event->spontaneous())
        fitToSheet();
}

void DAI::setTabOrder()
{
    const QList<QWidget *> order = {m_ui->Combo1,  m_ui->lblDriverName, m_ui->txtStarted, m_ui->txtHour_0,
                                    m_ui->Text1_0, m_ui->lblDataStart,  m_ui->txtHour_1,  m_ui->Text1_1,
                                    m_ui->lblDataStop, m_ui->Check1,
                                    m_ui->Check2,  m_ui->Check4,        m_ui->Check3,     m_ui->Check5,
                                    m_ui->Check6,  m_ui->cboForm,       m_ui->cmdPrint,   m_ui->cmdClose};
    for (qsizetype i = 1; i < order.size(); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);
}

AttestationSheet DAI::sheet() const
{
    AttestationSheet sheet;
    sheet.form = form();
    if (m_driver) {
        sheet.driverName = m_driver->name;
        sheet.birthDate = m_birthDate;
        sheet.card = m_driver->card;
    }
    sheet.periodFrom = m_ui->Text1_0->text();
    sheet.periodTo = m_ui->Text1_1->text();
    sheet.hourFrom = m_ui->txtHour_0->text();
    sheet.hourTo = m_ui->txtHour_1->text();
    if (sheet.form == AttestationForm::Decision2009)
        sheet.startedOn = m_ui->txtStarted->text();
    for (QCheckBox *box : reasonBoxes()) {
        if (box->isChecked() && attestationReasons(sheet.form).contains(reasonOf(box)))
            sheet.reason = reasonOf(box);
    }
    return sheet;
}

Checked<Report> DAI::attestationReport() const
{
    return ReportDAI(sheet(), m_firm, m_today);
}

void DAI::print()
{
    // An attestation without its reason or its item 11 is no attestation: it is not printed.
    if (const std::optional<UserMessage> refusal = attestationRefusal(sheet())) {
        MessageService::instance().inform(*refusal);
        return;
    }
    const Checked<Report> report = attestationReport();
    if (!report) {
        MessageService::instance().inform(report.message());
        return;
    }
    ReportPreview preview(layoutReport(report.value()), this);
    preview.exec();
}

bool DAI::eventFilter(QObject *watched, QEvent *event)
{
    const bool userLeft = event->type() == QEvent::FocusOut
                          && static_cast<QFocusEvent *>(event)->reason() != Qt::ActiveWindowFocusReason
                          && static_cast<QFocusEvent *>(event)->reason() != Qt::PopupFocusReason;
    if (watched == m_ui->Combo1) {
        if (event->type() == QEvent::KeyPress) {
            // Picking with the arrows in the closed list shows each driver; the list goes once left.
            m_pickingByKey = !m_ui->Combo1->view()->isVisible();
        } else if (event->type() == QEvent::KeyRelease || event->type() == QEvent::MouseButtonPress) {
            m_pickingByKey = false;
        } else if (userLeft && m_driver && m_ui->Combo1->currentText() == m_driver->name) {
            m_ui->lblDriverName->show();
            m_ui->Combo1->hide();
        }
    } else if (userLeft && (watched == m_ui->Text1_0 || watched == m_ui->Text1_1)) {
        leavePeriodBox(watched == m_ui->Text1_0 ? 0 : 1);
    } else if (userLeft && (watched == m_ui->txtHour_0 || watched == m_ui->txtHour_1)) {
        leavePeriodBox(watched == m_ui->txtHour_0 ? 0 : 1);
    } else if (event->type() == QEvent::MouseButtonRelease
               || (event->type() == QEvent::KeyPress
                   && QList<int>{Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space, Qt::Key_F2}.contains(
                       static_cast<QKeyEvent *>(event)->key()))) {
        if (watched == m_ui->lblDriverName) {
            showDriverPicker();
            return true;
        }
        for (int index : {0, 1}) {
            if (watched == periodLabel(index)) {
                showPeriodBox(index);
                return true;
            }
        }
    }
    return QDialog::eventFilter(watched, event);
}

}
