#include "applibrary.h"

#include <QDir>
#include <QFileInfo>

#include <dlfcn.h>

namespace zarek {

namespace {

AppEntries &registered()
{
    static AppEntries entries;
    return entries;
}

// The main window's library stands beside this one, in the build tree as in the package.
QString appLibraryPath()
{
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void *>(&loadAppEntries), &info) || !info.dli_fname)
        return QStringLiteral("libzarek_app.so");
    return QFileInfo(QFile::decodeName(info.dli_fname)).absolutePath() + QStringLiteral("/libzarek_app.so");
}

}

void registerAppEntries(AppEntries entries)
{
    registered() = std::move(entries);
}

Checked<AppEntries> loadAppEntries()
{
    if (!registered().runMainWindow) {
        const QString path = appLibraryPath();
        // Kept loaded for the rest of the process, as a linked library would be.
        if (!dlopen(QFile::encodeName(path).constData(), RTLD_NOW | RTLD_GLOBAL) || !registered().runMainWindow) {
            const char *reason = dlerror();
            return UserMessage::twoLines(QStringLiteral("ГРЕШКА при стартиране!"),
                                         QStringLiteral("Програмата не може да зареди %1: %2")
                                             .arg(QDir::toNativeSeparators(path),
                                                  reason ? QString::fromLocal8Bit(reason) : QStringLiteral("непълна библиотека")),
                                         QStringLiteral("Моля, инсталирайте Зарек отново!"), UserMessage::Icon::Critical);
        }
    }
    return registered();
}

}
