#include "sendresive.h"

#include "forms/messageservice.h"
#include "forms/waitcursor.h"
#include "international/tripstore.h"

#include <QAbstractTableModel>
#include <QHeaderView>
#include <QLabel>
#include <QTableView>
#include <QVBoxLayout>

namespace zarek {

namespace {

// The firms as read, four columns; the list only shows them.
class FirmListModel : public QAbstractTableModel {
public:
    FirmListModel(const QList<FirmAddress> &firms, QObject *parent) : QAbstractTableModel(parent), m_firms(firms) {}

    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : int(m_firms.size()); }
    int columnCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : 4; }
    QVariant data(const QModelIndex &index, int role) const override
    {
        if (!index.isValid() || role != Qt::DisplayRole)
            return {};
        const FirmAddress &firm = m_firms.at(index.row());
        switch (index.column()) {
        case 0: return firm.name;
        case 1: return firm.adres;
        case 2: return firm.city;
        default: return firm.country;
        }
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (role != Qt::DisplayRole)
            return {};
        if (orientation == Qt::Vertical)
            return section + 1;
        static const char *captions[] = {"Фирма", "Адрес", "Град", "Държава"};
        return QString::fromUtf8(captions[section]);
    }

private:
    QList<FirmAddress> m_firms;  // shared with the dialog's list, not copied
};

}

SendResive::SendResive(QSqlDatabase db, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("SendResive"));
    setWindowTitle(QStringLiteral("Данни на фирми"));
    setProperty("helpTopic", 261);
    {
        WaitCursor wait;
        const auto firms = TripStore(db).firms();
        if (firms)
            m_firms = firms.value();
        else
            MessageService::instance().inform(firms.message());
    }

    auto *caption = new QLabel(QStringLiteral("Данни на фирми"), this);
    caption->setObjectName(QStringLiteral("lblSendResive"));
    QFont bold = caption->font();
    bold.setBold(true);
    caption->setFont(bold);

    m_grid = new QTableView(this);
    m_grid->setObjectName(QStringLiteral("grdSendResive"));
    m_grid->setModel(new FirmListModel(m_firms, this));
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::SingleSelection);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setAlternatingRowColors(true);
    m_grid->setWordWrap(false);
    m_grid->verticalHeader()->setDefaultSectionSize(m_grid->fontMetrics().height() + 6);
    m_grid->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_grid->horizontalHeader()->setStretchLastSection(true);
    const int widths[] = {240, 240, 140};
    for (int column = 0; column < 3; ++column)
        m_grid->setColumnWidth(column, widths[column]);
    // A double click, or Enter on the current row.
    connect(m_grid, &QAbstractItemView::activated, this, [this](const QModelIndex &index) { pick(index.row()); });
    if (!m_firms.isEmpty())
        m_grid->setCurrentIndex(m_grid->model()->index(0, 0));

    auto *hint = new QLabel(QStringLiteral("Enter или двоен щрак – избор на фирмата; буква – търсене по име; "
                                           "Esc – затваряне без избор"),
                            this);
    hint->setObjectName(QStringLiteral("lblHint"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(caption);
    layout->addWidget(m_grid, 1);
    layout->addWidget(hint);
    resize(820, 440);
    m_grid->setFocus();
}

void SendResive::pick(int row)
{
    if (row < 0 || row >= m_firms.size())
        return;
    m_picked = m_firms.at(row);
    accept();
}

}
