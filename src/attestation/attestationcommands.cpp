#include "attestation/attestationcommands.h"

#include "attestation/dai.h"
#include "forms/commands.h"

namespace zarek {

void registerAttestationCommands(CommandRegistry &commands)
{
    CommandContext &context = commands.context();
    commands.add(QStringLiteral("mnuDataDAI"), [&commands, &context] {
        commands.showOnce(
            QStringLiteral("DAI"), [&context] { return new DAI(context.db, context.firm(), context.window); }, 230);
    });
}

}
