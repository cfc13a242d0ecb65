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

// Every topic: the contents (33) first, then one per help number of the menus.
const QList<HelpTopic> &helpTopics();
const HelpTopic *findHelpTopic(int number);
inline constexpr int helpContentsTopic = 33;

}
