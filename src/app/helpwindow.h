#pragma once

#include <QDialog>

class QTextBrowser;

namespace zarek {

// The program's help: a page per topic, links between them, the contents always a click away.
class HelpWindow : public QDialog {
    Q_OBJECT
public:
    explicit HelpWindow(QWidget *parent = nullptr);
    void showTopic(int number);
    int currentTopic() const { return m_current; }

private:
    QTextBrowser *m_browser = nullptr;
    int m_current = 0;
};

}
