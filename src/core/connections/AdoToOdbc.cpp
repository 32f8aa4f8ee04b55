#include "core/connections/AdoToOdbc.h"

#include "core/base/VantryError.h"
#include "core/connections/DataLinkFile.h"
#include "core/connections/SqlServerDriver.h"

#include <QStringList>

namespace {

// A provider name matches a family when it is the base name or the base name with a version
// behind a dot ("MSDASQL", "MSDASQL.1"); compared ignoring case.
bool isProvider(const QString &name, const QString &base)
{
    return name.compare(base, Qt::CaseInsensitive) == 0
           || name.startsWith(base + QLatin1Char('.'), Qt::CaseInsensitive);
}

bool isYes(const QString &text)
{
    const QString t = text.trimmed();
    for (const char *yes : {"SSPI", "true", "yes"}) {
        if (t.compare(QLatin1String(yes), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

const QStringList kDataSource = {QStringLiteral("Data Source"), QStringLiteral("Server")};
const QStringList kUser = {QStringLiteral("User ID"), QStringLiteral("UID")};
const QStringList kPassword = {QStringLiteral("Password"), QStringLiteral("PWD")};

QString credentials(const QVector<AdoToOdbc::Pair> &pairs)
{
    return QStringLiteral(";UID=") + AdoToOdbc::odbcValue(AdoToOdbc::value(pairs, kUser))
           + QStringLiteral(";PWD=") + AdoToOdbc::odbcValue(AdoToOdbc::value(pairs, kPassword));
}

QString fromMsdasql(const QVector<AdoToOdbc::Pair> &pairs)
{
    bool hasExtended = false;
    const QString extended =
        AdoToOdbc::value(pairs, {QStringLiteral("Extended Properties")}, &hasExtended);
    if (hasExtended)
        return extended;
    bool hasDataSource = false;
    const QString dataSource = AdoToOdbc::value(pairs, kDataSource, &hasDataSource);
    if (!hasDataSource)
        throw VantryError(QStringLiteral("The ODBC connection string names neither a data source "
                                         "nor a driver."));
    return QStringLiteral("DSN=") + AdoToOdbc::odbcValue(dataSource) + credentials(pairs);
}

QString fromSqlServer(const QVector<AdoToOdbc::Pair> &pairs)
{
    QString odbc = SqlServerDriver::current().odbcDriverText + QStringLiteral(";Server=")
                   + AdoToOdbc::odbcValue(AdoToOdbc::value(pairs, kDataSource))
                   + QStringLiteral(";Database=")
                   + AdoToOdbc::odbcValue(AdoToOdbc::value(
                       pairs, {QStringLiteral("Initial Catalog"), QStringLiteral("Database")}));
    const bool integrated =
        isYes(AdoToOdbc::value(pairs, {QStringLiteral("Integrated Security"),
                                       QStringLiteral("Trusted_Connection")}));
    return odbc + (integrated ? QStringLiteral(";Trusted_Connection=Yes") : credentials(pairs));
}

} // namespace

QVector<AdoToOdbc::Pair> AdoToOdbc::parse(const QString &s)
{
    QVector<Pair> pairs;
    int i = 0;
    const int n = int(s.size());
    while (i < n) {
        const int equals = s.indexOf(QLatin1Char('='), i);
        const int semicolon = s.indexOf(QLatin1Char(';'), i);
        if (equals < 0 || (semicolon >= 0 && semicolon < equals)) {
            // A piece without "=": skip it.
            if (semicolon < 0)
                break;
            i = semicolon + 1;
            continue;
        }
        Pair pair;
        pair.key = s.mid(i, equals - i).trimmed();
        i = equals + 1;
        while (i < n && s.at(i).isSpace())
            ++i;
        const QChar open = i < n ? s.at(i) : QChar();
        if (open == QLatin1Char('"') || open == QLatin1Char('\'') || open == QLatin1Char('{')) {
            const QChar close = open == QLatin1Char('{') ? QLatin1Char('}') : open;
            ++i;
            while (i < n) {
                if (s.at(i) == close) {
                    if (i + 1 < n && s.at(i + 1) == close) {
                        pair.value += close;
                        i += 2;
                        continue;
                    }
                    ++i;
                    break;
                }
                pair.value += s.at(i++);
            }
            const int end = s.indexOf(QLatin1Char(';'), i);
            i = end < 0 ? n : end + 1;
        } else {
            const int end = s.indexOf(QLatin1Char(';'), i);
            pair.value = s.mid(i, (end < 0 ? n : end) - i).trimmed();
            i = end < 0 ? n : end + 1;
        }
        if (!pair.key.isEmpty())
            pairs.append(pair);
    }
    return pairs;
}

QString AdoToOdbc::value(const QVector<Pair> &pairs, const QStringList &keys, bool *present)
{
    for (const QString &key : keys) {
        for (int i = int(pairs.size()) - 1; i >= 0; --i) {
            if (pairs.at(i).key.compare(key, Qt::CaseInsensitive) == 0) {
                if (present)
                    *present = true;
                return pairs.at(i).value;
            }
        }
    }
    if (present)
        *present = false;
    return {};
}

QString AdoToOdbc::odbcValue(const QString &value)
{
    const bool needsBraces = value.contains(QLatin1Char(';')) || value.startsWith(QLatin1Char('{'))
                             || value != value.trimmed();
    if (!needsBraces)
        return value;
    return QLatin1Char('{') + QString(value).replace(QLatin1String("}"), QLatin1String("}}"))
           + QLatin1Char('}');
}

QString AdoToOdbc::adoValue(const QString &value)
{
    // The reader takes a leading quote, apostrophe or brace as an opening bracket, so a value
    // that starts with one is quoted too.
    const bool needsQuotes = value.contains(QLatin1Char(';')) || value.startsWith(QLatin1Char('"'))
                             || value.startsWith(QLatin1Char('\'')) || value.startsWith(QLatin1Char('{'))
                             || value != value.trimmed();
    if (!needsQuotes)
        return value;
    return QLatin1Char('"') + QString(value).replace(QLatin1String("\""), QLatin1String("\"\""))
           + QLatin1Char('"');
}

QString AdoToOdbc::translate(const QString &adoConnectionString)
{
    if (adoConnectionString.trimmed().isEmpty())
        throw VantryError(QStringLiteral("The connection string is empty."));
    const QVector<Pair> pairs = parse(adoConnectionString);
    bool hasFile = false;
    const QString fileName = value(pairs, {QStringLiteral("File Name")}, &hasFile).trimmed();
    if (hasFile) {
        // The data link file's string, with the other pieces after it: they win over the file's.
        const QString path = DataLinkFile::pathOf(fileName);
        QString inner = DataLinkFile::read(path);
        bool nested = false;
        value(parse(inner), {QStringLiteral("File Name")}, &nested);
        if (nested)
            throw VantryError(QStringLiteral("The data link file %1 names another data link file.").arg(path));
        for (const Pair &pair : pairs)
            if (pair.key.compare(QLatin1String("File Name"), Qt::CaseInsensitive) != 0)
                inner += QLatin1Char(';') + pair.key + QLatin1Char('=') + adoValue(pair.value);
        return translate(inner);
    }
    bool hasProvider = false;
    const QString provider = value(pairs, {QStringLiteral("Provider")}, &hasProvider).trimmed();

    if (!hasProvider || provider.isEmpty()) {
        bool odbc = false;
        value(pairs, {QStringLiteral("DRIVER"), QStringLiteral("DSN")}, &odbc);
        if (odbc)
            return adoConnectionString;
        return fromMsdasql(pairs); // ADO's default provider
    }
    if (isProvider(provider, QStringLiteral("MSDASQL")))
        return fromMsdasql(pairs);
    if (isProvider(provider, QStringLiteral("SQLOLEDB"))
        || provider.startsWith(QLatin1String("SQLNCLI"), Qt::CaseInsensitive)
        || isProvider(provider, QStringLiteral("MSOLEDBSQL")))
        return fromSqlServer(pairs);
    if (provider.startsWith(QLatin1String("Microsoft.Jet.OLEDB"), Qt::CaseInsensitive)
        || provider.startsWith(QLatin1String("Microsoft.ACE.OLEDB"), Qt::CaseInsensitive))
        return QStringLiteral("DRIVER={MDBTools};DBQ=")
               + odbcValue(value(pairs, {QStringLiteral("Data Source")}));
    if (provider.startsWith(QLatin1String("Microsoft.SQLSERVER.CE"), Qt::CaseInsensitive)
        || provider.startsWith(QLatin1String("Microsoft.SQLSERVER.MOBILE"), Qt::CaseInsensitive))
        throw VantryError(QStringLiteral("Microsoft SQL Server Compact is not available on this system"));
    throw VantryError(QStringLiteral("OLE DB provider '%1' is not available on this system").arg(provider));
}
