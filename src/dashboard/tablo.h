#pragma once

#include "core/currency.h"
#include "core/firmprofile.h"
#include "dashboard/dashboardfigures.h"
#include "dashboard/dashboardreport.h"

#include <QFrame>
#include <QHash>
#include <QSqlDatabase>
#include <functional>
#include <variant>

class QGridLayout;
class QLabel;
class QThread;
class QTreeWidget;
class QChartView;

namespace zarek::dashboard {

enum class Tile { Month, Uninvoiced, Unpaid, Receivables, Documents, Profit };
inline constexpr Tile allTiles[] = {Tile::Month,       Tile::Uninvoiced, Tile::Unpaid,
                                    Tile::Receivables, Tile::Documents,  Tile::Profit};

// What one tile read: its figures, or the line that says why there are none.
using TileFigures = std::variant<MonthComparison, QList<UninvoicedClient>, QList<UnpaidDriver>, Receivables,
                                 DueDocuments, TruckProfits>;
struct TileResult {
    Tile tile = Tile::Month;
    std::optional<TileFigures> figures;
    QString failure;
};
// Reads the figures of one tile for the books of a day (what the dashboard does in the background).
TileResult readTile(Tile tile, QSqlDatabase db, const BooksDay &books);

class TileBox;

// "Табло": the month's state in tiles, in the main window's client area. The figures are read in
// two threads of their own, each on a connection of its own, and each tile shows its own as soon
// as they are there; the window's menus answer meanwhile. A tile that cannot read its figures says
// so in a line of its own. Tab moves from tile to tile, the arrows within one, Enter opens the
// screen that acts on the row, Ctrl+P prints the tile on a page.
class Tablo : public QFrame {
    Q_OBJECT
public:
    Tablo(QSqlDatabase db, std::function<BooksDay()> books, std::function<FirmProfile()> firm,
          QWidget *parent = nullptr);
    ~Tablo() override;

    // A tile the user may not act on is not shown, and not read.
    void setTileAllowed(Tile tile, bool allowed);
    bool isTileAllowed(Tile tile) const { return m_allowed.value(tile, true); }
    TileBox *tileBox(Tile tile) const { return m_boxes.value(tile); }

    // Reads every allowed tile again; asked while reading, it reads once more when done.
    void refresh();
    bool isLoading() const { return !m_threads.isEmpty(); }

    // What the tile shows now, and its page.
    TileSheet sheet(Tile tile) const;
    QString failure(Tile tile) const;
    std::optional<TileFigures> figures(Tile tile) const;
    Checked<Report> report(Tile tile) const;
    void print(Tile tile);

signals:
    // Every tile read (or failed); after a refresh.
    void loaded();
    void openMonthReport(const zarek::Period &month);
    void openInvoicing(const QString &klient, const zarek::Period &period);
    void openPaySheet(const QString &kod, const QString &name, const zarek::Period &period);
    void openClientAccount(const QString &klient);
    void openDocument(qint64 id);
    void openBalans(const QString &kola, const zarek::Period &period);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void arrange(int columns);
    void showResult(const TileResult &result);
    void activate(Tile tile, int row);

    QSqlDatabase m_db;
    std::function<BooksDay()> m_books;
    std::function<FirmProfile()> m_firm;
    QHash<Tile, TileBox *> m_boxes;
    QHash<Tile, bool> m_allowed;
    QHash<Tile, TileResult> m_results;
    QHash<Tile, BooksDay> m_booksShown;
    QList<QThread *> m_threads;  // the readers still reading
    bool m_again = false;
    QGridLayout *m_grid = nullptr;
    int m_columns = 0;
};

// One tile: its title, the period, the rows (or the chart of the profit), a note.
class TileBox : public QFrame {
    Q_OBJECT
public:
    TileBox(Tile tile, QWidget *parent = nullptr);
    Tile tile() const { return m_tile; }
    void showSheet(const TileSheet &sheet);
    void showFailure(const QString &title, const QString &line);
    void showProfits(const TruckProfits &profits);
    // The widget that takes the keys: the rows, or the chart.
    QWidget *keyWidget() const;
    int currentRow() const;
    void setCurrentRow(int row);
    QString noteText() const;

signals:
    void activated(int row);
    void printRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    Tile m_tile;
    QLabel *m_title = nullptr;
    QLabel *m_period = nullptr;
    QTreeWidget *m_rows = nullptr;
    QChartView *m_chart = nullptr;
    QLabel *m_note = nullptr;
    int m_bar = 0;
    int m_bars = 0;
    QStringList m_barNotes;  // the chosen truck's profit, under the chart
};

}
