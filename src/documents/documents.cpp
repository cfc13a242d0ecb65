#include "documents.h"
#include "ui_documents.h"

#include "core/dates.h"
#include "documents/documentkinds.h"
#include "documents/documentstore.h"
#include "forms/messageservice.h"
#include "forms/recordform.h"
#include "forms/waitcursor.h"

#include <QComboBox>
#include <QCompleter>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStandardPaths>
#include <QUrl>

namespace zarek::documents {

namespace {

const QString saveCaption = QStringLiteral("ГРЕШКА при запис!");
const QColor expiredColor(0xC0, 0x00, 0x00);
const QColor dueColor(0xB0, 0x60, 0x00);

QDate dateOf(const QVariant &value)
{
    if (value.metaType().id() == QMetaType::QDate)
        return value.toDate();
    return QDate::fromString(value.toString().left(10), Qt::ISODate);
}

}

Documents::Documents(QSqlDatabase db, QWidget *parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::Documents>()), m_db(std::move(db))
{
    m_ui->setupUi(this);
    setProperty("helpTopic", 300);
    for (int index = 0; index < documentColumns().size(); ++index)
        m_fields.append(findChild<QLineEdit *>(QStringLiteral("txtFields_%1").arg(index)));
    loadKinds();
    setUpForm();
    setUpScreen();
    m_form->open();
    showCurrent();
}

Documents::~Documents() = default;

QLineEdit *Documents::field(int index) const
{
    return m_fields.value(index);
}

QComboBox *Documents::kindCombo() const
{
    return m_ui->ComboVid;
}

QComboBox *Documents::holderCombo() const
{
    return m_ui->ComboKod;
}

void Documents::setToday(const QDate &today)
{
    m_today = today;
    showCurrent();
}

void Documents::loadKinds()
{
    const Checked<QList<DocumentKind>> kinds = DocumentStore(m_db).kinds();
    if (!kinds) {
        MessageService::instance().inform(kinds.message());
        return;
    }
    m_kinds = kinds.value();
    const QString typed = m_ui->ComboVid->currentText();
    m_ui->ComboVid->clear();
    for (const DocumentKind &kind : std::as_const(m_kinds))
        m_ui->ComboVid->addItem(kind.name);
    m_ui->ComboVid->setEditText(typed);
    m_drivers = DocumentStore(m_db).drivers();
}

std::optional<DocumentKind> Documents::kindOf(const QString &name) const
{
    for (const DocumentKind &kind : m_kinds) {
        if (kind.name == name.trimmed())
            return kind;
    }
    return std::nullopt;
}

void Documents::setUpForm()
{
    RecordFormConfig config;
    config.statusText = QStringLiteral("Документ № ");
    config.newText = QStringLiteral("Нов документ");
    config.editText = QStringLiteral("Корекция на документ");
    config.lazyRows = true;
    config.dateColumns = documentDateColumns();
    config.deleteQuestion = UserMessage::twoLines(QStringLiteral("Изтриване на запис"),
                                                  QStringLiteral("Документът ще бъде изтрит заедно със сканираното копие."),
                                                  QStringLiteral("Наистина ли искате да го изтриете?"), UserMessage::Icon::Question);
    config.validate = [this](const QVariantMap &typed) {
        return checkDocument(typed, kindOf(typed.value(QStringLiteral("Vid")).toString()), m_today);
    };
    config.presets = [this](QVariantMap &values) {
        if (!m_renewing)
            return;
        const QVariantMap &old = m_renewing->values;
        values.insert(QStringLiteral("Vid"), old.value(QStringLiteral("Vid")));
        values.insert(QStringLiteral("Kod"), old.value(QStringLiteral("Kod")));
        values.insert(QStringLiteral("Izdatel"), old.value(QStringLiteral("Izdatel")));
        values.insert(QStringLiteral("Izdaden"), m_today);
        if (const auto kind = kindOf(old.value(QStringLiteral("Vid")).toString())) {
            const QDate until = proposedValidUntil(*kind, m_today);
            if (until.isValid())
                values.insert(QStringLiteral("Valid"), until);
        }
    };
    config.write = [this](const RecordRow &row, bool adding) {
        return DocumentStore(m_db).save(row, adding, m_kinds, m_today, adding ? m_renewing : std::nullopt, saveCaption);
    };
    config.remove = [this](const RecordRow &row) { return DocumentStore(m_db).remove(row, QStringLiteral("ГРЕШКА при изтриване!")); };
    config.afterMove = [this]() -> std::optional<UserMessage> {
        showCurrent();
        return std::nullopt;
    };
    m_form = new RecordForm(DocumentStore(m_db).documents(), config, this);
    m_form->bindColumns(this);  // the boxes of documents.ui name their columns
    m_ui->mainLayout->addWidget(m_form);

    connect(m_form, &RecordForm::closeRequested, this, &QDialog::close);
    connect(m_form, &RecordForm::stateChanged, this, [this] { setButtons(); });
    connect(m_form, &RecordForm::added, this, [this] {
        m_ui->ComboVid->setEditText(field(0)->text());
        kindChosen(field(0)->text());
        m_ui->ComboKod->setEditText(field(1)->text());
        showHolderName();
        m_ui->lblState->clear();
        (m_renewing ? static_cast<QWidget *>(field(2)) : static_cast<QWidget *>(m_ui->ComboVid))->setFocus();
    });
    connect(m_form, &RecordForm::editStarted, this, [this] {
        kindChosen(field(0)->text());
        m_ui->ComboKod->setEditText(field(1)->text());
        m_ui->ComboVid->setFocus();
    });
    connect(m_form, &RecordForm::saved, this, [this] {
        m_renewing.reset();
        showCurrent();
    });
    connect(m_form, &RecordForm::cancelled, this, [this] {
        m_renewing.reset();
        showCurrent();
    });
    connect(m_form, &RecordForm::removed, this, [this] { showCurrent(); });
}

void Documents::setUpScreen()
{
    for (QComboBox *combo : {m_ui->ComboVid, m_ui->ComboKod}) {
        combo->setInsertPolicy(QComboBox::NoInsert);
        combo->setMaxVisibleItems(20);
        combo->completer()->setFilterMode(Qt::MatchContains);
        combo->completer()->setCaseSensitivity(Qt::CaseInsensitive);
    }
    connect(m_ui->ComboVid, &QComboBox::currentTextChanged, this, [this](const QString &name) {
        if (m_form && m_form->state() != RecordForm::State::Browsing)
            kindChosen(name);
    });
    connect(m_ui->ComboKod, &QComboBox::currentTextChanged, this, [this] { showHolderName(); });
    connect(field(1), &QLineEdit::textChanged, this, [this] { showHolderName(); });
    connect(field(3), &QLineEdit::editingFinished, this, &Documents::proposeValidity);
    connect(m_ui->cmdRenew, &QPushButton::clicked, this, &Documents::renew);
    connect(m_ui->cmdKinds, &QPushButton::clicked, this, &Documents::editKinds);
    connect(m_ui->cmdDue, &QPushButton::clicked, this, &Documents::dueListRequested);
    connect(m_ui->cmdScanAttach, &QPushButton::clicked, this, &Documents::chooseScanFile);
    connect(m_ui->cmdScanOpen, &QPushButton::clicked, this, &Documents::openScan);
    connect(m_ui->cmdScanRemove, &QPushButton::clicked, this, &Documents::removeScan);
    m_ui->lblScan->setWordWrap(true);
    QFont bold = m_ui->lblState->font();
    bold.setBold(true);
    m_ui->lblState->setFont(bold);
    for (int index : {3, 4})
        field(index)->setMaximumWidth(110);
    m_ui->ComboKod->setMinimumWidth(150);
    resize(820, 470);
}

void Documents::kindChosen(const QString &name)
{
    const auto kind = kindOf(name);
    const Holder holder = kind ? kind->holder : Holder::Truck;
    m_ui->lblLabels_1->setText(holderName(holder) + QLatin1Char(':'));
    fillHolders(holder);
    proposeValidity();
}

void Documents::fillHolders(Holder holder)
{
    const QString typed = m_ui->ComboKod->currentText();
    m_ui->ComboKod->clear();
    if (holder == Holder::Truck) {
        m_ui->ComboKod->addItems(DocumentStore(m_db).trucks());
    } else {
        for (const auto &[code, name] : std::as_const(m_drivers)) {
            m_ui->ComboKod->addItem(code);
            m_ui->ComboKod->setItemData(m_ui->ComboKod->count() - 1, name, Qt::ToolTipRole);
        }
    }
    m_ui->ComboKod->setEditText(typed);
}

void Documents::showHolderName()
{
    const bool pending = m_form && m_form->state() != RecordForm::State::Browsing;
    const QString code = (pending ? m_ui->ComboKod->currentText() : field(1)->text()).trimmed();
    const auto kind = kindOf(pending ? m_ui->ComboVid->currentText() : field(0)->text());
    QString name;
    if (kind && kind->holder == Holder::Driver) {
        for (const auto &[driverCode, driverName] : std::as_const(m_drivers)) {
            if (driverCode == code)
                name = driverName;
        }
    }
    m_ui->lblHolderName->setText(name);
}

// Leaving the issue date of a new or corrected document with no validity typed: the kind's period.
void Documents::proposeValidity()
{
    if (!m_form || m_form->state() == RecordForm::State::Browsing || !field(4)->text().trimmed().isEmpty())
        return;
    const auto kind = kindOf(m_ui->ComboVid->currentText());
    const auto issued = parseDate(field(3)->text(), m_today);
    if (!kind || !issued)
        return;
    const QDate until = proposedValidUntil(*kind, *issued);
    if (until.isValid())
        field(4)->setText(formatDate(until));
}

bool Documents::showDocument(qint64 id)
{
    if (m_form->state() != RecordForm::State::Browsing)
        return false;
    if (!m_form->moveToId(id)) {
        // Written since the screen opened: read the rows again.
        m_form->reload();
        if (!m_form->moveToId(id))
            return false;
    }
    showCurrent();
    return true;
}

void Documents::renew()
{
    const RecordRow *current = m_form->currentRow();
    if (m_form->state() != RecordForm::State::Browsing || !current)
        return;
    if (current->values.value(QStringLiteral("Smenen")).toBool()) {
        MessageService::instance().inform(UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"),
                                                                QStringLiteral("Този документ вече е подновен!"),
                                                                QStringLiteral("Моля, подновете последния документ от вида."),
                                                                UserMessage::Icon::Exclamation));
        return;
    }
    m_renewing = *current;
    m_form->add();
}

void Documents::showCurrent()
{
    if (!m_form)
        return;
    showHolderName();
    const RecordRow *row = m_form->currentRow();
    const auto kind = row ? kindOf(row->values.value(QStringLiteral("Vid")).toString()) : std::nullopt;
    if (m_form->state() == RecordForm::State::Browsing)
        m_ui->lblLabels_1->setText(holderName(kind ? kind->holder : Holder::Truck) + QLatin1Char(':'));
    showScan();
    showHistory();
    showState();
    setButtons();
}

void Documents::showState()
{
    QLabel *label = m_ui->lblState;
    const RecordRow *row = m_form->currentRow();
    label->clear();
    if (!row || m_form->state() != RecordForm::State::Browsing)
        return;
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, palette.color(QPalette::Disabled, QPalette::WindowText));
    if (row->values.value(QStringLiteral("Smenen")).toBool()) {
        label->setText(QStringLiteral("Подновен: в сила е по-новият документ от този вид."));
        label->setPalette(palette);
        return;
    }
    const auto kind = kindOf(row->values.value(QStringLiteral("Vid")).toString());
    const QDate valid = dateOf(row->values.value(QStringLiteral("Valid")));
    if (!kind || !valid.isValid()) {
        label->setText(kind && !kind->remind ? QStringLiteral("Безсрочен: не се напомня.") : QString());
        label->setPalette(palette);
        return;
    }
    const DueState state = dueState(*kind, valid, m_today);
    QString text;
    if (state == DueState::Expired) {
        text = QStringLiteral("Изтекъл на %1!").arg(formatDate(valid));
        palette.setColor(QPalette::WindowText, expiredColor);
    } else {
        const qint64 days = m_today.daysTo(valid);
        text = days == 0 ? QStringLiteral("Валиден до днес.") : QStringLiteral("Валиден още %1 дни.").arg(days);
        if (kind->requestWorkDays > 0)
            text += QStringLiteral(" Подновяването се заявява до %1.").arg(formatDate(actByDate(*kind, valid)));
        if (state == DueState::Due)
            palette.setColor(QPalette::WindowText, dueColor);
        else
            palette = m_ui->lblLabels_0->palette();
    }
    label->setText(text);
    label->setPalette(palette);
}

void Documents::showScan()
{
    const RecordRow *row = m_form->currentRow();
    QLabel *picture = m_ui->picScan;
    picture->setPixmap(QPixmap());
    picture->setText(QStringLiteral("Няма сканирано копие"));
    m_ui->lblScan->clear();
    if (!row || m_form->state() != RecordForm::State::Browsing)
        return;
    const auto info = DocumentStore(m_db).scanInfo(row->id);
    if (!info || !info.value())
        return;
    m_ui->lblScan->setText(QStringLiteral("%1 (%2)").arg(info.value()->name, sizeText(info.value()->size)));
    const auto data = DocumentStore(m_db).scanData(row->id);
    QImage image;
    if (data && image.loadFromData(data.value())) {
        picture->setPixmap(QPixmap::fromImage(image.scaled(picture->minimumSize() - QSize(8, 8), Qt::KeepAspectRatio,
                                                           Qt::SmoothTransformation)));
    } else {
        picture->setText(QStringLiteral("%1\n\n„Отвори“ го показва.").arg(QFileInfo(info.value()->name).suffix().toUpper()));
    }
}

void Documents::showHistory()
{
    m_ui->lstHistory->clear();
    const RecordRow *row = m_form->currentRow();
    if (!row || m_form->state() != RecordForm::State::Browsing)
        return;
    const auto holder = holderOfCode(row->values.value(QStringLiteral("Za")).toString());
    if (!holder)
        return;
    const auto history = DocumentStore(m_db).history(row->values.value(QStringLiteral("Vid")).toString(), *holder,
                                                     row->values.value(QStringLiteral("Kod")).toString());
    if (!history)
        return;
    for (const RecordRow &earlier : history.value()) {
        if (earlier.id == row->id)
            continue;
        const QDate issued = dateOf(earlier.values.value(QStringLiteral("Izdaden")));
        const QDate valid = dateOf(earlier.values.value(QStringLiteral("Valid")));
        auto *line = new QListWidgetItem(QStringLiteral("№ %1   от %2   до %3%4")
                                             .arg(earlier.values.value(QStringLiteral("Nomer")).toString(),
                                                  issued.isValid() ? formatDate(issued) : QStringLiteral("-"),
                                                  valid.isValid() ? formatDate(valid) : QStringLiteral("-"),
                                                  earlier.values.value(QStringLiteral("Smenen")).toBool()
                                                      ? QStringLiteral("   (подновен)")
                                                      : QString()),
                                         m_ui->lstHistory);
        line->setData(Qt::UserRole, earlier.id);
    }
    if (m_ui->lstHistory->count() == 0) {
        auto *none = new QListWidgetItem(QStringLiteral("Няма по-стари документи от този вид."), m_ui->lstHistory);
        none->setFlags(Qt::NoItemFlags);
    }
}

void Documents::setButtons()
{
    const bool browsing = m_form->state() == RecordForm::State::Browsing;
    const RecordRow *row = m_form->currentRow();
    const bool hasRow = browsing && row;
    bool hasScan = false;
    if (hasRow) {
        const auto info = DocumentStore(m_db).scanInfo(row->id);
        hasScan = info && info.value();
    }
    m_ui->cmdRenew->setEnabled(hasRow && !row->values.value(QStringLiteral("Smenen")).toBool());
    m_ui->cmdKinds->setEnabled(browsing);
    m_ui->cmdDue->setEnabled(browsing);
    m_ui->cmdScanAttach->setEnabled(hasRow);
    m_ui->cmdScanOpen->setEnabled(hasScan);
    m_ui->cmdScanRemove->setEnabled(hasScan);
}

void Documents::chooseScanFile()
{
    const QString path = QFileDialog::getOpenFileName(
        this, QStringLiteral("Сканирано копие"), QDir::homePath(),
        QStringLiteral("Сканирани документи (*.pdf *.png *.jpg *.jpeg *.tif *.tiff *.bmp);;Всички файлове (*)"));
    if (!path.isEmpty())
        attachScanFile(path);
}

bool Documents::attachScanFile(const QString &path)
{
    const RecordRow *row = m_form->currentRow();
    if (!row || m_form->state() != RecordForm::State::Browsing)
        return false;
    const QFileInfo info(path);
    // A file over the size is refused before it is read.
    if (auto tooBig = checkScanSize(info.size())) {
        MessageService::instance().inform(*tooBig);
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        MessageService::instance().inform(UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"),
                                                                QStringLiteral("Файлът %1 не може да бъде прочетен!").arg(info.fileName()),
                                                                QStringLiteral("Моля, изберете друг файл."),
                                                                UserMessage::Icon::Exclamation));
        return false;
    }
    const QByteArray data = file.read(maxScanBytes + 1);
    std::optional<UserMessage> failure;
    {
        WaitCursor wait;
        failure = DocumentStore(m_db).attachScan(row->id, info.fileName(), data);
    }
    if (failure) {
        MessageService::instance().inform(*failure);
        return false;
    }
    showCurrent();
    return true;
}

void Documents::removeScan()
{
    const RecordRow *row = m_form->currentRow();
    if (!row || m_form->state() != RecordForm::State::Browsing)
        return;
    if (!MessageService::instance().askYesNo({QStringLiteral("Сканирано копие"),
                                              QStringLiteral("Да премахна ли сканираното копие на документа?"),
                                              UserMessage::Icon::Question}))
        return;
    if (auto failure = DocumentStore(m_db).removeScan(row->id))
        MessageService::instance().inform(*failure);
    showCurrent();
}

void Documents::openScan()
{
    const RecordRow *row = m_form->currentRow();
    if (!row)
        return;
    const DocumentStore store(m_db);
    const auto info = store.scanInfo(row->id);
    const auto data = store.scanData(row->id);
    if (!info || !info.value() || !data)
        return;
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::TempLocation) + QStringLiteral("/zarek-scans");
    QDir().mkpath(folder);
    QFile file(folder + QLatin1Char('/') + QString::number(row->id) + QLatin1Char('-') + QFileInfo(info.value()->name).fileName());
    if (!file.open(QIODevice::WriteOnly) || file.write(data.value()) != data.value().size()) {
        MessageService::instance().inform(UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"),
                                                                QStringLiteral("Копието не може да бъде записано за преглед!"),
                                                                QStringLiteral("Моля, проверете временната папка."),
                                                                UserMessage::Icon::Exclamation));
        return;
    }
    file.close();
    QDesktopServices::openUrl(QUrl::fromLocalFile(file.fileName()));
}

void Documents::editKinds()
{
    DocumentKinds kinds(m_db, this);
    kinds.exec();
    loadKinds();
    showCurrent();
}

}
