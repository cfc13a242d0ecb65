#pragma once

#include "core/usermessage.h"

#include <QDate>
#include <QString>
#include <QVariant>

// How a bound box shows a column's value and how its typed text becomes a value again.
namespace zarek {

enum class RecordFieldKind { Text, Number, Date };

// Numbers with a decimal comma and no more digits than they need ("31,5"); dates dd.MM.yyyy;
// no value as an empty text.
QString recordFieldText(const QVariant &value, RecordFieldKind kind);

// The value a typed text stands for: texts as typed, numbers with comma or point, dates the
// Bulgarian way. A blank number or date is no value (NULL). A text that is neither gives the
// two-line message under the title, naming the field by its caption.
Checked<QVariant> recordFieldValue(const QString &text, RecordFieldKind kind, const QString &caption,
                                   const QString &title, QDate today = {});

}
