#pragma once

#include "core/firmprofile.h"
#include "core/usermessage.h"
#include "invoicing/invoicestatement.h"
#include "invoicing/taxdocument.h"
#include "invoicing/taxdocumentpaper.h"
#include "reports/report.h"

#include <QSqlDatabase>
#include <QStringList>

// The paper of an issued tax document, filled from the document as it was recorded: the title
// (ФАКТУРА, КРЕДИТНО ИЗВЕСТИЕ, ДЕБИТНО ИЗВЕСТИЕ), "Оригинал" or "Копие", number and dates, both
// parties, the lines, base, VAT and total with the total in words, the ground of a 0 % document,
// how and by when to pay, the place of issue and who drew it up.
namespace zarek {

// The legal grounds offered for a 0 % document; the user may type another.
QStringList zeroVatGrounds();

// "ФАКТУРА", "КРЕДИТНО ИЗВЕСТИЕ", "ДЕБИТНО ИЗВЕСТИЕ".
QString taxDocumentTitle(TaxDocumentKind kind);
// The name a saved copy is offered under: "Фактура 0000000123 Клиент".
QString taxDocumentFileName(const TaxDocument &document);

// rptDanDokument filled with the document.
Checked<Report> ReportTaxDocument(const TaxDocument &document, PaperCopy copy);

// The statement of the courses an invoice lists (rptFaktura), printed after it as its annex: the
// courses its lines name, or, for an invoice of one summary line, the courses carrying its number.
// None (an empty list of lines) for a note or an invoice without courses.
struct TaxDocumentAnnex {
    QList<invoicing::StatementLine> lines;
    invoicing::StatementMoney money;
};
Checked<TaxDocumentAnnex> taxDocumentAnnex(QSqlDatabase db, const TaxDocument &document, const BooksDay &books);
Checked<Report> ReportTaxDocumentAnnex(const TaxDocument &document, const TaxDocumentAnnex &annex,
                                       const FirmProfile &firm);

}
