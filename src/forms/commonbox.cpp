#include "commonbox.h"

#include "forms/messageservice.h"

#include <QDialogButtonBox>
#include <algorithm>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace zarek {

namespace {

QStyle::StandardPixmap iconOf(UserMessage::Icon icon)
{
    switch (icon) {
    case UserMessage::Icon::Exclamation: return QStyle::SP_MessageBoxWarning;
    case UserMessage::Icon::Critical: return QStyle::SP_MessageBoxCritical;
    case UserMessage::Icon::Question: return QStyle::SP_MessageBoxQuestion;
    case UserMessage::Icon::Information:
    case UserMessage::Icon::None: break;
    }
    return QStyle::SP_MessageBoxInformation;
}

}

CommonBox::CommonBox(const UserMessage &message, const QString &defaultCaption, UserMessage::Icon defaultIcon,
                     const QString &iconName, QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(message.title.isEmpty() ? defaultCaption : message.title);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    auto *icon = new QLabel(this);
    icon->setObjectName(iconName);
    const int side = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    icon->setPixmap(style()
                        ->standardIcon(iconOf(message.icon == UserMessage::Icon::None ? defaultIcon : message.icon),
                                       nullptr, this)
                        .pixmap(side, side));
    icon->setAlignment(Qt::AlignTop);

    m_text = new QLabel(message.text, this);
    m_text->setObjectName(QStringLiteral("Label1"));
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // Wide enough for the longest line of a two-line message, so it wraps only when very long.
    const QFontMetrics metrics(m_text->font());
    int widest = 0;
    for (const QString &line : message.text.split(QLatin1Char('\n')))
        widest = std::max(widest, metrics.horizontalAdvance(line));
    m_text->setMinimumWidth(std::clamp(widest + 8, 260, 480));
    m_text->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);

    auto *row = new QHBoxLayout;
    row->addWidget(icon, 0, Qt::AlignTop);
    row->addSpacing(8);
    row->addWidget(m_text, 1);

    m_buttons = new QDialogButtonBox(this);
    m_buttons->setCenterButtons(true);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(row);
    layout->addSpacing(6);
    layout->addWidget(m_buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

QString CommonBox::text() const
{
    return m_text->text();
}

QPushButton *CommonBox::addButton(const QString &objectName, const QString &caption)
{
    QPushButton *button = m_buttons->addButton(caption, QDialogButtonBox::ActionRole);
    button->setObjectName(objectName);
    button->setMinimumWidth(90);
    return button;
}

void CommonBox::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    MessageService::instance().beep();
}

}
