#include "forms/datachanges.h"

namespace zarek {

DataChanges &DataChanges::instance()
{
    static DataChanges changes;
    return changes;
}

}
