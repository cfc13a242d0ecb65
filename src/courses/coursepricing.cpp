#include "coursepricing.h"

namespace zarek {

CourseMoney priceCourse(double ton, double km, double rate)
{
    CourseMoney money;
    money.bruto = Money::fromAmount(ton * km * rate);
    money.procent = money.bruto.share(3, 100);
    money.neto = money.bruto - money.procent;
    return money;
}

}
