#include "about.h"

#include "forms/messageservice.h"
#include "core/version.h"

#include <QDialogButtonBox>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QSysInfo>
#include <QVBoxLayout>
#include <QtGlobal>

namespace zarek {

namespace {

QLabel *label(const QString &name, const QString &text, QWidget *parent, int pointSize = 0, bool bold = false)
{
    auto *l = new QLabel(text, parent);
    l->setObjectName(name);
    QFont font = l->font();
    if (pointSize > 0)
        font.setPointSize(pointSize);
    font.setBold(bold);
    l->setFont(font);
    return l;
}

}

QString signedInSystemUser()
{
    QString user = qEnvironmentVariable("USER");
    if (user.isEmpty())
        user = qEnvironmentVariable("USERNAME");
    return user;
}

QString About::systemInformation(const DatabaseConfig &database)
{
    return QStringLiteral("Зарек %1\nQt %2\n%3\nБаза данни: %4")
        .arg(version::text(), QString::fromLatin1(qVersion()), QSysInfo::prettyProductName(), database.describe());
}

About::About(const DatabaseConfig &database, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("About"));
    setWindowTitle(QStringLiteral("Зарек – За програмата"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(label(QStringLiteral("lblTitle"), QStringLiteral("Зарек"), this, 18, true));
    layout->addWidget(label(QStringLiteral("lblVersion"), QStringLiteral("Версия ") + version::text(), this));
    layout->addWidget(label(QStringLiteral("lblDescription"),
                            QStringLiteral("        Програма за организация на дейността в транспортната фирма"), this));
    QLabel *web = label(QStringLiteral("Label1"),
                        QStringLiteral("<a href=\"%1\">%1</a>").arg(version::homePage()), this);
    web->setOpenExternalLinks(true);
    layout->addWidget(web);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    ok->setObjectName(QStringLiteral("cmdOK"));
    ok->setDefault(true);
    QPushButton *info = buttons->addButton(QStringLiteral("Система..."), QDialogButtonBox::ActionRole);
    info->setObjectName(QStringLiteral("cmdSysInfo"));
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(info, &QPushButton::clicked, this, [database] {
        MessageService::instance().inform({QStringLiteral("Информация за системата"), systemInformation(database),
                                           UserMessage::Icon::Information});
    });
    layout->addWidget(buttons);
}

Splash::Splash(QWidget *parent) : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint)
{
    setObjectName(QStringLiteral("Splash"));
    auto *frame = new QFrame(this);
    frame->setObjectName(QStringLiteral("fraMainFrame"));
    frame->setFrameShape(QFrame::Box);
    auto *inner = new QVBoxLayout(frame);
    inner->addWidget(label(QStringLiteral("lblProductName"), QStringLiteral("Зарек"), frame, 24, true));
    inner->addWidget(label(QStringLiteral("lblVersion"), QStringLiteral("Версия ") + version::text(), frame));
    inner->addWidget(label(QStringLiteral("lblCompanyProduct"), QString(), frame));
    inner->addWidget(label(QStringLiteral("lblPlatform"), QSysInfo::prettyProductName(), frame));
    inner->addWidget(label(QStringLiteral("lblSignedUser"), QStringLiteral("Потребител: ") + signedInSystemUser(), frame));
    inner->addWidget(label(QStringLiteral("lblCompany"), QStringLiteral("Orvenn Ltd."), frame));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(frame);
    setMinimumWidth(360);
}

}
