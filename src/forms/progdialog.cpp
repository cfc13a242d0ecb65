#include "progdialog.h"

#include "core/version.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

namespace zarek {

ProgDialog::ProgDialog(const QString &label, int maximum, QWidget *parent) : QProgressDialog(parent)
{
    setObjectName(QStringLiteral("ProgDialog"));
    setWindowTitle(QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - Обработка"));
    auto *text = new QLabel(this);
    text->setObjectName(QStringLiteral("Label1"));
    setLabel(text);
    auto *bar = new QProgressBar(this);
    bar->setObjectName(QStringLiteral("ProgBar"));
    setBar(bar);
    setLabelText(label);
    setRange(0, maximum);
    auto *close = new QPushButton(QStringLiteral("Затвори"), this);
    close->setObjectName(QStringLiteral("OKButton"));
    close->setEnabled(false);
    setCancelButton(close);
    setMinimumDuration(300);
    setMinimumWidth(360);
    setWindowModality(Qt::ApplicationModal);
}

void ProgDialog::setCloseEnabled(bool enabled)
{
    if (auto *close = findChild<QPushButton *>(QStringLiteral("OKButton")))
        close->setEnabled(enabled);
}

}
