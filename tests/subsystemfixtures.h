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

}

// In init(): the fixture set up for the test, or the test skipped with the reason.
#define ZAREK_DATABASE_FIXTURE()                                           \
    ZAREK_SCRATCH_DB_INTO(database);                                       \
    db = database->db();                                                   \
    messages = std::make_unique<zarek::RecordingMessageService>()
