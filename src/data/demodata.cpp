#include "demodata.h"

namespace zarek {

Checked<DemoSummary> fillDemoDatabase(QSqlDatabase &, const DemoOptions &)
{
    return DemoSummary{};
}

}
