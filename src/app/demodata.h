#pragma once

#include "core/usermessage.h"
#include "invoicing/taxdocument.h"

#include <QDate>
#include <QSqlDatabase>
#include <functional>

namespace zarek {

// The administrator of a demo database.
inline constexpr char demoAdministratorName[] = "admin";
inline constexpr char demoAdministratorPassword[] = "zarek";

struct DemoOptions {
    int courses = 6000;                           // spread over two years before today
    QDate today = QDate::currentDate();
    quint32 seed = 20260101;                       // the same seed gives the same database
    std::function<void(int done, int total)> progress;  // called now and then while courses are saved
};

struct DemoSummary {
    int trucks = 0;
    int drivers = 0;
    int courses = 0;
    int invoices = 0;
    int stockRows = 0;
    int waybills = 0;
    int trips = 0;
    int documents = 0;
};

// Fills a new, migrated database with a believable firm: its own row, an administrator,
// trucks, drivers, tariffs, courses saved through the course store, warehouse movements,
// waybills, international trips and the documents of trucks and drivers. All of it is one transaction under the write lock; a
// database that holds any row already is refused and left as it was.
Checked<DemoSummary> fillDemoDatabase(QSqlDatabase &db, const DemoOptions &options);

// Writes a tax document and its lines as they stand, as issued and frozen (the number, amounts and
// parties taken as given); sets its id. For demo data and tests: issuing itself numbers and checks.
std::optional<UserMessage> writeTaxDocument(QSqlDatabase db, TaxDocument &document);

}
