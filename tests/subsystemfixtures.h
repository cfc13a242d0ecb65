#pragma once

// The fixture the database tests of the subsystems share: each test starts on a fresh database of
// the current engine (database, db) with the messages it shows recorded (messages), and both go
// when it ends.
//
//   class XTest : public QObject, test::DatabaseFixture {
//       void init() { ZAREK_DATABASE_FIXTURE(); ...the test's rows... }
//       void cleanup() { screen.reset(); tearDown(); }  // its screens first

#include "forms/messageservice.h"
#include "testdatabase.h"

#include <QAbstractItemModel>

#include <memory>

namespace zarek::test {

struct DatabaseFixture {
    std::unique_ptr<ScratchDatabase> database;
    std::unique_ptr<RecordingMessageService> messages;
    QSqlDatabase db;

    void tearDown()
    {
        messages.reset();
        db = {};
        database.reset();
    }
};

// The captions of a grid's columns.
inline QStringList captions(const QAbstractItemModel *model)
{
    QStringList list;
    for (int column = 0; column < model->columnCount(); ++column)
        list << model->headerData(column, Qt::Horizontal).toString();
    return list;
}

// Each row of a grid as the texts it shows in the columns given (every column when none), joined
// by the separator.
inline QStringList gridRows(const QAbstractItemModel *model, const QString &separator = QStringLiteral("|"),
                            QList<int> columns = {})
{
    const bool every = columns.isEmpty();
    for (int column = 0; every && column < model->columnCount(); ++column)
        columns.append(column);
    QStringList rows;
    for (int row = 0; row < model->rowCount(); ++row) {
        QStringList cells;
        for (const int column : columns)
            cells << model->index(row, column).data().toString();
        rows << cells.join(separator);
    }
    return rows;
}

}

// In init(): the fixture set up for the test, or the test skipped with the reason.
#define ZAREK_DATABASE_FIXTURE()                                           \
    ZAREK_SCRATCH_DB_INTO(database);                                       \
    db = database->db();                                                   \
    messages = std::make_unique<zarek::RecordingMessageService>()
