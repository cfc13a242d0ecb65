#include "attestationreport.h"

#include "core/dates.h"
#include "core/version.h"

namespace zarek {

namespace {

const QString header = QStringLiteral("PageHeader");

// Where the cross of each reason stands: the top of its box, in twips; every box is 405 from the left.
constexpr int crossLeft = 405;
int crossTop(AttestationForm form, AttestationReason reason)
{
    if (form == AttestationForm::Decision2007) {
        switch (reason) {
        case AttestationReason::SickLeave: return 8865;
        case AttestationReason::AnnualLeave: return 9195;
        case AttestationReason::ExemptVehicle: return 9510;
        default: return -1;
        }
    }
    switch (reason) {
    case AttestationReason::SickLeave: return 8170;
    case AttestationReason::AnnualLeave: return 8490;
    case AttestationReason::LeaveOrRest: return 8810;
    case AttestationReason::ExemptVehicle: return 9130;
    case AttestationReason::OtherWork: return 9670;
    case AttestationReason::Available: return 9990;
    case AttestationReason::None: break;
    }
    return -1;
}

}

QString attestationDesignName(AttestationForm form)
{
    return form == AttestationForm::Decision2007 ? QStringLiteral("rptDAI") : QStringLiteral("rptDAI2009");
}

Checked<Report> ReportDAI(const AttestationSheet &sheet, const FirmProfile &firm, const QDate &today)
{
    Checked<Report> loaded = Report::fromDesign(attestationDesignName(sheet.form));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setWindowCaption(QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - Удостоверение за ДАИ"));
    const auto set = [&report](const char *name, const QString &text) {
        report.setCaption(header, QString::fromLatin1(name), text);
    };

    set("Label1", firm.UserName);
    set("Label2", firm.UserCity + QStringLiteral(", ") + firm.UserAdres);
    set("Label6", QStringLiteral("тел:") + firm.UserTel + QStringLiteral(", факс:") + firm.UserGSM
                      + QStringLiteral(", E-mail:") + firm.UserEmail + QStringLiteral(", URL:http//") + firm.UserURL);
    set("Label14", firm.UserName);
    set("Label15", firm.UserAdres + QStringLiteral(", ") + firm.UserCity + QStringLiteral(", ") + firm.UserCountry);
    set("Label17", firm.UserTel);
    set("Label18", firm.UserGSM);  // the firm's second number stands under "факс"
    set("Label24", firm.UserEmail);
    set("Label23", firm.UserMOL);
    set("Label16", QStringLiteral("Управител"));
    set("Label26", sheet.driverName);
    set("Label28", sheet.birthDate.isEmpty() ? QString() : sheet.birthDate + QStringLiteral(" г."));
    set("Label30", sheet.card);
    set("Label36", attestationPeriodText(attestationHour(sheet.hourFrom).value_or(sheet.hourFrom), sheet.periodFrom));
    set("Label42", attestationPeriodText(attestationHour(sheet.hourTo).value_or(sheet.hourTo), sheet.periodTo));
    set("Label44", firm.UserCity);
    set("Label46", formatDate(today));
    set("Label50", firm.UserCity);
    set("Label52", formatDate(today));
    if (sheet.form == AttestationForm::Decision2007) {
        set("Label4", QStringLiteral("Попълва се на машина и се подписва преди пътуване\n"
                                     "Прилага се към оригиналните тахографски листове, когато те са задължителни\n"
                                     "Подправени удостоверения представляват нарушение"));
        set("Label49", QStringLiteral("17. Аз, водач на превозно средство, подвърждавам, че по време на горепосочения "
                                      "период не съм управлявал\n.      превозно средство, попадащо в обхвата на "
                                      "Регламент (ЕО) №561/2006 или AETR"));
    } else {
        set("Label55", sheet.startedOn);
    }
    report.setCaption(QStringLiteral("PageFooter"), QStringLiteral("Label5"),
                      QStringLiteral("Зарек ") + version::majorMinor());

    // One reason, one cross: both strokes over the box of the reason the sheet states.
    const int top = crossTop(sheet.form, sheet.reason);
    for (const char *line : {"Line2", "Line3"}) {
        report.setVisible(header, QString::fromLatin1(line), top >= 0);
        if (top >= 0)
            report.moveControl(header, QString::fromLatin1(line), crossLeft, top);
    }
    return report;
}

}
