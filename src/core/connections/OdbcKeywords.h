#pragma once
// The connection keywords of an ODBC driver, for the form that stands in for the driver's own
// completion dialog (drivers on this system cannot show one): where they come from (the driver's
// SQLBrowseConnect answer, or a table of the common keywords of well-known drivers), and how a
// connection string is read into them and written from them.

#include <QString>
#include <QStringList>
#include <QVector>

struct OdbcKeyword
{
    enum class Kind { Text, Password, File };

    QString name;         // as written into the connection string ("Database", "UID")
    QString prompt;       // what the form shows beside the box
    Kind kind = Kind::Text;
    bool optional = false;
    QString defaultValue; // put in the box when the current string gives no value
    QStringList choices;  // fixed values offered in a list; empty for free text
    QStringList aliases;  // other spellings the driver accepts, for reading a string back
};

// A keyword and the value the user gave it.
struct OdbcKeywordValue
{
    QString name;
    QString value;
};

namespace OdbcKeywords {

// The keywords a SQLBrowseConnect answer asks for: "KEY:Prompt=?;*OPT:Opt={a,b};...". A leading
// "*" marks an optional keyword; "{a,b}" lists the values the driver accepts, "?" asks for any.
// Keywords the driver has already accepted ("KEY=value") are not asked for again.
QVector<OdbcKeyword> fromBrowseResult(const QString &answer);

// The common keywords of the drivers Vantry's install script sets up (SQLite3, PostgreSQL,
// MariaDB/MySQL, FreeTDS, mdbtools), found by the driver's name or, failing that, by the file
// name of its library (the "Driver" entry of odbcinst.ini). Any other driver gets a user name
// and a password: whatever else it needs goes into the additional keywords.
QVector<OdbcKeyword> commonKeywords(const QString &driverName, const QString &driverLibrary = QString());

// The values of `keywords` found in a connection string (names and aliases compared ignoring
// case; a keyword the string lacks gets its default). Pieces of the string that are none of the
// keywords, nor DRIVER or DSN, are returned in `others`, joined with ";", so nothing typed is lost.
QVector<OdbcKeywordValue> valuesFrom(const QString &connectionString, const QVector<OdbcKeyword> &keywords,
                                     QString *others = nullptr);

// "DRIVER={name}" followed by each non-empty value as ";KEY=value" (in braces where the value
// would break the string) and then the additional keywords as typed.
QString connectionString(const QString &driverName, const QVector<OdbcKeywordValue> &values,
                         const QString &others = QString());

// The pieces of an ODBC connection string between ";" as written; a ";" inside braces belongs
// to its value.
QStringList pieces(const QString &connectionString);

// The first keyword that must not be left empty but is: a file keyword that isn't optional (a
// file driver given no file opens one named after the whole connection string, creating it in
// the working folder). -1 when every such keyword has a value. `values` go with `keywords` by index.
int firstMissing(const QVector<OdbcKeyword> &keywords, const QVector<OdbcKeywordValue> &values);

// The driver named by a connection string's DRIVER keyword, braces removed; empty when none.
QString driverOf(const QString &connectionString);

// A completed connection string as a driver returned it, made fit to connect again: empty
// keywords are dropped (an empty DSN would ask for the default data source), and where neither
// a driver nor a data source is named any more (the SQLite3 driver answers "DSN=;Database=...")
// "DRIVER={name}" is put in front.
QString tidyCompleted(const QString &completed, const QString &driverName);

} // namespace OdbcKeywords
