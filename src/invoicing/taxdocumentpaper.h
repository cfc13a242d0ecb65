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
