#pragma once
// The driver manager's list of installed drivers (odbcinst.ini): each driver's section holds the
// file of its library ("Driver") and other settings. Read to tell which driver a description
// stands for when the driver itself cannot say which keywords it takes.

#include <QMap>
#include <QString>
#include <QStringList>

namespace OdbcInstIni {

// The files unixODBC reads the drivers from, in order: the system file ($ODBCSYSINI, else
// "/etc", joined with $ODBCINSTINI, else "odbcinst.ini"; $ODBCINSTINI alone when it is an
// absolute path), then the user's "~/.odbcinst.ini".
QStringList files();

// The "key=value" entries of the section named `section` in an INI text; the section name is
// compared ignoring case, keys keep their spelling, blanks around keys and values are removed and
// lines beginning with ";" or "#" are comments. Empty when the section is missing.
QMap<QString, QString> section(const QString &iniText, const QString &section);

// The entries of the driver's section in the first of files() that has one.
QMap<QString, QString> driverEntry(const QString &driverName);

} // namespace OdbcInstIni
