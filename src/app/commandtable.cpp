#include "app/commandtable.h"

#include "attestation/attestationcommands.h"
#include "clients/clientscommands.h"
#include "courses/coursecommands.h"
#include "documents/documentscommands.h"
#include "fleet/fleetcommands.h"
#include "international/internationalcommands.h"
#include "invoicing/invoicingcommands.h"
#include "receivables/receivablescommands.h"
#include "reference/referencecommands.h"
#include "settlement/settlementcommands.h"
#include "warehouse/warehousecommands.h"
#include "waybills/waybillscommands.h"

namespace zarek {

void registerSubsystemCommands(CommandRegistry &commands)
{
    registerCourseCommands(commands);
    registerReferenceCommands(commands);
    registerInvoicingCommands(commands);
    registerSettlementCommands(commands);
    registerFleetCommands(commands);
    registerAttestationCommands(commands);
    registerWaybillCommands(commands);
    registerWarehouseCommands(commands);
    registerInternationalCommands(commands);
    documents::registerDocumentCommands(commands);
    clients::registerClientCommands(commands);
    receivables::registerReceivablesCommands(commands);
}

}
