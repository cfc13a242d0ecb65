#include "mainwindow.h"

#include <QLabel>
#include <QStatusBar>
#include <QVBoxLayout>

namespace zarek {

MainWindow::MainWindow(const FirmProfile &profile, const DatabaseConfig &database, QWidget *parent)
    : QMainWindow(parent), m_profile(profile)
{
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(mainWindowTitle(profile));

    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    auto *firm = new QLabel(QStringLiteral("<h2>%1</h2><p>%2, %3</p>")
                                .arg(profile.UserName.toHtmlEscaped(), profile.UserAdres.toHtmlEscaped(),
                                     profile.UserCity.toHtmlEscaped()),
                            central);
    firm->setObjectName(QStringLiteral("lblFirm"));
    firm->setAlignment(Qt::AlignCenter);
    layout->addStretch();
    layout->addWidget(firm);
    layout->addStretch();
    setCentralWidget(central);

    statusBar()->showMessage(database.describe());
    resize(900, 600);
}

}
