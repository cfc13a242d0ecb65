#include "invoiceclosing.h"

#include "core/dates.h"
#include "core/docnumber.h"

namespace zarek {

Checked<QList<CourseWrite>> closingWrites(const ClosingState &state, const QList<HeldCourse> &courses)
{
    QList<CourseWrite> writes;
    if (!state.changed)
        return writes;
    const bool editing = state.mode == FakturaMode::EditFakt;
    const QString none = noDocumentNumber();
    for (const HeldCourse &course : courses) {
        if (!editing && !course.marked)
            continue;  // never marked, or marked and unmarked again: not touched
        const bool fakt = course.marked && (editing || (state.printed && state.statement.contains(course.id)));
        writes.append({course.id, course.rowVersion, fakt, fakt ? state.number : none});
    }
    const bool numbered = state.number.size() == documentNumberLength && state.number != none;
    for (const CourseWrite &write : writes) {
        if (write.fakt && !numbered)
            return UserMessage::twoLines(QStringLiteral("ГРЕШКА при запис!"),
                                         QStringLiteral("Няма избран номер на фактура!"),
                                         QStringLiteral("Моля, изберете номер с \"Фактура №\" и опитайте отново."),
                                         UserMessage::Icon::Critical);
    }
    return writes;
}

UserMessage changedCoursesMessage(const QList<ChangedCourse> &courses, bool printAgain)
{
    constexpr int listed = 10;
    QString text = QStringLiteral("Тези курсове са променени от друг потребител, след като са прочетени:");
    for (qsizetype i = 0; i < courses.size() && i < listed; ++i) {
        const ChangedCourse &course = courses.at(i);
        text += QStringLiteral("\n%1  %2  %3").arg(formatDate(course.date), course.marsh, course.klient);
    }
    if (courses.size() > listed)
        text += QStringLiteral("\n... и още %1").arg(courses.size() - listed);
    text += QStringLiteral("\nНищо не е записано. Курсовете са прочетени отново: проверете маркировката");
    text += printAgain ? QStringLiteral(", отпечатайте отново и затворете.") : QStringLiteral(" и затворете.");
    return {QStringLiteral("ГРЕШКА при запис!"), text, UserMessage::Icon::Critical};
}

}
