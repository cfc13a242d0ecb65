#pragma once

// The invoicing screens as their tests drive them: a scratch sheet, marks by Space and the answer
// to "Фактура №".

#include "data/scratchdatabase.h"
#include "forms/resultgridscreen.h"
#include "invoicing/diafakt.h"
#include "invoicing/faktura.h"
#include "screendriver.h"

#include <QTemporaryDir>
#include <QtTest>

#include <functional>

namespace zarek::test {

inline const QDateTime closingTime(QDate(2006, 4, 2), QTime(16, 5, 0));

// The scratch database of one test, with TempPlaten laid out as the menu command does.
struct Sheet {
    QTemporaryDir folder;
    zarek::ScratchDatabase db{folder.path()};
    Sheet() { db.RebuildScratchTable(QStringLiteral("TempPlaten")); }
};

// Space on each of these rows.
inline void mark(ResultGridScreen &screen, const QList<int> &rows)
{
    QTRY_VERIFY(screen.currentRow() >= 0);
    for (const int row : rows) {
        screen.grid()->setCurrentIndex(screen.model()->index(row, 0));
        QTest::keyClick(screen.grid(), Qt::Key_Space);
    }
}

// Answers "Фактура №" of the screen with the text (none: the number offered) and the choices the
// step sets, and presses OK; a refused number is cancelled so the test goes on. True when the
// dialog took the number.
inline bool chooseNumber(Faktura &screen, const QString &text, const std::function<void(DiaFakt &)> &choose = {})
{
    bool taken = false;
    onNextModal<DiaFakt>([&](DiaFakt &dialog) {
        if (!text.isEmpty())
            dialog.combo()->setEditText(text);
        if (choose)
            choose(dialog);
        dialog.okButton()->click();
        taken = dialog.FaktChosen();
        if (dialog.isVisible())
            dialog.cancelButton()->click();
    });
    screen.chooseNumber();
    return taken;
}

}
