// A minimal Qt program for bench_startup to race: a dialog shown, its name written when it shows,
// then closed. It links Qt Widgets (and Qt Sql) alone.
// With --word it shows one label, the least any window with words does: the fonts read and one
// word drawn.
// With a database (a SQLite file or a postgresql:// address) as its argument it is the least any sign-in must do: the file opened and
// its users read, then a dialog of two labelled fields, a list and two buttons shown (its text
// drawn, so the fonts are loaded as they are for any window with words in it).
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTimer>
#include <QUrl>
#include <cstdio>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QDialog dialog;
    if (argc > 1 && qstrcmp(argv[1], "--word") == 0) {
        (new QFormLayout(&dialog))->addRow(new QLabel(QStringLiteral("Парола"), &dialog));
    } else if (argc > 1) {
        const QString database = QString::fromLocal8Bit(argv[1]);
        const QUrl server(database);
        QSqlDatabase db;
        if (server.scheme() == QLatin1String("postgresql")) {
            db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"));
            db.setHostName(server.host());
            db.setPort(server.port(5432));
            db.setUserName(server.userName());
            db.setDatabaseName(server.path().mid(1));
        } else {
            db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"));
            db.setDatabaseName(database);
        }
        db.open();
        QSqlQuery users(QStringLiteral("SELECT Ime FROM Users ORDER BY Ime"), db);
        auto *names = new QComboBox(&dialog);
        while (users.next())
            names->addItem(users.value(0).toString());
        auto *form = new QFormLayout(&dialog);
        form->addRow(QString(), names);
        form->addRow(QStringLiteral("Потребител"), new QLineEdit(&dialog));
        form->addRow(QStringLiteral("Парола"), new QLineEdit(&dialog));
        form->addRow(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog));
        dialog.setWindowTitle(QStringLiteral("Парола"));
    }
    dialog.show();
    std::printf("QDialog: \n");
    std::fflush(stdout);
    QTimer::singleShot(0, &dialog, &QDialog::reject);
    return dialog.exec();
}
