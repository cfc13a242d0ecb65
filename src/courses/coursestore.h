#pragma once

#include "core/usermessage.h"
#include "courses/coursecheck.h"

#include <QList>
#include <QSqlDatabase>
#include <QSqlRecord>
#include <optional>

namespace zarek {

// What a save answers: the saved row, or the message to show; a date warning may come with either.
struct CourseSaveOutcome {
    std::optional<Course> saved;
    std::optional<UserMessage> message;
    std::optional<UserMessage> dateWarning;
    bool focusDate = false;

    bool ok() const { return saved.has_value(); }
};

// The courses of tabl and the expense row each save appends to Sklad.
class CourseStore {
public:
    explicit CourseStore(QSqlDatabase db);

    // Checks, prices and writes the course from the editor's boxes.
    CourseSaveOutcome save(const CourseEntry &entry, const CourseSaveContext &context, const BooksDay &books);

    // Writes a checked course (a new row when its id is 0, else the row of its id and version)
    // together with its "Разходи за курс" row, in one transaction.
    Checked<Course> write(const Course &course, Money expense);

    // Deletes the row of this id and version; a row changed by another user is left alone.
    std::optional<UserMessage> remove(const Course &course);

    std::optional<Course> find(qint64 id);

    static Course fromRecord(const QSqlRecord &record);
    static UserMessage conflictMessage(const QString &title);

private:
    QSqlDatabase m_db;
};

}
