#include "taxdocumentpaper.h"

#include "data/firmstore.h"
#include "forms/messageservice.h"
#include "invoicing/taxdocumentreport.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"

namespace zarek {

namespace {

// The pages of the annex after the document's, their fonts added to the document's.
void appendPages(LaidOutReport &paper, const LaidOutReport &annex)
{
    const int offset = static_cast<int>(paper.fonts.size());
    paper.fonts += annex.fonts;
    for (ReportPage page : annex.pages) {
        for (ReportPrimitive &primitive : page.primitives) {
            if (primitive.kind == ReportPrimitive::Kind::Text)
                primitive.font += offset;
        }
        paper.pages.append(page);
    }
}

FirmProfile supplierProfile(const TaxDocument &document)
{
    FirmProfile firm;
    firm.UserName = document.supplier.name;
    firm.UserAdres = document.supplier.address;
    firm.UserCity = document.supplier.town;
    firm.UserCountry = document.supplier.country;
    firm.UserMOL = document.supplier.mol;
    firm.UserBULSTAT = document.supplier.eik;
    firm.UserDanN = document.supplier.vatNumber;
    return firm;
}

}

Checked<LaidOutReport> taxDocumentPaper(QSqlDatabase db, qint64 documentId, PaperCopy copy, const BooksDay &books)
{
    const Checked<TaxDocument> document = loadTaxDocument(db, documentId);
    if (!document)
        return document.message();
    const Checked<Report> report = ReportTaxDocument(document.value(), copy);
    if (!report)
        return report.message();
    LaidOutReport paper = layoutReport(report.value());

    const Checked<TaxDocumentAnnex> annex = taxDocumentAnnex(db, document.value(), books);
    if (!annex)
        return annex.message();
    if (!annex.value().lines.isEmpty()) {
        // The annex heads with the firm's data of today; without it, with the supplier as issued.
        const FirmProfileLoad firm = LoadFirmProfile(db);
        const Checked<Report> statement =
            ReportTaxDocumentAnnex(document.value(), annex.value(), firm.profile.value_or(supplierProfile(document.value())));
        if (!statement)
            return statement.message();
        appendPages(paper, layoutReport(statement.value()));
    }
    return paper;
}

void previewTaxDocument(QWidget *parent, QSqlDatabase db, qint64 documentId, PaperCopy copy, const BooksDay &books)
{
    const Checked<LaidOutReport> paper = taxDocumentPaper(db, documentId, copy, books);
    if (!paper) {
        MessageService::instance().inform(paper.message());
        return;
    }
    showReport(paper.value(), parent);
}

}
