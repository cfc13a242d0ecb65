#include "dateentry.h"

#include "core/dates.h"

#include <QAction>
#include <QCalendarWidget>
#include <QKeyEvent>
#include <QLocale>
#include <QStyle>

namespace zarek {

DateEntry::DateEntry(QWidget *parent) : QLineEdit(parent)
{
    setPlaceholderText(QStringLiteral("дд.мм.гггг"));
    setMaxLength(20);
    QAction *open = addAction(style()->standardIcon(QStyle::SP_FileDialogDetailedView), QLineEdit::TrailingPosition);
    open->setToolTip(QStringLiteral("Календар (Alt+↓)"));
    connect(open, &QAction::triggered, this, &DateEntry::showCalendar);
}

QDate DateEntry::date() const
{
    return parseDate(text()).value_or(QDate());
}

void DateEntry::setDate(const QDate &date)
{
    setText(formatDate(date));
}

void DateEntry::showCalendar()
{
    if (!m_calendar) {
        m_calendar = new QCalendarWidget(this);
        m_calendar->setWindowFlags(Qt::Popup);
        m_calendar->setLocale(QLocale(QLocale::Bulgarian, QLocale::Bulgaria));
        m_calendar->setFirstDayOfWeek(Qt::Monday);
        m_calendar->setGridVisible(true);
        connect(m_calendar, &QCalendarWidget::activated, this, [this](QDate picked) {
            setDate(picked);
            m_calendar->hide();
            setFocus();
            emit textEdited(text());
        });
        connect(m_calendar, &QCalendarWidget::clicked, m_calendar, &QCalendarWidget::activated);
    }
    const QDate current = date();
    m_calendar->setSelectedDate(current.isValid() ? current : QDate::currentDate());
    m_calendar->adjustSize();
    m_calendar->move(mapToGlobal(QPoint(0, height())));
    m_calendar->show();
    m_calendar->setFocus();
}

void DateEntry::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_F4 || (event->key() == Qt::Key_Down && (event->modifiers() & Qt::AltModifier))) {
        showCalendar();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

}
