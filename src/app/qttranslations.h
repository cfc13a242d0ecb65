#pragma once

class QCoreApplication;

namespace zarek {

// Qt's own texts in Bulgarian (the file, print and colour dialogs, standard buttons), from the
// translations that come with Qt. False when they are not installed: Qt then speaks English.
bool loadQtTranslations(QCoreApplication &app);

}
