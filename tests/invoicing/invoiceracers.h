#pragma once

// Workstations racing to issue invoices: each a copy of the test program in a racer mode of its
// own, on one database, issuing invoices for a client of its own as fast as it can.

#include "data/database.h"
#include "invoicing/invoicestore.h"
#include "invoicingfixture.h"

#include <QCoreApplication>
#include <QProcess>
#include <QSqlError>
#include <QTextStream>
#include <QtTest>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace zarek::test {

// The client whose courses racer n invoices.
inline QString racerClient(int racer)
{
    return QStringLiteral("Клиент %1").arg(racer);
}

// The database a racer names on its command line (the engine, then a PostgreSQL database's name
// or a SQLite file), opened under the connection name given.
inline QSqlDatabase connectTo(const QString &engine, const QString &target, const QString &name)
{
    DatabaseConfig config;
    if (engine == QLatin1String("postgresql")) {
        config = DatabaseConfig::fromText(qEnvironmentVariable("ZAREK_TEST_PG")).value_or(DatabaseConfig{});
        config.databaseName = target;
    } else {
        config.sqlitePath = target;
    }
    QString error;
    return openDatabase(config, name, &error);
}

// Gives each racer its courses of March, starts the racers on the database of scratch, lets them
// go together and puts what each printed in outputs; a failure when one does not end well.
inline void race(ScratchDatabase &scratch, const char *mode, int racers, int invoicesEach, QStringList &outputs)
{
    for (int racer = 0; racer < racers; ++racer) {
        for (int i = 0; i < invoicesEach; ++i)
            insertCourse(scratch.db(), {QDate(2006, 3, 1 + i), racerClient(racer), QStringLiteral("Перник - София")});
    }
    const QString engine = currentEngine();
    const QString target = engine == QLatin1String("postgresql") ? scratch.config().databaseName : scratch.config().sqlitePath;
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int racer = 0; racer < racers; ++racer) {
        auto process = std::make_unique<QProcess>();
        process->setProcessChannelMode(QProcess::MergedChannels);
        process->start(QCoreApplication::applicationFilePath(),
                       {QString::fromLatin1(mode), engine, target, QString::number(racer)});
        QVERIFY(process->waitForStarted());
        processes.push_back(std::move(process));
    }
    QTest::qWait(300);  // every racer connected and waiting
    for (auto &process : processes)
        process->write("go\n");
    for (auto &process : processes)
        QVERIFY(process->waitForBytesWritten(5000));
    for (int racer = 0; racer < racers; ++racer) {
        QProcess &process = *processes[racer];
        QVERIFY(process.waitForFinished(120000));
        outputs.append(QString::fromUtf8(process.readAll()));
        QVERIFY2(process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0,
                 qPrintable(racerClient(racer) + QStringLiteral(": ") + outputs.last()));
    }
}

// Issues one invoice of a racer's client on the courses it has left (its first is the one to take).
using IssueOne = std::function<SettleOutcome(QSqlDatabase db, const QString &client, int racer, const RowSet &courses)>;

// A racer (arguments: engine, database, racer): connects, waits for "go" on its input, then issues
// invoicesEach invoices of one course each, choosing again whenever another workstation took the
// number meanwhile. Prints a line per invoice and "REFUSED n" at the end; exits 0 when every
// invoice was issued.
inline int runRacer(const QStringList &args, int invoicesEach, const IssueOne &issue)
{
    QTextStream out(stdout);
    if (args.size() != 3)
        return 9;
    const int racer = args.at(2).toInt();
    const QString client = racerClient(racer);
    QSqlDatabase db = connectTo(args.at(0), args.at(1), QStringLiteral("racer"));
    if (!db.isOpen()) {
        out << "FAILED " << db.lastError().text() << Qt::endl;
        return 3;
    }
    QTextStream in(stdin);
    in.readLine();
    int issued = 0;
    int refused = 0;
    while (issued < invoicesEach && refused < 1000) {
        const Checked<RowSet> rows = InvoiceStore(db).courses({FakturaMode::FaktNew, client, march2006, {}, {}, {}, {}});
        if (!rows || rows.value().rowCount() == 0) {
            out << "FAILED " << (rows ? QStringLiteral("no course left") : rows.message().text) << Qt::endl;
            return 4;
        }
        const SettleOutcome outcome = issue(db, client, racer, rows.value());
        if (outcome.kind == SettleOutcome::Kind::Written) {
            ++issued;
            out << "ISSUED " << outcome.documentNumber << Qt::endl;
        } else if (outcome.kind == SettleOutcome::Kind::NumberTaken) {
            ++refused;
        } else {
            out << "FAILED " << int(outcome.kind) << ' ' << (outcome.message ? outcome.message->text : QString())
                << Qt::endl;
            return 2;
        }
    }
    out << "REFUSED " << refused << Qt::endl;
    return issued == invoicesEach ? 0 : 6;
}

// The main of a test program whose copies also run as racers: the first argument names the mode
// a copy runs in, else the tests run.
template <typename Test>
int racingMain(int argc, char *argv[], const QList<std::pair<const char *, std::function<int(const QStringList &)>>> &modes)
{
    QCoreApplication app(argc, argv);
    for (const auto &[mode, run] : modes) {
        if (argc > 1 && qstrcmp(argv[1], mode) == 0)
            return run(app.arguments().mid(2));
    }
    app.setAttribute(Qt::AA_Use96Dpi, true);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

}
