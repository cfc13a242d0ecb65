#pragma once

#include "core/currency.h"

#include <QSqlDatabase>

class QWidget;

// The printed tax document: an issued invoice or note, shown in the print preview by its id.
namespace zarek {

// "Оригинал" for the first print at issuing, "Копие" for a reprint.
enum class PaperCopy { Original, Copy };

void previewTaxDocument(QWidget *parent, QSqlDatabase db, qint64 documentId, PaperCopy copy, const BooksDay &books);

}

#include "core/usermessage.h"
#include "reports/laidoutreport.h"

namespace zarek {

// The document laid out as it prints: its own pages, then for an invoice of courses the statement
// of those courses as its annex.
Checked<LaidOutReport> taxDocumentPaper(QSqlDatabase db, qint64 documentId, PaperCopy copy, const BooksDay &books);

}
