#include "menutree.h"

#include <QKeySequence>
#include <QSet>
#include <QStringList>

namespace zarek {

namespace {

MenuEntry top(const char *name, const char *caption, int help)
{
    return {MenuEntry::Kind::TopMenu, QString::fromUtf8(name), QString::fromUtf8(caption), {}, help};
}

MenuEntry item(const char *name, const char *caption, const char *shortcut = "", int help = 0)
{
    return {MenuEntry::Kind::Item, QString::fromUtf8(name), QString::fromUtf8(caption), QString::fromLatin1(shortcut), help};
}

MenuEntry bar(const char *name)
{
    return {MenuEntry::Kind::Separator, QString::fromUtf8(name), {}, {}, 0};
}

}

const QList<MenuEntry> &menuTree()
{
    static const QList<MenuEntry> tree = {
        top("mnuSpr", "Справки", 100),
        item("mnuSprKola", "Курсове на кола", "", 5),
        item("mnuSprPer", "Всички курсове", "", 6),
        item("mnuSprJournal", "Журнал на курсовете", "Ctrl+J", 270),  // beyond the firm's old menu
        bar("mnuBar001"),
        item("mnuSprKlient", "Курсове на клиент", "", 7),
        item("mnuSprShof", "Курсове от шофьор", "", 8),
        bar("mnuBar002"),
        item("mnuSprKlientSakr", "Клиент за факруриране", "", 9),
        item("mnuSprFakturi", "Фактури", "", 325),  // beyond the firm's old menu
        bar("mnuBar003"),
        item("mnuSprBalanc", "Баланс на колите", "", 10),
        item("mnuSprPreRazh", "Разход нафта", "", 11),
        bar("mnuBar006"),
        item("mnuSprRowdList", "Пътни листи", "", 12),
        item("mnuSprDok", "Изтичащи документи", "", 301),  // beyond the firm's old menu
        item("mnuSprVzemania", "Вземания", "", 381),  // beyond the firm's old menu
        item("mnuSprIzvlechenie", "Извлечение по сметка", "", 382),  // beyond the firm's old menu
        bar("mnuBar005"),
        item("mnuFileExit", "Изход", "Ctrl+Z"),
        top("mnuData", "Данни", 101),
        item("mnuDataNew", "Нов курс", "Ctrl+N", 13),
        item("mnuDataShof", "Шофьори", "Ctrl+D", 14),
        item("mnuDataPList", "Пътни листи", "Ctrl+L", 15),
        item("mnuDataFakt", "Фактуриране", "Ctrl+F", 16),
        bar("mnuDataBar3"),
        item("mnuDataNewInside", "Международни курсове"),
        item("mnuDataDok", "Документи", "", 300),  // beyond the firm's old menu
        item("mnuDataKlienti", "Клиенти", "", 310),  // beyond the firm's old menu
        item("mnuDataPlashtania", "Плащания от клиенти", "", 380),  // beyond the firm's old menu
        bar("mnuDataBar1"),
        item("mnuDataKyrc", "Корекция на курс", "", 17),
        item("mnuDataKorКм", "Корекция КМ", "", 18),
        item("mnuDataKorPl", "Корекция плащане", "", 36),
        item("mnuDataEditFakt", "Корекция фактури", "", 19),
        item("mnuDataDebit", "Дебитно известие", "", 318),  // beyond the firm's old menu
        bar("mnuDataBar0"),
        item("mnuSlgZapl", "Заплати", "", 20),
        bar("mnuDataBar2"),
        item("mnuDataDAI", "ДАИ"),
        top("mnuDisk", "Дискети", 102),
        item("mnuDiskZap", "Записване", "Ctrl+S", 21),
        item("mnuDiskZar", "Зареждане", "Ctrl+O", 22),
        bar("mnuDiskBar1"),
        item("mnuNewPer", "Нова година", "", 23),
        top("mnuView", "Служебна", 103),
        item("mnuViewToolbar", "Бутони", "", 24),
        item("mnuViewStatusBar", "Статус поле", "", 25),
        bar("mnuSpBar0"),
        item("mnuSpOption", "Настройки", "", 26),
        bar("mnuSpBar1"),
        item("mnuSpAdmin", "Пароли"),
        bar("mnuSpBar2"),
        item("mnuSpEvro", "Преминаване към евро", "", 290),
        top("mnuSklad", "Склад", 104),
        item("mnuSklPrih", "Приход", "", 27),
        item("mnuSklRaz", "Разход", "", 28),
        bar("mnuSepBar0"),
        item("mnuSprPrihod", "Справка приходи", "", 29),
        item("mnuSprRazhod", "Справка разходи", "", 30),
        item("mnuSprBalans", "Справка баланс"),
        bar("mnuSepBar1"),
        item("mnuNal", "Наличност", "", 31),
        bar("mnuSepBar2"),
        item("mnuPrihPer", "Ревизия", "", 32),
        top("mnuHelp", "Помощ", 105),
        item("mnuHelpContents", "Съдържание", "", 33),
        item("mnuHelpGuide", "Ръководство", "", 292),
        item("mnuHelpKeys", "Клавишни комбинации", "", 291),
        bar("mnuHelpBar1"),
        item("mnuHelpPerson", "Инициализация"),
        bar("mnuHelpBar0"),
        item("mnuHelpWeb", "Интернет-страница"),
        bar("mnuHelpBar2"),
        item("mnuHelpAbout", "За програмата...", "", 35),
    };
    return tree;
}

const QStringList &restrictedMenuEntries()
{
    static const QStringList names = {QStringLiteral("mnuView"), QStringLiteral("mnuSprBalanc"),
                                      QStringLiteral("mnuSprPreRazh"), QStringLiteral("mnuBar003"),
                                      QStringLiteral("mnuHelpPerson")};
    return names;
}

bool seesAllMenus(const QString &userVid)
{
    return userVid == QLatin1String("A") || userVid == QLatin1String("B");
}

const QList<ToolbarKey> &toolbarKeys()
{
    static const QList<ToolbarKey> keys = {
        {QStringLiteral("Kola"), QStringLiteral("Справка за кола"), QStringLiteral("mnuSprKola")},
        {QStringLiteral("Per"), QStringLiteral("Справка за период"), QStringLiteral("mnuSprPer")},
        {QStringLiteral("SprList"), QStringLiteral("Справка пътни листи"), QStringLiteral("mnuSprRowdList")},
        {QStringLiteral("Kl"), QStringLiteral("Справка за клиент"), QStringLiteral("mnuSprKlientSakr")},
        {QStringLiteral("SprSh"), QStringLiteral("Справка за шофьор"), QStringLiteral("mnuSprShof")},
        {QStringLiteral("Journal"), QStringLiteral("Журнал на курсовете"), QStringLiteral("mnuSprJournal")},
        {QStringLiteral("NewKurs"), QStringLiteral("Нов курс"), QStringLiteral("mnuDataNew")},
        {QStringLiteral("NewShof"), QStringLiteral("Шофьор - нов/корекция "), QStringLiteral("mnuDataShof")},
        {QStringLiteral("NewL"), QStringLiteral("Пътен лист - нов/корекция "), QStringLiteral("mnuDataPList")},
        {QStringLiteral("NewF"), QStringLiteral("Фактура - нова/корекция "), QStringLiteral("mnuDataFakt")},
        {QStringLiteral("KM"), QStringLiteral("Корекция КМ"), QStringLiteral("mnuDataKorКм")},
        {QStringLiteral("PL"), QStringLiteral("Корекция плащане"), QStringLiteral("mnuDataKorPl")},
        {QStringLiteral("Save"), QStringLiteral("Запис на дискета"), QStringLiteral("mnuDiskZap")},
        {QStringLiteral("Open"), QStringLiteral("Зареждане от дискета"), QStringLiteral("mnuDiskZar")},
    };
    return keys;
}

QStringList withMnemonics(const QStringList &captions)
{
    QSet<QChar> taken;
    QStringList marked;
    const auto freeAt = [&taken](const QString &caption, bool wordStartsOnly) -> qsizetype {
        for (qsizetype i = 0; i < caption.size(); ++i) {
            const QChar c = caption[i];
            const bool wordStart = i == 0 || !caption[i - 1].isLetterOrNumber();
            if (c.isLetterOrNumber() && (wordStart || !wordStartsOnly) && !taken.contains(c.toLower()))
                return i;
        }
        return -1;
    };
    for (const QString &caption : captions) {
        QString text = caption;
        text.replace(QLatin1Char('&'), QStringLiteral("&&"));
        qsizetype at = freeAt(text, true);
        if (at < 0)
            at = freeAt(text, false);
        if (at >= 0) {
            taken.insert(text[at].toLower());
            text.insert(at, QLatin1Char('&'));
        }
        marked.append(text);
    }
    return marked;
}

QList<KeyRow> keyboardShortcuts()
{
    QList<KeyRow> rows;
    QString menu;
    for (const MenuEntry &entry : menuTree()) {
        if (entry.kind == MenuEntry::Kind::TopMenu)
            menu = entry.caption;
        else if (entry.kind == MenuEntry::Kind::Item && !entry.shortcut.isEmpty())
            rows.append({QKeySequence(entry.shortcut).toString(QKeySequence::NativeText), menu + QStringLiteral(" → ") + entry.caption});
    }
    rows += {
        {QStringLiteral("F1"), QStringLiteral("Помощ за командата от менюто или за екрана отпред")},
        {QStringLiteral("F10"), QStringLiteral("Към менюто (първото меню се отваря)")},
        {QStringLiteral("Alt+подчертана буква"), QStringLiteral("Отваря менюто или изпълнява командата с тази буква")},
        {QStringLiteral("Tab, Shift+Tab"), QStringLiteral("Към следващото, предишното поле или бутон")},
        {QStringLiteral("Enter"), QStringLiteral("Натиска бутона, на който е фокусът; в диалог - основния бутон")},
        {QStringLiteral("Интервал"), QStringLiteral("Натиска бутона, на който е фокусът; в списъците за фактуриране и "
                                                 "плащане маркира реда")},
        {QStringLiteral("Esc"), QStringLiteral("Затваря диалога, без да приеме")},
    };
    return rows;
}

QString weekdayName(int dayOfWeek)
{
    static const QStringList names = {QStringLiteral("Понеделник"), QStringLiteral("Вторник"), QStringLiteral("Сряда"),
                                      QStringLiteral("Четвъртък"),  QStringLiteral("Петък"),   QStringLiteral("Събота"),
                                      QStringLiteral("Неделя")};
    return dayOfWeek >= 1 && dayOfWeek <= 7 ? names[dayOfWeek - 1] : QString();
}

}
