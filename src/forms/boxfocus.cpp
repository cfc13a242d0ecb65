#include "forms/boxfocus.h"

#include <QLineEdit>
#include <QTimer>

namespace zarek {

void returnToBox(QLineEdit *box)
{
    QTimer::singleShot(0, box, [box] {
        box->setFocus();
        box->selectAll();
    });
}

}
