#include "taxdocumentpaper.h"

namespace zarek {

void previewTaxDocument(QWidget *parent, QSqlDatabase db, qint64 documentId, PaperCopy copy, const BooksDay &books)
{
    Q_UNUSED(parent)
    Q_UNUSED(db)
    Q_UNUSED(documentId)
    Q_UNUSED(copy)
    Q_UNUSED(books)
}

}
