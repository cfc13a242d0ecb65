#pragma once

#include "core/usermessage.h"

#include <QString>

// The checks and messages of the waybill editor, GUI-free.
namespace zarek::waybills {

// The texts of a waybill's header as they stand in its boxes at a save.
struct HeaderTexts {
    QString date;
    QString number;
    QString kola;
    QString driver;
    QString sumKm;
    QString sumFuel;
};

// The header save's checks in their order: date, number, truck, driver, then the route sums
// (both empty: no routes were totalled). The first that fails gives its message.
std::optional<UserMessage> checkHeader(const HeaderTexts &texts);

// A critical box titled "   ВНИМАНИЕ!" (or another title): first line, blank line, second line.
UserMessage criticalBox(const QString &title, const QString &first, const QString &second);
UserMessage attentionBox(const QString &first, const QString &second);

UserMessage noTruckMessage();          // the route tab, and check 4 of the save
UserMessage noNumberMessage();         // check 2 of the save; the route tab of a new waybill
UserMessage duplicateNumberMessage();  // "   ГРЕШКА!" "Съществува пътен лист със същия номер!"
UserMessage noNormMessage();           // a route line of a truck without its fuel norm
UserMessage deleteQuestion();          // the one Yes/No question before a waybill or a line goes

// The error box title of the waybill's save.
QString headerSaveCaption();

}
