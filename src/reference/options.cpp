#include "options.h"

#include "core/formats.h"
#include "documents/documentstore.h"
#include "forms/commandday.h"
#include "forms/messageservice.h"
#include "core/version.h"
#include "forms/recordbinder.h"
#include "forms/recordform.h"
#include "forms/unsavedwork.h"

#include <QFormLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace zarek {

Options::Options(QSqlDatabase db, QWidget *parent) : QDialog(parent), m_db(std::move(db))
{
    setObjectName(QStringLiteral("Options"));
    setWindowTitle(QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - Настройки"));
    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("tbsOptions"));

    // Trucks: a record form without checks; numbers typed the Bulgarian way.
    auto *trucksPage = new QWidget(m_tabs);
    trucksPage->setObjectName(QStringLiteral("picOptions_0"));
    RecordFormConfig config;
    config.suffix = QStringLiteral("1");
    config.statusText = QStringLiteral("Кола № ");
    config.newText = QStringLiteral("Добавяне");
    config.closeInStrip = false;
    config.keyboardNavigation = false;
    config.numberColumns = {QStringLiteral("Razhod"), QStringLiteral("Procent"), QStringLiteral("Ton")};
    // A truck holding documents: one question that tells how many go with it; they go in one transaction.
    config.deleteQuestionFor = [db = m_db](const RecordRow &row) {
        return documents::holderDeleteQuestionFor(db, documents::Holder::Truck, row);
    };
    config.remove = [db = m_db](const RecordRow &row) {
        return documents::DocumentStore(db).removeHolder(documents::Holder::Truck, row, QStringLiteral("ГРЕШКА при изтриване!"));
    };
    m_trucks = new RecordForm(std::make_unique<RecordStore>(m_db, QStringLiteral("Config"),
                                                            QStringList{QStringLiteral("kola"), QStringLiteral("Razhod"),
                                                                        QStringLiteral("Procent"), QStringLiteral("Ton")},
                                                            QStringLiteral("kola")),
                              config, trucksPage);
    auto *trucksForm = new QFormLayout;
    const char *truckLabels[] = {"Кола №", "Разход на 100км", "Процент заплата", "Тонаж"};
    const char *truckColumns[] = {"kola", "Razhod", "Procent", "Ton"};
    for (int i = 0; i < 4; ++i) {
        auto *edit = new QLineEdit(trucksPage);
        edit->setObjectName(QStringLiteral("txtFields1_%1").arg(i));
        edit->setMaximumWidth(i == 0 ? 160 : 120);
        if (i > 0)
            edit->setAlignment(Qt::AlignRight);
        trucksForm->addRow(QString::fromUtf8(truckLabels[i]), edit);
        edit->setProperty(RecordForm::columnProperty, QString::fromLatin1(truckColumns[i]));
    }
    m_trucks->bindColumns(trucksPage);
    auto *trucksLayout = new QVBoxLayout(trucksPage);
    trucksLayout->addLayout(trucksForm);
    trucksLayout->addStretch();
    trucksLayout->addWidget(m_trucks);
    m_tabs->addTab(trucksPage, QStringLiteral("Коли"));
    m_tabs->setTabToolTip(0, QStringLiteral("Задаване параметри на колите"));

    // Tariffs: six plain boxes, each judged as it changes.
    auto *tariffsPage = new QWidget(m_tabs);
    tariffsPage->setObjectName(QStringLiteral("picOptions_1"));
    auto *tariffsForm = new QFormLayout;
    const char *bandLabels[] = {"До 20 км", "20 - 30 км", "30 - 50 км", "50 - 100 км", "100 - 200 км", "Над 200 км"};
    m_tariffs = readTariffRow(m_db);
    for (int i = 0; i < 6; ++i) {
        m_rates[i] = new QLineEdit(tariffsPage);
        m_rates[i]->setObjectName(QStringLiteral("Text%1").arg(i + 1));
        m_rates[i]->setAlignment(Qt::AlignRight);
        m_rates[i]->setMaximumWidth(120);
        if (m_tariffs)
            m_rates[i]->setText(formatRate(m_tariffs->rates[static_cast<size_t>(i)]));
        RecordBinder::selectWholeTextOnClick(m_rates[i]);
        // Judged on every change, typed or not; the text stays as it is.
        connect(m_rates[i], &QLineEdit::textChanged, this, [](const QString &text) {
            if (!parseNumber(text))
                MessageService::instance().inform(invalidTariffTextMessage());
        });
        tariffsForm->addRow(QString::fromUtf8(bandLabels[i]), m_rates[i]);
    }
    auto *save = new QPushButton(QStringLiteral("Запиши"), tariffsPage);
    save->setAutoDefault(false);
    save->setObjectName(QStringLiteral("cmdUpdate2"));
    connect(save, &QPushButton::clicked, this, &Options::saveTariffs);
    auto *tariffsLayout = new QVBoxLayout(tariffsPage);
    // Once the firm has changed over, the bands are euro (with the decimals the conversion gave them).
    if (commandDay().changedOver()) {
        auto *unit = new QLabel(QStringLiteral("Цени в %1 за тон и километър").arg(amountUnit(Currency::Euro)), tariffsPage);
        unit->setObjectName(QStringLiteral("lblTariffUnit"));
        tariffsLayout->addWidget(unit);
    }
    tariffsLayout->addLayout(tariffsForm);
    tariffsLayout->addStretch();
    tariffsLayout->addWidget(save, 0, Qt::AlignRight);
    m_tabs->addTab(tariffsPage, QStringLiteral("Тарифи"));
    m_tabs->setTabToolTip(1, QStringLiteral("Задаване на цени за км"));

    auto *close = new QPushButton(QStringLiteral("Затвори"), this);
    close->setObjectName(QStringLiteral("cmdCancel"));
    close->setAutoDefault(false);
    // Closing with a truck or rates typed but not written asks first; a pending truck is dropped.
    connect(close, &QPushButton::clicked, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs);
    layout->addWidget(close, 0, Qt::AlignRight);
    setMinimumWidth(520);
    m_trucks->open();
    m_savedRates = typedRates();
    UnsavedWorkGuard::of(this)->watch(this, {[this] { return typedRates() != m_savedRates; }, {}});
}

QStringList Options::typedRates() const
{
    QStringList texts;
    for (QLineEdit *rate : m_rates)
        texts.append(rate->text());
    return texts;
}

void Options::saveTariffs()
{
    const QStringList texts = typedRates();
    const Checked<TariffRow> saved = saveTariffRow(m_db, m_tariffs, texts);
    if (!saved) {
        MessageService::instance().inform(saved.message());
        return;
    }
    m_tariffs = saved.value();
    m_savedRates = texts;
}

// Ctrl+Tab and Ctrl+Shift+Tab go round the tabs (inside the tab widget it does the same itself).
// No other key is the form's own: Esc does not close it.
void Options::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        return;
    const bool ctrl = event->modifiers() & Qt::ControlModifier;
    if (ctrl && (event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab)) {
        const int by = event->key() == Qt::Key_Backtab || (event->modifiers() & Qt::ShiftModifier) ? -1 : 1;
        m_tabs->setCurrentIndex((m_tabs->currentIndex() + by + m_tabs->count()) % m_tabs->count());
        return;
    }
    QDialog::keyPressEvent(event);
}

}
