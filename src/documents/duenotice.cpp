#include "duenotice.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace zarek::documents {

namespace {

QString key(const QString &user)
{
    return QStringLiteral("DueNotice/") + QString::fromLatin1(user.trimmed().toUtf8().toHex());
}

}

bool dueNoticeWanted(QSettings &settings, const QString &user)
{
    return settings.value(key(user), true).toBool();
}

void setDueNoticeWanted(QSettings &settings, const QString &user, bool wanted)
{
    settings.setValue(key(user), wanted);
}

DueNotice::DueNotice(int due, int expired, QWidget *parent) : QFrame(parent)
{
    setObjectName(QStringLiteral("DueNotice"));
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    QPalette colours = palette();
    colours.setColor(QPalette::Window, expired > 0 ? QColor(0xFF, 0xE4, 0xE1) : QColor(0xFF, 0xF1, 0xC8));
    setPalette(colours);

    auto *title = new QLabel(QStringLiteral("Документи"), this);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    auto *closeButton = new QPushButton(QStringLiteral("×"), this);
    closeButton->setObjectName(QStringLiteral("cmdClose"));
    closeButton->setFlat(true);
    closeButton->setFixedWidth(24);
    closeButton->setToolTip(QStringLiteral("Затваря известието"));
    connect(closeButton, &QPushButton::clicked, this, &QWidget::close);

    m_text = new QLabel(this);
    m_text->setObjectName(QStringLiteral("lblText"));
    const QString documents = due == 1 ? QStringLiteral("1 документ изтича или е изтекъл")
                                       : QStringLiteral("%1 документа изтичат или са изтекли").arg(due);
    m_text->setText(expired > 0 ? QStringLiteral("%1, от тях изтекли %2.").arg(documents).arg(expired) : documents + QLatin1Char('.'));
    m_text->setWordWrap(true);

    auto *open = new QPushButton(QStringLiteral("Изтичащи документи"), this);
    open->setObjectName(QStringLiteral("cmdOpen"));
    open->setAutoDefault(false);
    connect(open, &QPushButton::clicked, this, [this] {
        emit listRequested();
        close();
    });
    m_switchOff = new QCheckBox(QStringLiteral("Не показвай при влизане"), this);
    m_switchOff->setObjectName(QStringLiteral("chkSwitchOff"));
    connect(m_switchOff, &QCheckBox::toggled, this, &DueNotice::switchedOff);

    auto *top = new QHBoxLayout;
    top->addWidget(title);
    top->addStretch();
    top->addWidget(closeButton);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_text);
    layout->addWidget(open, 0, Qt::AlignLeft);
    layout->addWidget(m_switchOff);
    setFixedWidth(300);
    adjustSize();
}

QString DueNotice::text() const
{
    return m_text->text();
}

void DueNotice::showInCorner(int milliseconds)
{
    if (QWidget *host = parentWidget()) {
        adjustSize();
        move(host->width() - width() - 16, host->height() - height() - 40);
    }
    show();
    raise();
    QTimer::singleShot(milliseconds, this, [this] {
        // Not while the mouse is over it: the user is reading it.
        if (!underMouse())
            close();
    });
}

}
