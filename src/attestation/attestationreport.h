#pragma once

#include "attestation/attestation.h"
#include "core/firmprofile.h"
#include "reports/report.h"

#include <QDate>

namespace zarek {

// The attestation filled for print: rptDAI (the form of Decision 2007/230/EC) or rptDAI2009
// (Decision 2009/959/EU), with the firm's items, the driver, the period as typed, the cross in the
// box of the reason stated, and the firm's town and today's date under both signatures.
Checked<Report> ReportDAI(const AttestationSheet &sheet, const FirmProfile &firm, const QDate &today);

// The design of a form.
QString attestationDesignName(AttestationForm form);

}
