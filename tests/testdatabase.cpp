#include "testdatabase.h"

#include "data/database.h"
#include "data/schema.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlField>
#include <QSqlRecord>
#include <QTemporaryDir>
#include <QUuid>

namespace zarek::test {

QStringList csvLines(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {QStringLiteral("<cannot read %1>").arg(path)};
    const QByteArray bytes = file.readAll();
    if (!bytes.startsWith("\xEF\xBB\xBF"))
        return {QStringLiteral("<no byte-order mark in %1>").arg(path)};
    return QString::fromUtf8(bytes.mid(3)).split(QStringLiteral("\r\n"));
}

bool execAll(QSqlDatabase db, const QStringList &statements)
{
    QSqlQuery query(db);
    for (const QString &sql : statements) {
        if (!query.exec(sql)) {
            qWarning() << sql << query.lastError().text();
            return false;
        }
    }
    return true;
}

namespace {

// Prepares sql on query, binds the values and runs it.
bool runBound(QSqlQuery &query, const QString &sql, const QVariantList &values)
{
    query.prepare(sql);
    for (const QVariant &value : values)
        query.addBindValue(value);
    return query.exec();
}

}

bool execBound(QSqlDatabase db, const QString &sql, const QVariantList &values)
{
    QSqlQuery query(db);
    if (runBound(query, sql, values))
        return true;
    qWarning() << sql << query.lastError().text();
    return false;
}

bool insertRow(QSqlDatabase db, const QString &table, const QString &columns, const QVariantList &values)
{
    QStringList marks;
    for (qsizetype i = 0; i < values.size(); ++i)
        marks << QStringLiteral("?");
    return execBound(db, QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)").arg(table, columns, marks.join(QStringLiteral(", "))),
                     values);
}

bool makePlainSqliteFile(const QString &path, const QStringList &statements)
{
    const QString connection = QStringLiteral("plain-file");
    bool ok = false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        db.setDatabaseName(path);
        ok = db.open() && execAll(db, statements);
        db.close();
    }
    QSqlDatabase::removeDatabase(connection);
    return ok;
}

QVariant scalar(QSqlDatabase db, const QString &sql, const QVariantList &values)
{
    QSqlQuery query(db);
    if (!runBound(query, sql, values) || !query.next())
        return QStringLiteral("<%1>").arg(query.lastError().text());
    return query.value(0);
}

int countBy(QSqlDatabase db, const QString &sql, const QVariantList &values)
{
    QSqlQuery query(db);
    return runBound(query, sql, values) && query.next() ? query.value(0).toInt() : -1;
}

QString rowsText(QSqlDatabase db, const QString &sql, const QVariantList &values)
{
    QSqlQuery query(db);
    if (!runBound(query, sql, values))
        return QStringLiteral("<%1>").arg(query.lastError().text());
    QStringList rows;
    while (query.next()) {
        const QSqlRecord record = query.record();
        QStringList row;
        for (int i = 0; i < record.count(); ++i) {
            const QVariant value = query.value(i);
            const int type = record.field(i).metaType().id();
            if (value.isNull())
                row.append(QString());
            else if (type == QMetaType::Bool || value.typeId() == QMetaType::Bool)
                row.append(value.toBool() ? QStringLiteral("1") : QStringLiteral("0"));
            else if (type == QMetaType::Double || value.typeId() == QMetaType::Double)
                row.append(QString::number(value.toDouble(), 'g', 12));
            else if (value.typeId() == QMetaType::QDate || value.typeId() == QMetaType::QDateTime)
                row.append(value.toDate().toString(Qt::ISODate));
            else
                row.append(value.toString());
        }
        rows.append(row.join(QLatin1Char('|')));
    }
    return rows.join(QLatin1Char(' '));
}

namespace {

QString uniqueSuffix()
{
    return QUuid::createUuid().toString(QUuid::Id128).left(12);
}

}

void addEngineRows()
{
    QTest::addColumn<QString>("engine");
    QTest::newRow("sqlite") << QStringLiteral("sqlite");
    QTest::newRow("postgresql") << QStringLiteral("postgresql");
}

ScratchDatabase::ScratchDatabase(const QString &engine, bool migrate)
    : m_connection(QStringLiteral("test_") + uniqueSuffix()), m_secondConnection(m_connection + QStringLiteral("_2"))
{
    QString error;
    if (engine == QLatin1String("postgresql")) {
        const QString admin = qEnvironmentVariable("ZAREK_TEST_PG");
        if (admin.isEmpty()) {
            m_skipReason = QStringLiteral("PostgreSQL not configured: set ZAREK_TEST_PG (the test command does)");
            return;
        }
        const auto adminConfig = DatabaseConfig::fromText(admin);
        if (!adminConfig) {
            m_skipReason = QStringLiteral("ZAREK_TEST_PG is not a postgresql:// address");
            return;
        }
        m_pgDatabase = QStringLiteral("zarek_test_") + uniqueSuffix().toLower();
        {
            QSqlDatabase adminDb = openDatabase(*adminConfig, m_connection + QStringLiteral("_admin"), &error);
            if (!adminDb.isOpen()) {
                m_skipReason = QStringLiteral("PostgreSQL unreachable: ") + error;
                closeDatabase(m_connection + QStringLiteral("_admin"));
                return;
            }
            QSqlQuery create(adminDb);
            if (!create.exec(QStringLiteral("CREATE DATABASE %1 ENCODING 'UTF8' TEMPLATE template0").arg(m_pgDatabase))) {
                QTest::qFail(qPrintable(create.lastError().text()), __FILE__, __LINE__);
                m_pgDatabase.clear();
            }
        }
        closeDatabase(m_connection + QStringLiteral("_admin"));
        if (m_pgDatabase.isEmpty())
            return;
        m_config = *adminConfig;
        m_config.databaseName = m_pgDatabase;
    } else {
        QTemporaryDir dir(QDir::tempPath() + QStringLiteral("/zarek-test-XXXXXX"));
        dir.setAutoRemove(false);
        m_tempDir = dir.path();
        m_config.engine = DatabaseConfig::Engine::SQLite;
        m_config.sqlitePath = m_tempDir + QStringLiteral("/Zarek.db");
    }
    if (!migrate) {
        m_ready = true;
        return;
    }

    QSqlDatabase database = openDatabase(m_config, m_connection, &error);
    if (!database.isOpen()) {
        QTest::qFail(qPrintable(error), __FILE__, __LINE__);
        return;
    }
    if (!migrateSchema(database, &error)) {
        QTest::qFail(qPrintable(error), __FILE__, __LINE__);
        return;
    }
    m_ready = true;
}

ScratchDatabase::~ScratchDatabase()
{
    closeDatabase(m_secondConnection);
    closeDatabase(m_connection);
    if (!m_pgDatabase.isEmpty()) {
        const auto adminConfig = DatabaseConfig::fromText(qEnvironmentVariable("ZAREK_TEST_PG"));
        const QString adminName = m_connection + QStringLiteral("_drop");
        {
            QSqlDatabase adminDb = openDatabase(*adminConfig, adminName);
            QSqlQuery drop(adminDb);
            drop.exec(QStringLiteral("DROP DATABASE IF EXISTS %1 WITH (FORCE)").arg(m_pgDatabase));
        }
        closeDatabase(adminName);
    }
    if (!m_tempDir.isEmpty())
        QDir(m_tempDir).removeRecursively();
}

QSqlDatabase ScratchDatabase::db() const
{
    return QSqlDatabase::database(m_connection);
}

QSqlDatabase ScratchDatabase::openSecondConnection()
{
    return openDatabase(m_config, m_secondConnection);
}

bool ScratchDatabase::exec(const QString &sql)
{
    QSqlQuery query(db());
    if (query.exec(sql))
        return true;
    QTest::qFail(qPrintable(query.lastError().text() + QStringLiteral(" in ") + sql), __FILE__, __LINE__);
    return false;
}

}
