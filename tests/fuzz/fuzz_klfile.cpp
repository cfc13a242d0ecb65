// libFuzzer target: the loader of statement files (.kl). Any bytes as a file: the loader must
// never crash, hang or misbehave, and a file it accepts must hold only what the statement screen
// itself would hold. Seeds: tests/fuzz/corpus-kl (a sound statement file with small pages).
#include "fuzz/klfileinvariants.h"
#include "settlement/klfile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cstddef>
#include <cstdint>
#include <cstdio>

using namespace zarek;

namespace {

QString scratchPath()
{
    static const QString path =
        QDir::temp().filePath(QStringLiteral("zarek-fuzz-kl-%1.kl").arg(QCoreApplication::applicationPid()));
    return path;
}

}

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    // The SQL drivers are plugins: they are found through an application object.
    static QCoreApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = scratchPath();
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return 0;
        file.write(reinterpret_cast<const char *>(data), static_cast<qint64>(size));
    }
    const Checked<StatementFile> read = readStatementFile(path, [](int done, int total) { return done <= total; });
    if (read) {
        const QString broken = klcheck::brokenRule(read.value());
        if (!broken.isEmpty()) {
            fprintf(stderr, "accepted a value the screen refuses: %s\n", qPrintable(broken));
            __builtin_trap();
        }
    } else if (read.message().text.isEmpty()) {
        __builtin_trap();  // every refusal says why
    }
    QFile::remove(path);
    return 0;
}
