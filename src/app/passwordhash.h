#pragma once

#include <QString>

// Passwords are kept as salted Argon2id hashes that carry their own parameters.
namespace zarek {

QString hashPassword(const QString &password);
bool verifyPassword(const QString &storedHash, const QString &password);
// True when a stored hash was made with weaker parameters than today's and should be renewed.
bool passwordNeedsRehash(const QString &storedHash);
// The hash of no one's password, made with today's parameters: the sign-in verifies against it
// when no user has the name given, so that an unknown name takes as long as a wrong password.
QString dummyPasswordHash();

}
