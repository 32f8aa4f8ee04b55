#include "core/connections/OdbcKeywords.h"

#include "core/connections/AdoToOdbc.h"

namespace OdbcKeywords {

namespace {

using Kind = OdbcKeyword::Kind;

OdbcKeyword keyword(const char *name, const char *prompt, Kind kind = Kind::Text, bool optional = false,
                    const char *defaultValue = "", QStringList choices = {}, QStringList aliases = {})
{
    return OdbcKeyword{QString::fromLatin1(name), QString::fromLatin1(prompt), kind, optional,
                       QString::fromLatin1(defaultValue), std::move(choices), std::move(aliases)};
}

OdbcKeyword user(QStringList aliases = {}, bool optional = false)
{
    return keyword("UID", "User name:", Kind::Text, optional, "", {}, std::move(aliases));
}

OdbcKeyword password(QStringList aliases = {}, bool optional = false)
{
    return keyword("PWD", "Password:", Kind::Password, optional, "", {}, std::move(aliases));
}

QVector<OdbcKeyword> sqlite()
{
    const QStringList flag = {QString(), QStringLiteral("0"), QStringLiteral("1")};
    return {keyword("Database", "Database file:", Kind::File),
            keyword("Timeout", "Busy time-out (ms):", Kind::Text, true),
            keyword("JournalMode", "Journal mode:", Kind::Text, true, "",
                    {QString(), "DELETE", "TRUNCATE", "PERSIST", "MEMORY", "WAL", "OFF"}),
            keyword("FKSupport", "Foreign keys (1 = on):", Kind::Text, true, "", flag),
            keyword("NoCreat", "Don't create a missing file (1 = on):", Kind::Text, true, "", flag)};
}

QVector<OdbcKeyword> postgres()
{
    return {keyword("Server", "Server:", Kind::Text, false, "localhost", {}, {"Servername"}),
            keyword("Port", "Port:", Kind::Text, false, "5432"),
            keyword("Database", "Database:"),
            user({"Username", "User"}),
            password({"Password"}),
            keyword("SSLmode", "SSL mode:", Kind::Text, true, "",
                    {QString(), "disable", "allow", "prefer", "require", "verify-ca", "verify-full"})};
}

QVector<OdbcKeyword> mariadb()
{
    return {keyword("Server", "Server:", Kind::Text, false, "localhost"),
            keyword("Port", "Port:", Kind::Text, false, "3306"),
            keyword("Database", "Database:", Kind::Text, false, "", {}, {"DB"}),
            user({"User"}),
            password({"Password"}),
            keyword("Charset", "Character set:", Kind::Text, true)};
}

QVector<OdbcKeyword> freetds()
{
    return {keyword("Server", "Server:", Kind::Text, false, "", {}, {"Servername"}),
            keyword("Port", "Port:", Kind::Text, false, "1433"),
            keyword("Database", "Database:"),
            user(),
            password(),
            keyword("TDS_Version", "TDS version:", Kind::Text, true, "",
                    {QString(), "7.0", "7.1", "7.2", "7.3", "7.4", "8.0"})};
}

QVector<OdbcKeyword> microsoftSqlServer()
{
    const QStringList yesNo = {QString(), QStringLiteral("yes"), QStringLiteral("no")};
    return {keyword("Server", "Server (host,port):"),
            keyword("Database", "Database:"),
            user(),
            password(),
            keyword("Encrypt", "Encrypt:", Kind::Text, true, "", {QString(), "yes", "no", "strict"}),
            keyword("TrustServerCertificate", "Trust the server's certificate:", Kind::Text, true, "", yesNo)};
}

QVector<OdbcKeyword> mdbtools()
{
    return {keyword("DBQ", "Access database file:", Kind::File, false, "", {}, {"Database"})};
}

struct Family
{
    QStringList nameParts;    // found in the driver's name
    QStringList libraryParts; // found in the file name of its library
    QVector<OdbcKeyword> (*keywords)();
};

const Family kFamilies[] = {
    {{"SQLite"}, {"sqliteodbc", "sqlite3odbc"}, sqlite},
    {{"PostgreSQL", "Postgres"}, {"psqlodbc"}, postgres},
    {{"MariaDB", "MySQL"}, {"maodbc", "myodbc"}, mariadb},
    {{"FreeTDS"}, {"tdsodbc"}, freetds},
    {{"SQL Server"}, {"msodbcsql"}, microsoftSqlServer},
    {{"MDBTools", "mdb"}, {"mdbodbc", "mdbtools"}, mdbtools},
};

bool containsAny(const QString &text, const QStringList &parts)
{
    for (const QString &part : parts)
        if (!text.isEmpty() && text.contains(part, Qt::CaseInsensitive))
            return true;
    return false;
}

bool named(const OdbcKeyword &k, const QString &key)
{
    if (k.name.compare(key, Qt::CaseInsensitive) == 0)
        return true;
    for (const QString &alias : k.aliases)
        if (alias.compare(key, Qt::CaseInsensitive) == 0)
            return true;
    return false;
}

bool isDriverOrDsn(const QString &key)
{
    return key.compare(QLatin1String("DRIVER"), Qt::CaseInsensitive) == 0
           || key.compare(QLatin1String("DSN"), Qt::CaseInsensitive) == 0;
}

// The pieces of an ODBC connection string between ";" as written; a ";" inside braces belongs
// to its value.
QStringList rawPieces(const QString &text)
{
    QStringList pieces;
    QString piece;
    int depth = 0;
    for (const QChar c : text) {
        if (c == QLatin1Char('{'))
            ++depth;
        else if (c == QLatin1Char('}') && depth > 0)
            --depth;
        if (c == QLatin1Char(';') && depth == 0) {
            pieces << piece;
            piece.clear();
        } else {
            piece += c;
        }
    }
    pieces << piece;
    return pieces;
}

QString keyOf(const QString &piece) { return piece.section(QLatin1Char('='), 0, 0).trimmed(); }

QString valueOf(const QString &piece)
{
    const int equals = int(piece.indexOf(QLatin1Char('=')));
    return equals < 0 ? QString() : piece.mid(equals + 1).trimmed();
}

} // namespace

QVector<OdbcKeyword> fromBrowseResult(const QString &answer)
{
    QVector<OdbcKeyword> keywords;
    for (QString piece : rawPieces(answer)) {
        piece = piece.trimmed();
        const int equals = int(piece.indexOf(QLatin1Char('=')));
        if (equals <= 0)
            continue;
        QString head = piece.left(equals).trimmed();
        const QString value = piece.mid(equals + 1).trimmed();
        const bool asked = value == QLatin1String("?") || value.startsWith(QLatin1Char('{'));
        if (!asked)
            continue; // the driver already holds a value for it
        OdbcKeyword k;
        if (head.startsWith(QLatin1Char('*'))) {
            k.optional = true;
            head = head.mid(1).trimmed();
        }
        const int colon = int(head.indexOf(QLatin1Char(':')));
        k.name = colon < 0 ? head : head.left(colon).trimmed();
        k.prompt = (colon < 0 ? k.name : head.mid(colon + 1).trimmed()) + QLatin1Char(':');
        if (k.name.isEmpty() || isDriverOrDsn(k.name))
            continue;
        if (value.startsWith(QLatin1Char('{'))) {
            QString list = value.mid(1);
            if (list.endsWith(QLatin1Char('}')))
                list.chop(1);
            if (k.optional)
                k.choices << QString();
            for (const QString &choice : list.split(QLatin1Char(',')))
                k.choices << choice.trimmed();
        }
        if (k.name.compare(QLatin1String("PWD"), Qt::CaseInsensitive) == 0
            || k.name.compare(QLatin1String("Password"), Qt::CaseInsensitive) == 0)
            k.kind = Kind::Password;
        keywords << k;
    }
    return keywords;
}

QVector<OdbcKeyword> commonKeywords(const QString &driverName, const QString &driverLibrary)
{
    for (const Family &family : kFamilies)
        if (containsAny(driverName, family.nameParts))
            return family.keywords();
    for (const Family &family : kFamilies)
        if (containsAny(driverLibrary, family.libraryParts))
            return family.keywords();
    return {user({}, true), password({}, true)};
}

QVector<OdbcKeywordValue> valuesFrom(const QString &connectionString, const QVector<OdbcKeyword> &keywords,
                                     QString *others)
{
    QVector<OdbcKeywordValue> values;
    for (const OdbcKeyword &k : keywords)
        values << OdbcKeywordValue{k.name, k.defaultValue};
    QStringList rest;
    for (const AdoToOdbc::Pair &pair : AdoToOdbc::parse(connectionString)) {
        if (isDriverOrDsn(pair.key))
            continue;
        bool known = false;
        for (int i = 0; i < keywords.size(); ++i) {
            if (named(keywords.at(i), pair.key)) {
                values[i].value = pair.value;
                known = true;
            }
        }
        if (!known)
            rest << pair.key + QLatin1Char('=') + AdoToOdbc::odbcValue(pair.value);
    }
    if (others)
        *others = rest.join(QLatin1Char(';'));
    return values;
}

QString connectionString(const QString &driverName, const QVector<OdbcKeywordValue> &values, const QString &others)
{
    QString text = QStringLiteral("DRIVER={") + driverName + QLatin1Char('}');
    for (const OdbcKeywordValue &v : values)
        if (!v.value.isEmpty())
            text += QLatin1Char(';') + v.name + QLatin1Char('=') + AdoToOdbc::odbcValue(v.value);
    for (const QString &piece : rawPieces(others))
        if (!piece.trimmed().isEmpty())
            text += QLatin1Char(';') + piece.trimmed();
    return text;
}

int firstMissing(const QVector<OdbcKeyword> &keywords, const QVector<OdbcKeywordValue> &values)
{
    for (int i = 0; i < keywords.size() && i < values.size(); ++i)
        if (keywords.at(i).kind == Kind::File && !keywords.at(i).optional && values.at(i).value.trimmed().isEmpty())
            return i;
    return -1;
}

QString driverOf(const QString &connectionString)
{
    return AdoToOdbc::value(AdoToOdbc::parse(connectionString), {QStringLiteral("DRIVER")}).trimmed();
}

QString tidyCompleted(const QString &completed, const QString &driverName)
{
    QStringList kept;
    bool named = false;
    for (const QString &piece : rawPieces(completed)) {
        if (valueOf(piece).isEmpty())
            continue;
        named = named || isDriverOrDsn(keyOf(piece));
        kept << piece.trimmed();
    }
    if (!named)
        kept.prepend(QStringLiteral("DRIVER={") + driverName + QLatin1Char('}'));
    return kept.join(QLatin1Char(';'));
}

QStringList pieces(const QString &connectionString) { return rawPieces(connectionString); }

} // namespace OdbcKeywords
