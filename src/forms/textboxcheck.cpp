#include "textboxcheck.h"

#include "core/textcheck.h"

#include <QLineEdit>
#include <QWidget>

namespace zarek {

std::optional<UserMessage> checkTextBoxes(const QWidget *window, const QString &title)
{
    QStringList texts;
    const auto boxes = window->findChildren<QLineEdit *>();
    for (const QLineEdit *box : boxes)
        texts.append(box->text());
    return checkTypedTexts(texts, title);
}

}
