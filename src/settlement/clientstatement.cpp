#include "clientstatement.h"

#include "core/formats.h"
#include "core/rounding.h"
#include "core/vat.h"
#include "courses/coursecheck.h"

#include <cmath>

namespace zarek::settlement {

QString StatementLine::sumaText() const
{
    return formatAmount(suma);
}

StatementLine statementLine(double km, double ton, double tarifa)
{
    return {formatKm(km), formatTonnes(ton), formatRate(tarifa), Money::fromAmount(km * ton * tarifa)};
}

StatementTax statementTax(Money gross)
{
    const Money vat = gross.share(vatPercent, 100);
    return {gross, vat, gross - vat};
}

double wholeKm(double km)
{
    return roundHalfEven(km, 0);
}

std::optional<qlonglong> statementKm(double typed)
{
    if (typed != std::floor(typed) || typed < 0 || typed > 32767)
        return std::nullopt;
    return static_cast<qlonglong>(typed);
}

std::optional<double> statementRate(double typed)
{
    if (!std::isfinite(typed) || typed < 0 || typed > maxCourseRate)
        return std::nullopt;
    return typed;
}


}
