#pragma once

#include "courses/coursecheck.h"

namespace zarek::test {

// The course of the examples: 10 t over 25 km at 0,125 gives 31,25 gross, 0,94 and 30,31 net.
inline CourseEntry exampleCourseEntry()
{
    CourseEntry entry;
    entry.driver = QStringLiteral("007,Иван Петров Иванов");
    entry.kola = QStringLiteral("СА 1234 ВК");
    entry.date = QStringLiteral("05.03.2006");
    entry.ton = QStringLiteral("10");
    entry.km = QStringLiteral("25");
    entry.tarifa = QStringLiteral("0,125");
    entry.marsh = QStringLiteral("София - Перник");
    entry.klient = QStringLiteral("Д'Аргос ООД");
    entry.tovar = QStringLiteral("Пясък");
    entry.nomFakt = QStringLiteral("0000000000");
    return entry;
}

// A firm still in leva, on the day the test runs.
inline BooksDay leva()
{
    return {Changeover{}, QDate::currentDate()};
}

// A course entered in new-course entry.
inline const CourseSaveContext adding{CourseMode::NewKurs, true, {}};

}
