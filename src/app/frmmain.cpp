#include "frmmain.h"

#include "app/about.h"
#include "app/commandtable.h"
#include "app/diskcommands.h"
#include "app/helptopics.h"
#include "app/helpwindow.h"
#include "app/menutree.h"
#include "app/password.h"
#include "app/personal.h"
#include "app/prehodevro.h"
#include "core/currency.h"
#include "core/dates.h"
#include "core/formats.h"
#include "data/changeoverstore.h"
#include "core/version.h"
#include "data/scratchdatabase.h"
#include "forms/commandday.h"
#include "forms/commands.h"
#include "forms/messageservice.h"
#include "courses/searchconditions.h"
#include "dashboard/tablo.h"
#include "documents/documentscommands.h"
#include "fleet/balans.h"
#include "forms/datachanges.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDateTime>
#include <QDesktopServices>
#include <QTableView>
#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
#include <QPainter>
#include <QScrollArea>
#include <QSettings>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <QUrl>

namespace zarek {

namespace {

QString settingsFile;

// Positions and sizes are kept in twips; 15 twips make a pixel at 96 dpi.
int toPixels(const QVariant &twips) { return twips.toString().toInt() / 15; }
QString toTwips(int pixels) { return QString::number(pixels * 15); }

QIcon badgeIcon(const QString &text, const QColor &colour)
{
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(colour);
    painter.setPen(colour.darker(140));
    painter.drawRoundedRect(QRectF(1.5, 1.5, 29, 29), 6, 6);
    QFont font = QApplication::font();
    font.setBold(true);
    font.setPixelSize(text.size() > 2 ? 11 : 14);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(QRectF(0, 0, 32, 32), Qt::AlignCenter, text);
    return QIcon(pixmap);
}

QIcon toolbarIcon(const QString &key)
{
    const QColor reports(0x2e, 0x6d, 0xb4), data(0x2f, 0x8f, 0x4e), money(0xc0, 0x6a, 0x14), disk(0x6b, 0x6b, 0x6b);
    static const QHash<QString, std::pair<QString, int>> looks = {
        {QStringLiteral("Kola"), {QStringLiteral("К"), 0}},  {QStringLiteral("Per"), {QStringLiteral("Σ"), 0}},
        {QStringLiteral("SprList"), {QStringLiteral("ПЛ"), 0}}, {QStringLiteral("Kl"), {QStringLiteral("Кл"), 0}},
        {QStringLiteral("SprSh"), {QStringLiteral("Ш"), 0}},  {QStringLiteral("Journal"), {QStringLiteral("Ж"), 0}},
        {QStringLiteral("NewKurs"), {QStringLiteral("+К"), 1}},
        {QStringLiteral("NewShof"), {QStringLiteral("+Ш"), 1}}, {QStringLiteral("NewL"), {QStringLiteral("+Л"), 1}},
        {QStringLiteral("NewF"), {QStringLiteral("Ф"), 2}},     {QStringLiteral("KM"), {QStringLiteral("км"), 1}},
        {QStringLiteral("Save"), {QStringLiteral("⇩"), 3}},
        {QStringLiteral("Open"), {QStringLiteral("⇧"), 3}}};
    // Payments show the sign of the money paid today.
    const auto look = key == QLatin1String("PL") ? std::pair{currencySign(commandDay().currencyOn(commandDay().today)), 2} : looks.value(key);
    const QColor colours[] = {reports, data, money, disk};
    return badgeIcon(look.first, colours[look.second]);
}

}

void FrmMain::setSettingsFile(const QString &path)
{
    settingsFile = path;
}

bool FrmMain::showDueNotice(const QString &user, const QDate &today)
{
    const auto store = settings();
    return documents::showDueNotice(*m_commands, *store, user, today);
}

std::unique_ptr<QSettings> FrmMain::settings() const
{
    auto store = settingsFile.isEmpty() ? std::make_unique<QSettings>(QStringLiteral("Zarek"), QStringLiteral("Zarek"))
                                        : std::make_unique<QSettings>(settingsFile, QSettings::IniFormat);
    store->beginGroup(QStringLiteral("Settings"));
    return store;
}

FrmMain::FrmMain(const FirmProfile &profile, const DatabaseConfig &database, QSqlDatabase db, const QString &userVid,
                 QWidget *parent)
    : QMainWindow(parent), m_profile(profile), m_database(database), m_db(std::move(db)), m_scratch(std::make_unique<ScratchDatabase>())
{
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(mainWindowTitle(profile));
    refreshChangeover();
    buildMenus();
    buildToolbar();
    buildStatusBar();
    statusBar()->setToolTip(database.describe());
    restoreSettings();
    applyRights(userVid);
    route();
    buildDashboard();
    qApp->installEventFilter(this);
}

void FrmMain::showHelp(int topic)
{
    // Over a modal screen the help opens in front of it, as a window of that screen, and can be read
    // and closed there; the screen waits behind it.
    QWidget *modal = QApplication::activeModalWidget();
    QWidget *owner = m_help && modal == m_help.data() ? m_help->parentWidget() : modal ? modal : this;
    if (m_help && m_help->parentWidget() != owner)
        m_help->close();
    if (!m_help) {
        auto *help = new HelpWindow(owner);
        help->setAttribute(Qt::WA_DeleteOnClose);
        if (owner != this)
            help->setWindowModality(Qt::ApplicationModal);
        m_help = help;
    }
    static_cast<HelpWindow *>(m_help.data())->showTopic(topic);
    m_help->show();
    m_help->raise();
    m_help->activateWindow();
}

int FrmMain::shownHelpTopic() const
{
    return m_help ? static_cast<HelpWindow *>(m_help.data())->currentTopic() : 0;
}

// F1 shows the topic of the highlighted menu command or of the screen in front.
bool FrmMain::eventFilter(QObject *watched, QEvent *event)
{
    // F10 opens the first menu of the bar, as on the desktop, when the main window has the keys.
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_F10
        && static_cast<QKeyEvent *>(event)->modifiers() == Qt::NoModifier && !QApplication::activePopupWidget()) {
        auto *target = qobject_cast<QWidget *>(watched);
        if (target && target->window() == this && !QApplication::activeModalWidget()) {
            for (QAction *top : menuBar()->actions()) {
                if (top->isVisible() && top->isEnabled()) {
                    menuBar()->setActiveAction(top);
                    break;
                }
            }
            return true;
        }
    }
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_F1) {
        int topic = helpContentsTopic;
        if (auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget()); menu && menu->activeAction()) {
            topic = menu->activeAction()->data().toInt();
            menu->close();
        } else {
            // The window that took the key, else the active one.
            auto *target = qobject_cast<QWidget *>(watched);
            QWidget *front = target ? target->window() : QApplication::activeWindow();
            if (front && front->property("helpTopic").toInt() > 0)
                topic = front->property("helpTopic").toInt();
            else if (target && m_tablo && m_tablo->isAncestorOf(target))
                topic = m_tablo->property("helpTopic").toInt();
        }
        showHelp(topic > 0 ? topic : helpContentsTopic);
        return true;
    }
    return QMainWindow::eventFilter(watched, event);
}

FrmMain::~FrmMain() = default;

void FrmMain::buildMenus()
{
    // Every menu and item has its Alt letter, unique within its menu.
    QStringList topCaptions;
    QHash<QString, QStringList> itemCaptions;
    QString currentTop;
    for (const MenuEntry &entry : menuTree()) {
        if (entry.kind == MenuEntry::Kind::TopMenu) {
            currentTop = entry.name;
            topCaptions.append(entry.caption);
        } else if (entry.kind == MenuEntry::Kind::Item) {
            itemCaptions[currentTop].append(entry.caption);
        }
    }
    const QStringList topMarked = withMnemonics(topCaptions);
    QHash<QString, QStringList> itemMarked;
    for (auto it = itemCaptions.cbegin(); it != itemCaptions.cend(); ++it)
        itemMarked.insert(it.key(), withMnemonics(it.value()));
    int topIndex = 0;
    int itemIndex = 0;

    QMenu *current = nullptr;
    for (const MenuEntry &entry : menuTree()) {
        QAction *action = nullptr;
        if (entry.kind == MenuEntry::Kind::TopMenu) {
            current = menuBar()->addMenu(topMarked.value(topIndex++));
            current->setObjectName(entry.name);
            currentTop = entry.name;
            itemIndex = 0;
            action = current->menuAction();
        } else if (entry.kind == MenuEntry::Kind::Separator) {
            action = current->addSeparator();
        } else {
            action = current->addAction(itemMarked.value(currentTop).value(itemIndex++));
            if (!entry.shortcut.isEmpty())
                action->setShortcut(QKeySequence(entry.shortcut));
        }
        action->setObjectName(entry.name);
        action->setData(entry.help);
        m_actions.insert(entry.name, action);
    }
    for (const char *toggle : {"mnuViewToolbar", "mnuViewStatusBar"}) {
        m_actions.value(QString::fromLatin1(toggle))->setCheckable(true);
        m_actions.value(QString::fromLatin1(toggle))->setChecked(true);
    }
}

void FrmMain::buildToolbar()
{
    m_toolBar = addToolBar(QStringLiteral("Бутони"));
    m_toolBar->setObjectName(QStringLiteral("tbToolBar"));
    m_toolBar->setMovable(false);
    m_toolBar->setIconSize(QSize(32, 32));
    for (const ToolbarKey &key : toolbarKeys()) {
        QAction *menu = m_actions.value(key.menuItem);
        QAction *button = m_toolBar->addAction(toolbarIcon(key.key), key.toolTip);
        button->setObjectName(key.key);
        button->setToolTip(key.toolTip);
        button->setEnabled(menu->isEnabled());
        connect(menu, &QAction::changed, button, [button, menu] { button->setEnabled(menu->isEnabled()); });
        connect(button, &QAction::triggered, menu, &QAction::trigger);
        if (key.key == QLatin1String("NewF") || key.key == QLatin1String("Save"))
            m_toolBar->addSeparator();
    }
}

void FrmMain::buildStatusBar()
{
    statusBar()->setObjectName(QStringLiteral("sbStatusBar"));
    statusBar()->setSizeGripEnabled(true);
    const QStringList texts = {QStringLiteral("Готов за работа"), QStringLiteral("F1-Помощ"), QString(), QString()};
    for (int i = 0; i < texts.size(); ++i) {
        auto *panel = new QLabel(texts[i], this);
        panel->setObjectName(QStringLiteral("panel%1").arg(i + 1));
        panel->setFrameShape(QFrame::StyledPanel);
        panel->setFrameShadow(QFrame::Sunken);
        panel->setContentsMargins(4, 0, 4, 0);
        if (i == 0)
            statusBar()->addWidget(panel, 1);
        else
            statusBar()->addPermanentWidget(panel);
        m_panels.append(panel);
    }
    auto *clock = new QTimer(this);
    const auto tick = [this] {
        const QDateTime now = QDateTime::currentDateTime();
        m_panels[1]->setText(weekdayName(now.date().dayOfWeek()));
        m_panels[2]->setText(formatDate(now.date()));
        m_panels[3]->setText(now.time().toString(QStringLiteral("HH:mm")));
    };
    connect(clock, &QTimer::timeout, this, tick);
    clock->start(1000);
    tick();
}

QString FrmMain::panelText(int panel) const
{
    return panel >= 1 && panel <= m_panels.size() ? m_panels[panel - 1]->text() : QString();
}

void FrmMain::setPanel(const QString &text)
{
    m_panels[0]->setText(text);
}

void FrmMain::restoreSettings()
{
    const auto store = settings();
    // The same rectangle as stored (the window without its frame): a frame never makes it creep.
    setGeometry(toPixels(store->value(QStringLiteral("MainLeft"), 1000)),
                toPixels(store->value(QStringLiteral("MainTop"), 1000)),
                toPixels(store->value(QStringLiteral("MainWidth"), 11000)),
                toPixels(store->value(QStringLiteral("MainHeight"), 6500)));
    m_toolBar->setVisible(store->value(QStringLiteral("MainToolBar"), QStringLiteral("True")).toString() != QLatin1String("False"));
    // Written as MainStatBar but read as MainSataBar: a hidden status bar shows again at the next start.
    statusBar()->setVisible(store->value(QStringLiteral("MainSataBar"), QStringLiteral("True")).toString() != QLatin1String("False"));
}

void FrmMain::storeSettings()
{
    const auto store = settings();
    const QRect frame = geometry();
    store->setValue(QStringLiteral("MainLeft"), toTwips(frame.x()));
    store->setValue(QStringLiteral("MainTop"), toTwips(frame.y()));
    store->setValue(QStringLiteral("MainWidth"), toTwips(frame.width()));
    store->setValue(QStringLiteral("MainHeight"), toTwips(frame.height()));
    store->setValue(QStringLiteral("MainToolBar"), m_toolBar->isVisible() ? QStringLiteral("True") : QStringLiteral("False"));
    store->setValue(QStringLiteral("MainStatBar"), statusBar()->isVisible() ? QStringLiteral("True") : QStringLiteral("False"));
}

void FrmMain::applyRights(const QString &userVid)
{
    const bool all = seesAllMenus(userVid);
    for (const QString &name : restrictedMenuEntries())
        m_actions.value(name)->setVisible(all);
    // The changeover to the euro is the administrator's alone.
    const bool administrator = userVid == QLatin1String("A");
    for (const char *name : {"mnuSpBar2", "mnuSpEvro"})
        m_actions.value(QString::fromLatin1(name))->setVisible(administrator);
}

// Another workstation may have changed the firm over to the euro meanwhile: every command starts
// from what the database says (a failed reading keeps what was known), and from today's date, read
// here once for all the command does.
void FrmMain::refreshChangeover()
{
    const Checked<Changeover> changeover = loadChangeover(m_db);
    setCommandDay({changeover ? changeover.value() : commandDay().changeover, QDate::currentDate()});
    if (m_toolBar) {
        if (QAction *payments = m_toolBar->findChild<QAction *>(QStringLiteral("PL")))
            payments->setIcon(toolbarIcon(QStringLiteral("PL")));
    }
}

// The other windows close first; one that holds typing asks, and "Не" there keeps the program running.
void FrmMain::closeEvent(QCloseEvent *event)
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window != this && window->isVisible() && !window->close()) {
            event->ignore();
            return;
        }
    }
    m_scratch.reset();  // the scratch file goes with the window
    if (!isMinimized())
        storeSettings();
    event->accept();
}

void FrmMain::changeEvent(QEvent *event)
{
    // On every activation the check marks of the two bars are set, whatever the bars' state; a
    // hidden bar stays hidden until its item is chosen.
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        for (const char *name : {"mnuViewToolbar", "mnuViewStatusBar"}) {
            QAction *mark = m_actions.value(QString::fromLatin1(name));
            const QSignalBlocker quiet(mark);
            mark->setChecked(true);
        }
    }
    QMainWindow::changeEvent(event);
}

void FrmMain::route()
{
    // Commands whose screens are not built yet stay in the menu, disabled.
    for (QAction *action : std::as_const(m_actions)) {
        if (!action->isSeparator() && !action->menu())
            action->setEnabled(false);
    }
    CommandContext context;
    context.db = m_db;
    context.scratch = m_scratch.get();
    context.window = this;
    context.firm = [this]() -> const FirmProfile & { return m_profile; };
    context.setPanel = [this](const QString &text) { setPanel(text); };
    context.panel = [this] { return panelText(1); };
    context.helpTopic = [this](const QString &menuItem) {
        QAction *action = m_actions.value(menuItem);
        return action ? action->data().toInt() : 0;
    };
    context.firmChanged = [this](const FirmProfile &profile) {
        m_profile = profile;
        setWindowTitle(mainWindowTitle(profile));
    };
    m_commands = std::make_unique<CommandRegistry>(std::move(context));
    registerSubsystemCommands(*m_commands);
    registerShellCommands();
    for (const QString &name : m_commands->menuItems()) {
        QAction *action = m_actions.value(name);
        Q_ASSERT_X(action, "FrmMain::route", qPrintable(name));
        if (!action)
            continue;
        connect(action, &QAction::triggered, this, [this, name] {
            refreshChangeover();
            m_commands->handler(name)();
            // A modal screen has closed, or a window opened: what it wrote shows on the dashboard.
            DataChanges::instance().notify();
        });
        action->setEnabled(true);
    }
    connect(m_actions.value(QStringLiteral("mnuViewToolbar")), &QAction::toggled, m_toolBar, &QWidget::setVisible);
    connect(m_actions.value(QStringLiteral("mnuViewStatusBar")), &QAction::toggled, statusBar(), &QWidget::setVisible);
    for (const char *name : {"mnuViewToolbar", "mnuViewStatusBar", "mnuSprBalans"})
        m_actions.value(QString::fromLatin1(name))->setEnabled(true);
}

namespace {

// The menu command that opens a client's account; the receivables tile runs it.
const QString clientAccountMenu = QStringLiteral("mnuSprIzvlechenie");

SearchConditions periodConditions(const Period &period)
{
    SearchConditions conditions;
    conditions.period = period;
    conditions.SeekFrom = formatDate(period.from);
    conditions.SeekTo = formatDate(period.to);
    return conditions;
}

}

void FrmMain::buildDashboard()
{
    using dashboard::Tile;
    m_tablo = new dashboard::Tablo(
        m_db, [] { return commandDay(); }, [this] { return m_profile; }, this);
    // In a window smaller than the tiles want, they scroll: the window keeps the size it is given.
    auto *area = new QScrollArea(this);
    area->setObjectName(QStringLiteral("scrTablo"));
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(m_tablo);
    setCentralWidget(area);
    m_tablo->setProperty("helpTopic", 340);
    // A tile shows only to a user who may open the screen it acts on.
    const auto allowed = [this](const QString &menuItem) {
        QAction *action = m_actions.value(menuItem);
        return action && action->isVisible() && m_commands->has(menuItem);
    };
    m_tablo->setTileAllowed(Tile::Month, allowed(QStringLiteral("mnuSprPer")));
    m_tablo->setTileAllowed(Tile::Uninvoiced, allowed(QStringLiteral("mnuDataFakt")));
    m_tablo->setTileAllowed(Tile::Unpaid, allowed(QStringLiteral("mnuSlgZapl")));
    m_tablo->setTileAllowed(Tile::Receivables, allowed(clientAccountMenu));
    m_tablo->setTileAllowed(Tile::Documents, allowed(QStringLiteral("mnuDataDok")));
    m_tablo->setTileAllowed(Tile::Profit, allowed(QStringLiteral("mnuSprBalanc")));

    connect(m_tablo, &dashboard::Tablo::openMonthReport, this, [this](const Period &month) {
        SearchConditions conditions = periodConditions(month);
        conditions.SeekChoice = QStringLiteral("All");
        runTarget(QStringLiteral("mnuSprPer"), conditions);
    });
    connect(m_tablo, &dashboard::Tablo::openInvoicing, this, [this](const QString &klient, const Period &period) {
        SearchConditions conditions = periodConditions(period);
        conditions.SeekKlient = klient;
        runTarget(QStringLiteral("mnuDataFakt"), conditions);
    });
    connect(m_tablo, &dashboard::Tablo::openPaySheet, this,
            [this](const QString &kod, const QString &name, const Period &period) {
                SearchConditions conditions = periodConditions(period);
                conditions.SeekDriverKod = kod;
                conditions.SeekDriverIme = name;
                runTarget(QStringLiteral("mnuSlgZapl"), conditions);
            });
    connect(m_tablo, &dashboard::Tablo::openClientAccount, this,
            [this](const QString &klient) { runTarget(clientAccountMenu, klient); });
    connect(m_tablo, &dashboard::Tablo::openDocument, this,
            [this](qint64 id) { runTarget(QStringLiteral("mnuDataDok"), id); });
    connect(m_tablo, &dashboard::Tablo::openBalans, this, [this](const QString &kola, const Period &period) {
        if (!runTarget(QStringLiteral("mnuSprBalanc"), periodConditions(period)))
            return;
        // The balance lists every truck: it opens on the one chosen.
        if (auto *balans = qobject_cast<Balans *>(m_commands->openWindow(QStringLiteral("Balans")))) {
            const QList<TruckBalance> &trucks = balans->balances();
            for (int row = 0; row < trucks.size(); ++row) {
                if (trucks[row].kola == kola && balans->grid()->model())
                    balans->grid()->setCurrentIndex(balans->grid()->model()->index(row, 0));
            }
        }
    });

    // Changes come in bursts (a screen saving row after row): the figures are read once they settle.
    m_dashboardRefresh = new QTimer(this);
    m_dashboardRefresh->setSingleShot(true);
    m_dashboardRefresh->setInterval(250);
    connect(m_dashboardRefresh, &QTimer::timeout, m_tablo, &dashboard::Tablo::refresh);
    connect(&DataChanges::instance(), &DataChanges::changed, m_dashboardRefresh, qOverload<>(&QTimer::start));
    // Signed in: the first figures as soon as the window stands.
    QTimer::singleShot(0, m_tablo, &dashboard::Tablo::refresh);
}

bool FrmMain::runTarget(const QString &menuItem, const std::any &conditions)
{
    QAction *action = m_actions.value(menuItem);
    if (!m_commands->hasTarget(menuItem) || (action && !action->isVisible()))
        return false;
    refreshChangeover();
    m_commands->runTarget(menuItem, conditions);
    DataChanges::instance().notify();
    return true;
}

SearchMode FrmMain::searchMode() const
{
    return m_commands->context().searchMode;
}

// The shell's own commands: archive, restore and year close, users, the firm's data, help, about, exit.
void FrmMain::registerShellCommands()
{
    CommandRegistry &commands = *m_commands;
    registerDiskCommands(commands);
    commands.add(QStringLiteral("mnuSpAdmin"), [this] { PassWord(m_db, this).exec(); });
    commands.add(QStringLiteral("mnuSpEvro"), [this] {
        // Made once: a firm in euro already is told so, and nothing opens.
        if (commandDay().changedOver()) {
            MessageService::instance().inform(changeoverDoneMessage(commandDay().changeover));
            return;
        }
        setPanel(QStringLiteral("Преминаване към евро"));
        PrehodEvro screen(m_db, this);
        m_commands->runModal(screen, m_commands->context().helpTopic(QStringLiteral("mnuSpEvro")));
        refreshChangeover();
    });
    commands.add(QStringLiteral("mnuHelpPerson"), [this] {
        m_commands->showOnce(QStringLiteral("Personal"), [this] { return new Personal(m_db, m_profile, this); }, 0);
    });
    commands.add(QStringLiteral("mnuHelpAbout"), [this] {
        About about(m_database, this);
        m_commands->runModal(about, m_commands->context().helpTopic(QStringLiteral("mnuHelpAbout")));
    });
    commands.add(QStringLiteral("mnuHelpContents"), [this] { showHelp(helpContentsTopic); });
    commands.add(QStringLiteral("mnuHelpGuide"), [this] { showHelp(helpGuideTopic); });
    commands.add(QStringLiteral("mnuHelpKeys"), [this] { showHelp(helpKeysTopic); });
    // Ctrl+Z, the key of "undo" everywhere else, ends the program only when the user says so.
    commands.add(QStringLiteral("mnuFileExit"), [this] {
        if (MessageService::instance().askYesNo({QStringLiteral("Изход"), QStringLiteral("Да изляза ли от програмата?"),
                                                 UserMessage::Icon::Question}))
            close();
    });
    commands.add(QStringLiteral("mnuHelpWeb"), [] { QDesktopServices::openUrl(QUrl(version::homePage())); });
}

}
