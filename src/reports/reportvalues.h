#pragma once

#include "core/dates.h"
#include "core/firmprofile.h"

#include <QHash>
#include <QString>

// The values a design's texts name in braces: "{UserName}", "за периода от {periodFrom} до {periodTo}".
// Every paper knows the program's version; the firm block and the period are handed over by the
// caller; anything else a paper computes (its subject line, its totals) it hands over by name.
namespace zarek {

using ReportValues = QHash<QString, QString>;

// "тел:… , факс:… , E-mail:… , URL:http//…", the firm's contact line on paper.
QString firmContactLine(const FirmProfile &firm);
// "за периода от 01.03.2006 до 31.03.2006"
QString periodLine(const Period &period);

// version ("2.0") and fullVersion ("2.0.3").
ReportValues versionValues();
// The eleven columns of the firm's row by their names (UserName, UserCity, UserAdres, UserTel,
// UserGSM, UserEmail, UserURL, UserCountry, UserMOL, UserBULSTAT, UserDanN) and firmContact.
ReportValues firmValues(const FirmProfile &firm);
// period (the period line), periodFrom and periodTo.
ReportValues periodValues(const Period &period);

// The text with each "{name}" replaced by its value; a name without a value gives an empty text,
// as does a brace left open. "{name|text}" gives the text when the name has no value: the
// design's own words, which a paper may replace.
QString expandReportText(const QString &text, const ReportValues &values);

}
