#pragma once

#include "core/usermessage.h"
#include "data/databaseconfig.h"

#include <QDialog>
#include <QSqlDatabase>
#include <functional>
#include <optional>

class QLineEdit;

namespace zarek {

// Asks for the password of a PostgreSQL database once, when the address has none and libpq found
// none in PGPASSWORD, ~/.pgpass or PGPASSFILE. The password is typed here, never on a command
// line that every user of the machine can read.
class DatabasePasswordDialog : public QDialog {
    Q_OBJECT
public:
    explicit DatabasePasswordDialog(const DatabaseConfig &config, QWidget *parent = nullptr);
    QString password() const;

    // Shows the dialog; the password, or none when the user gave up.
    static std::optional<QString> ask(const DatabaseConfig &config);

private:
    QLineEdit *m_password = nullptr;
};

using PasswordPrompt = std::function<std::optional<QString>(const DatabaseConfig &config)>;
using Connector = std::function<Checked<QSqlDatabase>(const DatabaseConfig &config, const QString &connectionName)>;

// Connects; when a PostgreSQL server wants a password the address does not give, asks for it once
// and connects again with it.
Checked<QSqlDatabase> connectAsking(const DatabaseConfig &config, const QString &connectionName,
                                    const PasswordPrompt &ask, const Connector &connect);

}
