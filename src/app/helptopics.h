#pragma once

#include <QList>
#include <QString>

namespace zarek {

// One page of the program's help, by its topic number.
struct HelpTopic {
    int number;
    QString title;
    QString html;
};

// Every topic: the contents (33) first, then one per help number of the menus, then the topics of
// screens without a menu help number. Each topic is a page "<number>.html" in a help/ folder of
// its subsystem, its first line the topic's <title>. Screens without a menu number take theirs
// from their subsystem's range: invoicing 200, settlement 210, fleet 220, attestation 230,
// waybills 240, warehouse 250, international 260, courses 270, reference 280, the shell 290.
const QList<HelpTopic> &helpTopics();
const HelpTopic *findHelpTopic(int number);
inline constexpr int helpContentsTopic = 33;
// "Клавишни комбинации", made from the menu tree's shortcuts, and the guide "Ръководство".
inline constexpr int helpKeysTopic = 291;
inline constexpr int helpGuideTopic = 292;

// The keys page as HTML: a table of every shortcut.
QString keyboardShortcutsHtml();

}
