#pragma once

#include <QSqlDatabase>

namespace zarek {

// Writes that belong together: begun on construction, rolled back unless commit() succeeds.
class Transaction {
public:
    explicit Transaction(QSqlDatabase db) : m_db(std::move(db)), m_active(m_db.transaction()) {}
    ~Transaction()
    {
        if (m_active)
            m_db.rollback();
    }
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    bool isActive() const { return m_active; }
    bool commit()
    {
        if (!m_active)
            return false;
        m_active = false;
        if (m_db.commit())
            return true;
        m_db.rollback();
        return false;
    }

private:
    QSqlDatabase m_db;
    bool m_active;
};

}
