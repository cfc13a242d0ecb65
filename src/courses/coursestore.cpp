#include "coursestore.h"

#include "core/docnumber.h"
#include "data/sqlerror.h"
#include "data/transaction.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace zarek {

namespace {

const QString expenseName = QStringLiteral("Разходи за курс");

void bindCourseColumns(QSqlQuery &query, const Course &course)
{
    query.addBindValue(course.data);
    query.addBindValue(course.kod);
    query.addBindValue(course.kola);
    query.addBindValue(course.Klient);
    query.addBindValue(course.Marsh);
    query.addBindValue(course.Tovar);
    query.addBindValue(course.km);
    query.addBindValue(course.ton);
    query.addBindValue(course.Tarifa);
    query.addBindValue(course.bruto.toDouble());
    query.addBindValue(course.procent.toDouble());
    query.addBindValue(course.neto.toDouble());
    query.addBindValue(course.Fakt);
    query.addBindValue(course.NomFakt);
    query.addBindValue(course.plat);
    query.addBindValue(course.Doc);
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
    QSqlQuery query(m_db);
    if (course.id == 0) {
        query.prepare(QStringLiteral(
            "INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, procent, neto, "
            "Fakt, NomFakt, plat, Doc) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?) "
            "RETURNING id, row_version"));
        bindCourseColumns(query, course);
        if (!query.exec() || !query.next())
            return sqlErrorMessage(saveErrorTitle(), query.lastError());
        saved.id = query.value(0).toLongLong();
        saved.rowVersion = query.value(1).toInt();
        query.finish();  // SQLite cannot commit while a RETURNING statement is still open
    } else {
        // The stored row as this transaction sees it: an invoiced course keeps its figures here
        // too, whoever asks for the write.
        QSqlQuery stored(m_db);
        stored.prepare(QStringLiteral("SELECT * FROM tabl WHERE id = ?"));
        stored.addBindValue(course.id);
        if (!stored.exec())
            return sqlErrorMessage(saveErrorTitle(), stored.lastError());
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
        query.prepare(QStringLiteral(
            "UPDATE tabl SET data = ?, kod = ?, kola = ?, Klient = ?, Marsh = ?, Tovar = ?, km = ?, ton = ?, "
            "Tarifa = ?, bruto = ?, procent = ?, neto = ?, Fakt = ?, NomFakt = ?, plat = ?, Doc = ?, "
            "row_version = row_version + 1 WHERE id = ? AND row_version = ?"));
        bindCourseColumns(query, course);
        query.addBindValue(course.id);
        query.addBindValue(course.rowVersion);
        if (!query.exec())
            return sqlErrorMessage(saveErrorTitle(), query.lastError());
        if (query.numRowsAffected() != 1)
            return conflictMessage(saveErrorTitle());
        saved.rowVersion = course.rowVersion + 1;
    }

    QSqlQuery expenseRow(m_db);
    expenseRow.prepare(QStringLiteral(
        "INSERT INTO Sklad (DocVid, DocNom, Data, Name, Kol, Edin, Suma, VidKol, Lipsa, Ostat) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    expenseRow.addBindValue(course.kola);
    expenseRow.addBindValue(noDocumentNumber());
    expenseRow.addBindValue(course.data);
    expenseRow.addBindValue(expenseName);
    expenseRow.addBindValue(1.0);
    expenseRow.addBindValue(expense.toDouble());
    expenseRow.addBindValue(expense.toDouble());
    expenseRow.addBindValue(QStringLiteral("R"));
    expenseRow.addBindValue(true);
    expenseRow.addBindValue(0.0);
    if (!expenseRow.exec())
        return sqlErrorMessage(saveErrorTitle(), expenseRow.lastError());

    if (!transaction.commit())
        return sqlErrorMessage(saveErrorTitle(), m_db.lastError());
    return saved;
}

std::optional<UserMessage> CourseStore::remove(const Course &course)
{
    const QString title = QStringLiteral("ГРЕШКА при изтриване!");
    QSqlQuery query(m_db);
    query.prepare(QStringLiteral("DELETE FROM tabl WHERE id = ? AND row_version = ?"));
    query.addBindValue(course.id);
    query.addBindValue(course.rowVersion);
    if (!query.exec())
        return sqlErrorMessage(title, query.lastError());
    if (query.numRowsAffected() != 1)
        return conflictMessage(title);
    return std::nullopt;
}

std::optional<Course> CourseStore::find(qint64 id)
{
    QSqlQuery query(m_db);
    query.prepare(QStringLiteral("SELECT * FROM tabl WHERE id = ?"));
    query.addBindValue(id);
    if (!query.exec() || !query.next())
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
