#include "attestationreport.h"

#include "core/dates.h"

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
    report.setFirm(firm);
    report.setValue(QStringLiteral("driverName"), sheet.driverName);
    report.setValue(QStringLiteral("birthDate"), sheet.birthDate.isEmpty() ? QString() : sheet.birthDate + QStringLiteral(" г."));
    report.setValue(QStringLiteral("card"), sheet.card);
    report.setValue(QStringLiteral("periodFrom"),
                    attestationPeriodText(attestationHour(sheet.hourFrom).value_or(sheet.hourFrom), sheet.periodFrom));
    report.setValue(QStringLiteral("periodTo"),
                    attestationPeriodText(attestationHour(sheet.hourTo).value_or(sheet.hourTo), sheet.periodTo));
    report.setValue(QStringLiteral("today"), formatDate(today));
    report.setValue(QStringLiteral("startedOn"), sheet.startedOn);  // the form of 2009 alone asks for it

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
