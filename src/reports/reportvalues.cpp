#include "reportvalues.h"

#include "core/version.h"

namespace zarek {

QString firmContactLine(const FirmProfile &firm)
{
    // The mobile number follows "факс:" and the address reads "http//": the firm's papers always had it so.
    return QStringLiteral("тел:") + firm.UserTel + QStringLiteral(", факс:") + firm.UserGSM
           + QStringLiteral(", E-mail:") + firm.UserEmail + QStringLiteral(", URL:http//") + firm.UserURL;
}

QString periodLine(const Period &period)
{
    return QStringLiteral("за периода от ") + formatDate(period.from) + QStringLiteral(" до ") + formatDate(period.to);
}

ReportValues versionValues()
{
    return {{QStringLiteral("version"), version::majorMinor()}, {QStringLiteral("fullVersion"), version::text()}};
}

ReportValues firmValues(const FirmProfile &firm)
{
    return {{QStringLiteral("UserName"), firm.UserName},       {QStringLiteral("UserAdres"), firm.UserAdres},
            {QStringLiteral("UserTel"), firm.UserTel},         {QStringLiteral("UserGSM"), firm.UserGSM},
            {QStringLiteral("UserCity"), firm.UserCity},       {QStringLiteral("UserMOL"), firm.UserMOL},
            {QStringLiteral("UserBULSTAT"), firm.UserBULSTAT}, {QStringLiteral("UserDanN"), firm.UserDanN},
            {QStringLiteral("UserEmail"), firm.UserEmail},     {QStringLiteral("UserCountry"), firm.UserCountry},
            {QStringLiteral("UserURL"), firm.UserURL},         {QStringLiteral("firmContact"), firmContactLine(firm)}};
}

ReportValues periodValues(const Period &period)
{
    return {{QStringLiteral("period"), periodLine(period)},
            {QStringLiteral("periodFrom"), formatDate(period.from)},
            {QStringLiteral("periodTo"), formatDate(period.to)}};
}

QString expandReportText(const QString &text, const ReportValues &values)
{
    QString out;
    out.reserve(text.size());
    qsizetype at = 0;
    while (at < text.size()) {
        const qsizetype open = text.indexOf(QLatin1Char('{'), at);
        if (open < 0) {
            out += QStringView(text).mid(at);
            break;
        }
        out += QStringView(text).mid(at, open - at);
        const qsizetype close = text.indexOf(QLatin1Char('}'), open + 1);
        if (close < 0)
            break;
        const QString name = text.mid(open + 1, close - open - 1);
        const qsizetype bar = name.indexOf(QLatin1Char('|'));
        if (bar < 0)
            out += values.value(name);
        else
            out += values.value(name.left(bar), name.mid(bar + 1));
        at = close + 1;
    }
    return out;
}

}
