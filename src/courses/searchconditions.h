#pragma once

#include "core/dates.h"
#include "core/usermessage.h"
#include "core/searchmode.h"

#include <QDate>
#include <QString>
#include <QStringList>

namespace zarek {

// What a search dialog hands to the screen or report after it: the conditions, as a value.
// Blank texts mean no condition.
struct SearchConditions {
    QString SeekFrom;
    QString SeekTo;
    QString SeekKola;
    QString SeekNomFakt;
    QString SeekKlient;
    QString SeekDriverKod;
    QString SeekDriverIme;
    QString SeekArtikul;
    QString SeekChoice;  // "All", "Yes" or "No"
    QString SeekMarsh;   // route prefix
    QString SeekTovar;   // cargo prefix
    Period period;       // the two dates read; invalid where the dialog asks no period

    bool operator==(const SearchConditions &) const = default;
};

// The three choices of the alternative search: all, invoiced (or paid), not invoiced (or unpaid).
enum class SearchChoice { All, Yes, No };

// The messages of the search dialogs; the box keeps its design caption.
UserMessage searchMessage(const QString &text);
UserMessage searchCancelledMessage();  // "Няма избрани ограничения за търсене!"
UserMessage emptyListMessage();        // "Липсват данните за списъка!"
UserMessage noCoursesMessage();        // "Няма въведени курсове в компютъра!"

// The general search: a period (not for invoices and stock on hand) and one condition by mode.
// A truck, invoice, client or driver typed must be one of the list's items (listed).
Checked<SearchConditions> checkSeek(SearchMode mode, const QString &from, const QString &to, const QString &combo,
                                    const QString &article, const QStringList &listed,
                                    QDate today = {});

// The search with the three-way choice: all courses or a driver's.
Checked<SearchConditions> checkSeekAlt(SearchMode mode, const QString &from, const QString &to, const QString &combo,
                                       SearchChoice choice, QDate today = {});

// The invoicing search: a period, a client of the list, optionally a truck of the list, route and
// cargo prefixes. For warehouse expenses (SkladPRN) client and truck are not checked.
struct SeekAllInput {
    QString from;
    QString to;
    QString klient;
    QString kola;
    QString marsh;
    QString tovar;
};
Checked<SearchConditions> checkSeekAll(SearchMode mode, const SeekAllInput &input, const QStringList &klientList,
                                       const QStringList &kolaList, QDate today = {});

// "kod,ime" split at the first comma into its trimmed parts; no comma gives no driver.
bool splitDriver(const QString &text, QString *kod, QString *ime);

}
