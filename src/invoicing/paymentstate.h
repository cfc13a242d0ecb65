#pragma once

#include "core/money.h"

#include <QDate>
#include <QString>

// Where an invoice (or a debit note) stands with its client: what its settlements covered of it
// and whether its due date has passed.
namespace zarek {

enum class PaymentState { Open, PartPaid, Paid, Overdue };

// Paid once the settlements cover the total; otherwise overdue after the due date (the due date
// itself is not overdue), else part paid or open.
inline PaymentState paymentState(Money total, Money settled, const QDate &due, const QDate &today)
{
    if (settled >= total)
        return PaymentState::Paid;
    if (due.isValid() && today > due)
        return PaymentState::Overdue;
    return settled > Money() ? PaymentState::PartPaid : PaymentState::Open;
}

inline QString paymentStateName(PaymentState state)
{
    switch (state) {
    case PaymentState::PartPaid:
        return QStringLiteral("частично платена");
    case PaymentState::Paid:
        return QStringLiteral("платена");
    case PaymentState::Overdue:
        return QStringLiteral("просрочена");
    case PaymentState::Open:
        break;
    }
    return QStringLiteral("неплатена");
}

}
