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
        const FirmProfileLoad firm = LoadFirmProfile(db);
        if (!firm.profile)
            return firm.stopMessage.value_or(UserMessage{QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Липсват данни!")});
        const Checked<Report> statement = ReportTaxDocumentAnnex(document.value(), annex.value(), *firm.profile);
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
