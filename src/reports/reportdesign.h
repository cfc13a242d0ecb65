#pragma once

#include "core/usermessage.h"

#include <QList>
#include <QString>
#include <QtGlobal>

namespace zarek {

// A banded report design: five sections with named controls, as the designs under
// reports/designs describe them. Positions and sizes are in twips (1/1440 inch, 1/20 point),
// colours are numbers of the form 0x00BBGGRR, as the report designer wrote them.
//
// A design declares the whole paper; the routine that prints it hands over rows and values only:
//  - "dataField" of a Text box: the column it shows; of a Function: the column it sums
//    ("functionType" 0); "format" may name a value ("{totalFormat}").
//  - "text" of a Label: composed from values, "{UserName}", "{UserCity}, {UserAdres}",
//    "{firmContact}" (the firm block, see firmValues), "{period}" (see periodValues),
//    "Зарек {version}", or any value the paper computes ("{subject}"); "{name|words}" keeps the
//    design's words until a value replaces them; "hiddenWhenEmpty" hides a line that comes out empty.
//    The design's "caption" (the window's title) may name values the same way.
//  - "backColorField" with "backColorWhenTrue" / "backColorWhenFalse": each row paints the box
//    by a yes/no column of its own.
//  - "amountWithUnit": the box shows amounts with their unit when a paper has both currencies.
//  - "notesUnder" of the ReportFooter: the control its notes stand under.

enum class ReportControlKind { Label, Text, Function, Line, Box, PageNumber };
enum class ReportAlign { Left, Center, Right };
enum class ReportOrientation { Portrait, Landscape };

struct ReportFont {
    QString family = QStringLiteral("DejaVu Sans");
    double size = 9;  // points
    bool bold = false;
    bool italic = false;
    bool operator==(const ReportFont &) const = default;
};

// Colour numbers of the designs.
inline constexpr qint64 noColor = -1;
inline constexpr qint64 colorWhite = 16777215;
inline constexpr qint64 colorGrey = 12632256;
inline constexpr qint64 colorBlack = 0;

struct ReportControl {
    QString name;
    ReportControlKind kind = ReportControlKind::Label;
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    QString caption;        // Label text; for PageNumber a text with %1 (page) and %2 (pages)
    // Label: the text the report composes from its values ("{UserName}", "{period}"); it becomes
    // the caption as the values are handed over. Empty: the caption stands as designed.
    QString text;
    bool hiddenWhenEmpty = false;  // a composed text that comes out empty hides the control
    QString dataField;      // Text and Function: the column shown or summed
    int functionType = 0;   // Function: 0 is the sum, the only kind the reports use
    QString format;         // "0,00", "###0.000", "Short Date", "Yes/No"; empty shows the value as it is
    QString formatText;     // a format composed from the report's values ("{totalFormat}"): it becomes format
    bool amountWithUnit = false;  // shows amounts with their unit when a paper has both currencies: a smaller font
    ReportAlign align = ReportAlign::Left;
    ReportFont font;
    double baselineFontSize = 0;  // set smaller than designed: its text keeps the designed size's baseline
    qint64 foreColor = colorBlack;
    qint64 backColor = noColor;
    bool canGrow = false;   // wrap a long text onto more lines instead of cutting it short
    bool visible = true;    // a hidden control takes no place and draws nothing
    bool rising = false;    // Line: from the bottom left to the top right corner instead of top left to bottom right
    bool border = false;
    double lineWidth = 0.5;  // Line, Box and border: points
    // A row's own back colour by a yes/no column of that row (empty: the fixed backColor).
    QString backColorField;
    qint64 backColorWhenTrue = noColor;
    qint64 backColorWhenFalse = noColor;
};

struct ReportSection {
    QString name;
    int height = 0;
    bool visible = true;
    QString notesUnder;  // ReportFooter: the control its notes stand under; empty: under everything
    QList<ReportControl> controls;

    ReportControl *control(const QString &controlName);
    const ReportControl *control(const QString &controlName) const;
};

struct ReportPageSetup {
    ReportOrientation orientation = ReportOrientation::Portrait;
    int leftMargin = 1440;
    int rightMargin = 1440;
    int topMargin = 1440;
    int bottomMargin = 1440;
    int windowWidth = 12000;  // the preview window, twips
    int windowHeight = 9000;
};

struct ReportDesign {
    QString name;
    QString caption;  // the preview window's title until a routine sets one
    QString captionText;  // the title composed from the report's values ("Зарек {version} - …"), when given
    ReportPageSetup page;
    QList<ReportSection> sections;  // ReportHeader, PageHeader, Detail, PageFooter, ReportFooter

    ReportSection *section(const QString &sectionName);
    const ReportSection *section(const QString &sectionName) const;
};

// A report routine or design that names what the design or its rows do not have. Tests run with
// ZAREK_STRICT_REPORTS set, and there such a fault ends the test program at once; the program
// itself only warns and goes on.
void reportFault(const QString &text);

// The five section names, in print order.
const QStringList &reportSectionNames();

// Reads a design from its JSON text.
Checked<ReportDesign> parseReportDesign(const QByteArray &json);
// Reads the design of this name from the program's resources (":/reports/designs/<name>.json").
Checked<ReportDesign> loadReportDesign(const QString &name);

}
