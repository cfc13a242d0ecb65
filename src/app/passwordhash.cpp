#include "passwordhash.h"

#include <sodium.h>

#include <QByteArray>

namespace zarek {

namespace {

bool sodiumReady()
{
    static const bool ready = sodium_init() >= 0;
    return ready;
}

constexpr unsigned long long opsLimit = crypto_pwhash_OPSLIMIT_INTERACTIVE;
constexpr size_t memLimit = crypto_pwhash_MEMLIMIT_INTERACTIVE;

}

QString hashPassword(const QString &password)
{
    if (!sodiumReady())
        return {};
    const QByteArray utf8 = password.toUtf8();
    char out[crypto_pwhash_STRBYTES];
    if (crypto_pwhash_str(out, utf8.constData(), static_cast<unsigned long long>(utf8.size()), opsLimit, memLimit) != 0)
        return {};
    return QString::fromLatin1(out);
}

bool verifyPassword(const QString &storedHash, const QString &password)
{
    if (!sodiumReady() || storedHash.isEmpty())
        return false;
    const QByteArray hash = storedHash.toLatin1();
    const QByteArray utf8 = password.toUtf8();
    return crypto_pwhash_str_verify(hash.constData(), utf8.constData(),
                                    static_cast<unsigned long long>(utf8.size())) == 0;
}

QString dummyPasswordHash()
{
    // Of random bytes that were then thrown away; its parameters must stay today's (a test sees to it).
    return QStringLiteral("$argon2id$v=19$m=65536,t=2,p=1$wArgAO7pYfFtYMTKSzhQQg$"
                          "Sfu6q8mRxD8SH7YKmmlv/61JmRwieVgHiwU8fP71INU");
}

bool passwordNeedsRehash(const QString &storedHash)
{
    if (!sodiumReady())
        return false;
    const QByteArray hash = storedHash.toLatin1();
    return crypto_pwhash_str_needs_rehash(hash.constData(), opsLimit, memLimit) != 0;
}

}
