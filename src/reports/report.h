#pragma once

#include "reports/reportdesign.h"
#include "reports/reportvalues.h"
#include "data/rowset.h"

#include <QString>

namespace zarek {

// The font of a column whose figures carry their unit, in a box sized for the figure alone.
inline constexpr double amountWithUnitFontSize = 7.5;

// One report ready to lay out: a design, the rows it shows and the values its texts name. The
// design says which column each box shows, what each total sums and which value each label
// composes; the caller hands over the rows and the values (the firm, the period, what the paper
// computes) and the report fills the design's texts from them.
class Report {
public:
    Report() = default;
    explicit Report(ReportDesign design);
    // The design of this name from the resources, unfilled.
    static Checked<Report> fromDesign(const QString &designName);

    const ReportDesign &design() const { return m_design; }
    const RowSet &data() const { return m_rows; }

    void setDataSource(RowSet rows) { m_rows = std::move(rows); }

    // A value the design's texts name ("{subject}"); every text that names it is composed again.
    void setValue(const QString &name, const QString &value);
    void setValues(const ReportValues &values);
    // The firm block: the firm's columns and its contact line (see firmValues).
    void setFirm(const FirmProfile &firm) { setValues(firmValues(firm)); }
    // The period line and its two dates (see periodValues).
    void setPeriod(const Period &period) { setValues(periodValues(period)); }
    QString value(const QString &name) const { return m_values.value(name); }
    // Amounts of both currencies, each with its unit: the design's amount boxes take a smaller font.
    void setAmountsWithUnits(bool withUnits);

    // A title of the routine's own, instead of the design's.
    void setWindowCaption(const QString &caption)
    {
        m_design.caption = caption;
        m_design.captionText.clear();
    }
    QString windowCaption() const { return m_design.caption; }
    // The name a saved copy (PDF) is offered under, without extension: the subject and the period.
    void setSuggestedFileName(const QString &name) { m_suggestedFileName = name; }
    QString suggestedFileName() const { return m_suggestedFileName; }
    void setOrientation(ReportOrientation orientation) { m_design.page.orientation = orientation; }
    void setMargins(int left, int right, int top, int bottom);
    void setWindowSize(int width, int height);

    // The control of that name in that section; a name the design lacks is a fault of the routine
    // (reportFault), and what is written to it goes nowhere.
    ReportControl &control(const QString &section, const QString &name);
    const ReportControl &control(const QString &section, const QString &name) const;
    bool hasControl(const QString &section, const QString &name) const;

    void setCaption(const QString &section, const QString &name, const QString &caption);
    void setDataField(const QString &section, const QString &name, const QString &field);
    void setFunctionType(const QString &section, const QString &name, int functionType);
    void setBackColor(const QString &section, const QString &name, qint64 color);
    // A picture (PNG, a chart say) printed on a page of its own after the report, and exported with it.
    void appendPicture(const QString &title, const QByteArray &png) { m_pictures.append({title, png}); }
    const QList<QPair<QString, QByteArray>> &pictures() const { return m_pictures; }

    // A line of its own in the report footer (the note under totals that took in amounts of the
    // other currency, say): right under the named control (by default the one the design's footer
    // names in notesUnder), the footer's controls below it moving down, or under everything the
    // footer holds. The footer grows by it.
    void addFooterNote(const QString &text, const QString &under = {});
    // The size of a control's font, in points (rows that carry their unit need a smaller one).
    void setFontSize(const QString &section, const QString &name, double points);

    // Shows or hides a control; a hidden one draws nothing.
    void setVisible(const QString &section, const QString &name, bool visible);
    // Moves a control to a new position in its section, in twips.
    void moveControl(const QString &section, const QString &name, int left, int top);
    // Each row paints the control by the yes/no value of its own column.
    void setBackColorByField(const QString &section, const QString &name, const QString &field,
                             qint64 whenTrue, qint64 whenFalse);

private:
    void composeTexts();

    ReportDesign m_design;
    ReportValues m_values;
    RowSet m_rows;
    QList<QPair<QString, QByteArray>> m_pictures;
    QString m_suggestedFileName;
};

}
