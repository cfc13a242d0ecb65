#pragma once

#include "core/currency.h"
#include "core/usermessage.h"

#include <QDateTime>
#include <QList>
#include <QSqlDatabase>
#include <array>
#include <functional>
#include <optional>

// The firm's changeover to the euro as the database keeps it (table Evro, one row at most), the
// invoices issued in euro (EvroFakt), and the one-time conversion of the prices that stand open.
namespace zarek {

// The changeover the database records; an unset one while the firm keeps its books in leva.
Checked<Changeover> loadChangeover(QSqlDatabase db);

// True when the invoice of that number was issued in euro.
Checked<bool> isEuroInvoice(QSqlDatabase db, const QString &number);

// The open values the changeover converts, each as it stands in leva and as it will in euro, with
// the versions they were read at.
struct ChangeoverReview {
    QDate date;

    struct Tariffs {
        qint64 id = 0;
        int rowVersion = 0;
        std::array<double, 6> leva{};
        std::array<double, 6> euro{};
    };
    std::optional<Tariffs> tariffs;  // none when Tarifi has no row

    // A name on hand: the price of its latest receipt, which an issue must name.
    struct Stock {
        qint64 id = 0;
        int rowVersion = 0;
        QString name;
        double broi = 0;
        double leva = 0;
        double euro = 0;
    };
    QList<Stock> stock;

    // A receipt dated before the changeover with quantity left: what later issues from it cost.
    struct Receipt {
        qint64 id = 0;
        int rowVersion = 0;
        QDate data;
        QString docVid;
        QString docNom;
        QString name;
        double ostat = 0;
        double leva = 0;
        double euro = 0;
    };
    QList<Receipt> receipts;

    // Documents already dated from the changeover day: their amounts will be read as euro.
    int coursesFrom = 0;
    int movementsFrom = 0;
    int waybillsFrom = 0;
    int tripsFrom = 0;
    int documentsFrom() const { return coursesFrom + movementsFrom + waybillsFrom + tripsFrom; }
};

// The title of the changeover's boxes.
QString changeoverTitle();
// The changeover is recorded already: it is made once.
UserMessage changeoverDoneMessage(const Changeover &changeover);

// Reads what a changeover on that date would convert; refused when the firm has changed over.
Checked<ChangeoverReview> reviewChangeover(QSqlDatabase db, const QDate &date);

// Writes the reviewed conversion and records the changeover, in one transaction under the write
// lock: the tariffs and the prices on hand in euro, the euro price of each open receipt, the date
// and the rate. Refused, with nothing written, when the firm has changed over meanwhile or any of
// the reviewed rows was changed, added or taken since the review. beforeWrite (for tests) is asked
// before each write, numbered from 1; a message fails that write.
std::optional<UserMessage> runChangeover(QSqlDatabase db, const ChangeoverReview &review,
                                         const QDateTime &now = QDateTime::currentDateTime(),
                                         const std::function<std::optional<UserMessage>(int)> &beforeWrite = {});

// Records a changeover with nothing to convert, for a new firm that starts in euro; the caller's
// transaction holds it.
std::optional<UserMessage> recordChangeover(QSqlDatabase db, const QDate &date,
                                            const QDateTime &now = QDateTime::currentDateTime());

// The day a new firm started in euro counts from: the day the euro came, or today if earlier.
QDate euroStartDate(const QDate &today);

}
