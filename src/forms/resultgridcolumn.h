#pragma once

#include <QString>
#include <Qt>

namespace zarek {

// One column of a result grid, as a screen's column table gives it.
struct ResultGridColumn {
    QString field;            // the column of the rows it shows
    QString caption;
    int widthTwips = 1000;    // 15 twips to a pixel
    QString format;           // "###0.000" and the like; empty shows the value as it is (dates dd.MM.yyyy)
    Qt::Alignment alignment = Qt::AlignLeft;
    bool editable = false;
    bool hidden = false;
    bool checkBox = false;    // a yes/no column drawn as a check box
    bool fitContent = false;  // widened to its widest text, so a truck number is never cut short
    bool amount = false;      // money: where the rows are in both currencies each shows its unit

    int widthPixels() const { return widthTwips / 15; }
};

}
