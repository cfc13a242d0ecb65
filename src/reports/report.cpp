#include "report.h"


namespace zarek {

Report::Report(ReportDesign design) : m_design(std::move(design)), m_values(versionValues())
{
    composeTexts();
}

void Report::setValue(const QString &name, const QString &value)
{
    m_values.insert(name, value);
    composeTexts();
}

void Report::setValues(const ReportValues &values)
{
    for (auto it = values.begin(); it != values.end(); ++it)
        m_values.insert(it.key(), it.value());
    composeTexts();
}

void Report::composeTexts()
{
    if (!m_design.captionText.isEmpty())
        m_design.caption = expandReportText(m_design.captionText, m_values);
    for (ReportSection &section : m_design.sections) {
        for (ReportControl &c : section.controls) {
            if (!c.text.isEmpty()) {
                c.caption = expandReportText(c.text, m_values);
                if (c.hiddenWhenEmpty)
                    c.visible = !c.caption.isEmpty();
            }
            if (!c.formatText.isEmpty())
                c.format = expandReportText(c.formatText, m_values);
        }
    }
}

void Report::setAmountsWithUnits(bool withUnits)
{
    if (!withUnits)
        return;
    for (ReportSection &section : m_design.sections) {
        for (ReportControl &c : section.controls) {
            if (!c.amountWithUnit)
                continue;
            if (c.baselineFontSize <= 0)
                c.baselineFontSize = c.font.size;  // the text stays level with its row
            c.font.size = amountWithUnitFontSize;
        }
    }
}

Checked<Report> Report::fromDesign(const QString &designName)
{
    Checked<ReportDesign> design = loadReportDesign(designName);
    if (!design)
        return design.message();
    return Report(design.value());
}

void Report::setMargins(int left, int right, int top, int bottom)
{
    m_design.page.leftMargin = left;
    m_design.page.rightMargin = right;
    m_design.page.topMargin = top;
    m_design.page.bottomMargin = bottom;
}

void Report::setWindowSize(int width, int height)
{
    m_design.page.windowWidth = width;
    m_design.page.windowHeight = height;
}

ReportControl &Report::control(const QString &section, const QString &name)
{
    if (ReportSection *s = m_design.section(section)) {
        if (ReportControl *c = s->control(name))
            return *c;
    }
    reportFault(QStringLiteral("Report %1 has no control %2.%3").arg(m_design.name, section, name));
    static ReportControl standIn;
    standIn = ReportControl{};
    return standIn;
}

const ReportControl &Report::control(const QString &section, const QString &name) const
{
    return const_cast<Report *>(this)->control(section, name);
}

bool Report::hasControl(const QString &section, const QString &name) const
{
    const ReportSection *s = m_design.section(section);
    return s && s->control(name);
}

void Report::setCaption(const QString &section, const QString &name, const QString &caption)
{
    control(section, name).caption = caption;
}

void Report::setDataField(const QString &section, const QString &name, const QString &field)
{
    control(section, name).dataField = field;
}

void Report::setFunctionType(const QString &section, const QString &name, int functionType)
{
    control(section, name).functionType = functionType;
}

void Report::setBackColor(const QString &section, const QString &name, qint64 color)
{
    ReportControl &c = control(section, name);
    c.backColor = color;
    c.backColorField.clear();
}

void Report::addFooterNote(const QString &text, const QString &under)
{
    ReportSection *footer = m_design.section(QStringLiteral("ReportFooter"));
    if (!footer) {
        reportFault(QStringLiteral("Report %1 has no ReportFooter for a note").arg(m_design.name));
        return;
    }
    // A4 in twips: 11906 by 16838.
    const int pageWidth = m_design.page.orientation == ReportOrientation::Landscape ? 16838 : 11906;
    ReportControl note;
    note.name = QStringLiteral("FooterNote%1").arg(footer->controls.size());
    note.kind = ReportControlKind::Label;
    note.left = 0;
    note.top = footer->height + 60;
    note.width = pageWidth - m_design.page.leftMargin - m_design.page.rightMargin;
    note.height = 240;
    note.caption = text;
    note.canGrow = true;
    note.font.size = 8;
    note.font.italic = true;
    int grows = note.top + note.height - footer->height;
    const QString underName = under.isEmpty() ? footer->notesUnder : under;
    if (!underName.isEmpty()) {
        const ReportControl &above = control(QStringLiteral("ReportFooter"), underName);
        note.top = above.top + above.height + 20;
        grows = note.height + 40;
        for (ReportControl &below : footer->controls) {
            if (below.top >= note.top)
                below.top += grows;
        }
    }
    footer->controls.append(note);
    footer->height += grows;
}

void Report::setFontSize(const QString &section, const QString &name, double points)
{
    ReportControl &c = control(section, name);
    if (c.baselineFontSize <= 0)
        c.baselineFontSize = c.font.size;  // the text stays level with its row
    c.font.size = points;
}

void Report::setVisible(const QString &section, const QString &name, bool visible)
{
    control(section, name).visible = visible;
}

void Report::moveControl(const QString &section, const QString &name, int left, int top)
{
    ReportControl &c = control(section, name);
    c.left = left;
    c.top = top;
}

void Report::setBackColorByField(const QString &section, const QString &name, const QString &field,
                                 qint64 whenTrue, qint64 whenFalse)
{
    ReportControl &c = control(section, name);
    c.backColorField = field;
    c.backColorWhenTrue = whenTrue;
    c.backColorWhenFalse = whenFalse;
}

}
