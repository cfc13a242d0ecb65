#include "progdialog.h"

#include "version.h"

#include <QPushButton>

namespace zarek {

ProgDialog::ProgDialog(const QString &label, int maximum, QWidget *parent) : QProgressDialog(parent)
{
    setObjectName(QStringLiteral("ProgDialog"));
    setWindowTitle(QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - Обработка"));
    setLabelText(label);
    setRange(0, maximum);
    auto *close = new QPushButton(QStringLiteral("Затвори"), this);
    close->setObjectName(QStringLiteral("OKButton"));
    close->setEnabled(false);
    setCancelButton(close);
    setMinimumDuration(300);
    setWindowModality(Qt::ApplicationModal);
}

}
