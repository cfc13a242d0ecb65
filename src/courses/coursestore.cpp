#include "coursestore.h"

#include "core/docnumber.h"
#include "data/query.h"
#include "data/sqlerror.h"
#include "data/transaction.h"

#include <QSqlError>
#include <QSqlRecord>
#include <QVariant>

namespace zarek {

namespace {

const QString expenseName = QStringLiteral("Разходи за курс");

QVariantList courseColumns(const Course &course)
{
    return {course.data,
            course.kod,
            course.kola,
            course.Klient,
            course.Marsh,
            course.Tovar,
            course.km,
            course.ton,
            course.Tarifa,
            course.bruto.toDouble(),
            course.procent.toDouble(),
            course.neto.toDouble(),
            course.Fakt,
            course.NomFakt,
            course.plat,
            course.Doc};
}

}

CourseStore::CourseStore(QSqlDatabase db) : m_db(std::move(db)) {}

UserMessage CourseStore::conflictMessage(const QString &title)
{
    return rowConflictMessage(title);
}

CourseSaveOutcome CourseStore::save(const CourseEntry &entry, const CourseSaveContext &context, const BooksDay &books)
{
    const CourseCheckResult check = checkCourse(entry, context, books);
    CourseSaveOutcome outcome;
    outcome.dateWarning = check.dateWarning;
    outcome.focusDate = check.focusDate;
    if (check.refusal) {
        outcome.message = check.refusal;
        return outcome;
    }
    Course course = check.course;
    if (context.adding)
        course.id = 0;
    const Checked<Course> written = write(course, check.expense);
    if (written)
        outcome.saved = written.value();
    else
        outcome.message = written.message();
    return outcome;
}

Checked<Course> CourseStore::write(const Course &course, Money expense)
{
    // A sum Money could not hold is never written as a figure.
    if (!course.bruto.isValid() || !course.procent.isValid() || !course.neto.isValid() || !expense.isValid())
        return UserMessage::twoLines(saveErrorTitle(), QStringLiteral("Сумата на курса е извън разрешените граници!"),
                                     QStringLiteral("Моля, проверете тонажа, километрите и тарифата!"),
                                     UserMessage::Icon::Exclamation);
    Transaction transaction(m_db);
    if (!transaction.isActive())
        return sqlErrorMessage(saveErrorTitle(), m_db.lastError());

    Course saved = course;
    if (course.id == 0) {
        Query insert(m_db,
                     QStringLiteral("INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, "
                                    "bruto, procent, neto, Fakt, NomFakt, plat, Doc) VALUES (?, ?, ?, ?, ?, ?, "
                                    "?, ?, ?, ?, ?, ?, ?, ?, ?, ?) RETURNING id, row_version"));
        if (auto failure = insert.run(saveErrorTitle(), courseColumns(course)))
            return *failure;
        if (!insert.next())
            return insert.readFailure(saveErrorTitle()).value_or(rowConflictMessage(saveErrorTitle()));
        saved.id = insert.value(0).toLongLong();
        saved.rowVersion = insert.value(1).toInt();
        insert.finish();  // SQLite cannot commit while a RETURNING statement is still open
    } else {
        // The stored row as this transaction sees it: an invoiced course keeps its figures here
        // too, whoever asks for the write.
        Query stored(m_db, QStringLiteral("SELECT * FROM tabl WHERE id = ?"));
        if (auto failure = stored.run(saveErrorTitle(), {course.id}))
            return *failure;
        if (!stored.next())
            return conflictMessage(saveErrorTitle());
        const Course before = fromRecord(stored.record());
        stored.finish();
        if (before.rowVersion != course.rowVersion)
            return conflictMessage(saveErrorTitle());
        if (carriesInvoice(before)
            && (changesInvoicedFigures(before, course) || course.bruto != before.bruto
                || course.procent != before.procent || course.neto != before.neto))
            return invoicedCourseRefusal(before.NomFakt);
        if (auto failure = executeOnVersion(
                m_db, saveErrorTitle(),
                QStringLiteral("UPDATE tabl SET data = ?, kod = ?, kola = ?, Klient = ?, Marsh = ?, "
                               "Tovar = ?, km = ?, ton = ?, Tarifa = ?, bruto = ?, procent = ?, neto = ?, "
                               "Fakt = ?, NomFakt = ?, plat = ?, Doc = ?, row_version = row_version + 1 "
                               "WHERE id = ? AND row_version = ?"),
                courseColumns(course) + QVariantList{course.id, course.rowVersion}))
            return *failure;
        saved.rowVersion = course.rowVersion + 1;
    }

    if (auto failure = execute(m_db, saveErrorTitle(),
                               QStringLiteral("INSERT INTO Sklad (DocVid, DocNom, Data, Name, Kol, Edin, Suma, VidKol, "
                                              "Lipsa, Ostat) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                               {course.kola, noDocumentNumber(), course.data, expenseName, 1.0, expense.toDouble(),
                                expense.toDouble(), QStringLiteral("R"), true, 0.0}))
        return *failure;

    if (!transaction.commit())
        return sqlErrorMessage(saveErrorTitle(), m_db.lastError());
    return saved;
}

std::optional<UserMessage> CourseStore::remove(const Course &course)
{
    const QString title = QStringLiteral("ГРЕШКА при изтриване!");
    if (auto failure
        = executeOnVersion(m_db, title, QStringLiteral("DELETE FROM tabl WHERE id = ? AND row_version = ?"),
                           {course.id, course.rowVersion}))
        return failure;
    return std::nullopt;
}

std::optional<Course> CourseStore::find(qint64 id)
{
    Query query(m_db, QStringLiteral("SELECT * FROM tabl WHERE id = ?"));
    if (query.run(QString(), {id}) || !query.next())
        return std::nullopt;
    return fromRecord(query.record());
}

Course CourseStore::fromRecord(const QSqlRecord &record)
{
    Course course;
    course.id = record.value(QStringLiteral("id")).toLongLong();
    course.rowVersion = record.value(QStringLiteral("row_version")).toInt();
    course.data = record.value(QStringLiteral("data")).toDate();
    course.kod = record.value(QStringLiteral("kod")).toString();
    course.kola = record.value(QStringLiteral("kola")).toString();
    course.Klient = record.value(QStringLiteral("Klient")).toString();
    course.Marsh = record.value(QStringLiteral("Marsh")).toString();
    course.Tovar = record.value(QStringLiteral("Tovar")).toString();
    course.km = record.value(QStringLiteral("km")).toDouble();
    course.ton = record.value(QStringLiteral("ton")).toDouble();
    course.Tarifa = record.value(QStringLiteral("Tarifa")).toDouble();
    course.bruto = Money::fromAmount(record.value(QStringLiteral("bruto")).toDouble());
    course.procent = Money::fromAmount(record.value(QStringLiteral("procent")).toDouble());
    course.neto = Money::fromAmount(record.value(QStringLiteral("neto")).toDouble());
    course.Fakt = record.value(QStringLiteral("Fakt")).toBool();
    course.NomFakt = record.value(QStringLiteral("NomFakt")).toString();
    course.plat = record.value(QStringLiteral("plat")).toBool();
    course.Doc = record.value(QStringLiteral("Doc")).toBool();
    return course;
}

}
