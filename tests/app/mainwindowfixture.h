#pragma once

// The main window of the shell tests: a firm named by its name alone, on a fresh database.

#include "app/frmmain.h"
#include "core/firmprofile.h"
#include "forms/messageservice.h"
#include "testdatabase.h"

namespace zarek::test {

inline FirmProfile acme()
{
    FirmProfile profile;
    profile.UserName = QStringLiteral("ACME");
    return profile;
}

}

// A fresh database of the current engine (scratch) and the main window on it, for the
// administrator; with _TELLING, for a user of the kind given and with the messages recorded.
#define MAIN_WINDOW(window)                                                              \
    ZAREK_SCRATCH_DB(scratch);                                                           \
    FrmMain window(zarek::test::acme(), scratch.config(), scratch.db(), QStringLiteral("A"))
#define MAIN_WINDOW_TELLING(window, vid)                                                 \
    ZAREK_SCRATCH_DB(scratch);                                                           \
    RecordingMessageService messages;                                                    \
    FrmMain window(zarek::test::acme(), scratch.config(), scratch.db(), QStringLiteral(vid))
