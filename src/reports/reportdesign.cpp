#include "reportdesign.h"

#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutex>

namespace zarek {

namespace {

UserMessage designError(const QString &text)
{
    return UserMessage{QStringLiteral("ГРЕШКА при отпечатване!"), text, UserMessage::Icon::Critical};
}

ReportFont readFont(const QJsonObject &object, const ReportFont &base)
{
    ReportFont font = base;
    if (object.contains(QStringLiteral("family")))
        font.family = object.value(QStringLiteral("family")).toString();
    font.size = object.value(QStringLiteral("size")).toDouble(font.size);
    font.bold = object.value(QStringLiteral("bold")).toBool(font.bold);
    font.italic = object.value(QStringLiteral("italic")).toBool(font.italic);
    return font;
}

std::optional<ReportControlKind> kindOf(const QString &text)
{
    if (text == QLatin1String("Label")) return ReportControlKind::Label;
    if (text == QLatin1String("Text")) return ReportControlKind::Text;
    if (text == QLatin1String("Function")) return ReportControlKind::Function;
    if (text == QLatin1String("Line")) return ReportControlKind::Line;
    if (text == QLatin1String("Box")) return ReportControlKind::Box;
    if (text == QLatin1String("PageNumber")) return ReportControlKind::PageNumber;
    return std::nullopt;
}

// A control's kind follows its name when the design does not say it: Label…, Text…, Function….
std::optional<ReportControlKind> kindByName(const QString &name)
{
    if (name.startsWith(QLatin1String("Label"))) return ReportControlKind::Label;
    if (name.startsWith(QLatin1String("Text"))) return ReportControlKind::Text;
    if (name.startsWith(QLatin1String("Function"))) return ReportControlKind::Function;
    if (name.startsWith(QLatin1String("Line"))) return ReportControlKind::Line;
    if (name.startsWith(QLatin1String("Shape"))) return ReportControlKind::Box;
    return std::nullopt;
}

ReportAlign alignOf(const QString &text)
{
    if (text == QLatin1String("right")) return ReportAlign::Right;
    if (text == QLatin1String("center")) return ReportAlign::Center;
    return ReportAlign::Left;
}

}

void reportFault(const QString &text)
{
    if (qEnvironmentVariableIsSet("ZAREK_STRICT_REPORTS"))
        qFatal("%s", qPrintable(text));
    qWarning("%s", qPrintable(text));
}

const QStringList &reportSectionNames()
{
    static const QStringList names = {QStringLiteral("ReportHeader"), QStringLiteral("PageHeader"),
                                      QStringLiteral("Detail"), QStringLiteral("PageFooter"),
                                      QStringLiteral("ReportFooter")};
    return names;
}

ReportControl *ReportSection::control(const QString &controlName)
{
    for (ReportControl &c : controls) {
        if (c.name == controlName)
            return &c;
    }
    return nullptr;
}

const ReportControl *ReportSection::control(const QString &controlName) const
{
    return const_cast<ReportSection *>(this)->control(controlName);
}

ReportSection *ReportDesign::section(const QString &sectionName)
{
    for (ReportSection &s : sections) {
        if (s.name == sectionName)
            return &s;
    }
    return nullptr;
}

const ReportSection *ReportDesign::section(const QString &sectionName) const
{
    return const_cast<ReportDesign *>(this)->section(sectionName);
}

Checked<ReportDesign> parseReportDesign(const QByteArray &json)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (document.isNull() || !document.isObject())
        return designError(QStringLiteral("Неразчетен макет на справка: ") + parseError.errorString());
    const QJsonObject root = document.object();

    ReportDesign design;
    design.name = root.value(QStringLiteral("name")).toString();
    design.caption = root.value(QStringLiteral("caption")).toString();
    if (design.caption.contains(QLatin1Char('{')))
        design.captionText = design.caption;

    const QJsonObject page = root.value(QStringLiteral("page")).toObject();
    design.page.orientation = page.value(QStringLiteral("orientation")).toString() == QLatin1String("landscape")
                                  ? ReportOrientation::Landscape
                                  : ReportOrientation::Portrait;
    design.page.leftMargin = page.value(QStringLiteral("leftMargin")).toInt(design.page.leftMargin);
    design.page.rightMargin = page.value(QStringLiteral("rightMargin")).toInt(design.page.rightMargin);
    design.page.topMargin = page.value(QStringLiteral("topMargin")).toInt(design.page.topMargin);
    design.page.bottomMargin = page.value(QStringLiteral("bottomMargin")).toInt(design.page.bottomMargin);
    design.page.windowWidth = page.value(QStringLiteral("windowWidth")).toInt(design.page.windowWidth);
    design.page.windowHeight = page.value(QStringLiteral("windowHeight")).toInt(design.page.windowHeight);

    const ReportFont baseFont = readFont(root.value(QStringLiteral("font")).toObject(), ReportFont{});
    const QJsonObject sections = root.value(QStringLiteral("sections")).toObject();
    for (const QString &sectionName : reportSectionNames()) {
        ReportSection section;
        section.name = sectionName;
        const QJsonObject object = sections.value(sectionName).toObject();
        if (object.isEmpty()) {
            section.visible = false;
            design.sections.append(section);
            continue;
        }
        section.height = object.value(QStringLiteral("height")).toInt();
        section.visible = object.value(QStringLiteral("visible")).toBool(true);
        section.notesUnder = object.value(QStringLiteral("notesUnder")).toString();
        const ReportFont sectionFont = readFont(object.value(QStringLiteral("font")).toObject(), baseFont);
        for (const QJsonValue &value : object.value(QStringLiteral("controls")).toArray()) {
            const QJsonObject c = value.toObject();
            ReportControl control;
            control.name = c.value(QStringLiteral("name")).toString();
            auto kind = c.contains(QStringLiteral("kind")) ? kindOf(c.value(QStringLiteral("kind")).toString())
                                                           : kindByName(control.name);
            if (!kind)
                return designError(QStringLiteral("Непознат вид на поле %1 в %2").arg(control.name, design.name));
            control.kind = *kind;
            control.left = c.value(QStringLiteral("left")).toInt();
            control.top = c.value(QStringLiteral("top")).toInt();
            control.width = c.value(QStringLiteral("width")).toInt();
            control.height = c.value(QStringLiteral("height")).toInt();
            control.caption = c.value(QStringLiteral("caption")).toString();
            control.text = c.value(QStringLiteral("text")).toString();
            control.hiddenWhenEmpty = c.value(QStringLiteral("hiddenWhenEmpty")).toBool(false);
            control.dataField = c.value(QStringLiteral("dataField")).toString();
            control.functionType = c.value(QStringLiteral("functionType")).toInt(0);
            control.format = c.value(QStringLiteral("format")).toString();
            if (control.format.contains(QLatin1Char('{')))
                control.formatText = control.format;
            control.amountWithUnit = c.value(QStringLiteral("amountWithUnit")).toBool(false);
            control.align = alignOf(c.value(QStringLiteral("align")).toString());
            control.font = readFont(c.value(QStringLiteral("font")).toObject(), sectionFont);
            control.foreColor = c.value(QStringLiteral("foreColor")).toInteger(colorBlack);
            control.backColor = c.value(QStringLiteral("backColor")).toInteger(noColor);
            control.canGrow = c.value(QStringLiteral("canGrow")).toBool(false);
            control.border = c.value(QStringLiteral("border")).toBool(false);
            control.lineWidth = c.value(QStringLiteral("lineWidth")).toDouble(control.lineWidth);
            control.visible = c.value(QStringLiteral("visible")).toBool(true);
            control.rising = c.value(QStringLiteral("direction")).toString() == QLatin1String("rising");
            // A row's own back colour by a yes/no column of that row.
            control.backColorField = c.value(QStringLiteral("backColorField")).toString();
            control.backColorWhenTrue = c.value(QStringLiteral("backColorWhenTrue")).toInteger(noColor);
            control.backColorWhenFalse = c.value(QStringLiteral("backColorWhenFalse")).toInteger(noColor);
            section.controls.append(control);
        }
        design.sections.append(section);
    }
    return design;
}

Checked<ReportDesign> loadReportDesign(const QString &name)
{
    // The designs are resources of the program and never change while it runs: each is read and
    // parsed once, and every paper after the first starts from a copy.
    static QMutex mutex;
    static QHash<QString, ReportDesign> parsed;
    {
        QMutexLocker lock(&mutex);
        const auto found = parsed.constFind(name);
        if (found != parsed.constEnd())
            return found.value();
    }
    QFile file(QStringLiteral(":/reports/designs/%1.json").arg(name));
    if (!file.open(QIODevice::ReadOnly))
        return designError(QStringLiteral("Липсва макетът на справка %1").arg(name));
    Checked<ReportDesign> design = parseReportDesign(file.readAll());
    if (design) {
        QMutexLocker lock(&mutex);
        parsed.insert(name, design.value());
    }
    return design;
}

}
