#pragma once
#include <QString>

// The operating-system account name of the user running Vantry, read once per process, cut to
// 32 characters, and "Unknown" when the system gives no name. Written into CREATED_BY/CHANGED_BY.
namespace LogonUser {

QString name();

// Applies the length and "Unknown" rules to a raw account name.
QString normalise(const QString &raw);

// Replaces the process-wide name (tests, and a future "run as" option).
void setName(const QString &raw);

} // namespace LogonUser
