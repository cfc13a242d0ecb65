#pragma once

#include <QDate>
#include <QLineEdit>

class QCalendarWidget;

namespace zarek {

// A date box: free typing the Bulgarian way (dd.MM.yyyy and the shorter forms), with a calendar
// that drops down from its button or on Alt+Down / F4. The text is what counts; the calendar
// only writes a date into it.
class DateEntry : public QLineEdit {
    Q_OBJECT
public:
    explicit DateEntry(QWidget *parent = nullptr);

    // The typed date, or an invalid date when the text is not one.
    QDate date() const;
    void setDate(const QDate &date);

public slots:
    void showCalendar();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QCalendarWidget *m_calendar = nullptr;
};

}
