#pragma once

#include "core/money.h"

#include <QDate>
#include <QString>

namespace zarek {

// One course, one row of tabl.
struct Course {
    qint64 id = 0;
    int rowVersion = 0;
    QDate data;
    QString kod;
    QString kola;
    QString Klient;
    QString Marsh;
    QString Tovar;
    double km = 0;
    double ton = 0;
    double Tarifa = 0;
    Money bruto;
    Money procent;
    Money neto;
    bool Fakt = false;
    QString NomFakt = QStringLiteral("0000000000");
    bool plat = false;
    bool Doc = false;
};

// Which task the course editor serves.
enum class CourseMode { NewKurs, EditKurs };

}
