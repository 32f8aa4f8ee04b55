#include "core/connections/DataLinkProperties.h"

const QVector<DataLinkProvider> &dataLinkProviders()
{
    static const QVector<DataLinkProvider> providers = {
        {QStringLiteral("MSDASQL.1"), QStringLiteral("Microsoft OLE DB Provider for ODBC Drivers"), false},
        {QStringLiteral("SQLOLEDB.1"), QStringLiteral("Microsoft OLE DB Provider for SQL Server"), false},
        {QStringLiteral("SQLNCLI11"), QStringLiteral("SQL Server Native Client 11.0"), false},
        {QStringLiteral("Microsoft.Jet.OLEDB.4.0"), QStringLiteral("Microsoft Jet 4.0 OLE DB Provider"), true},
        {QStringLiteral("Microsoft.ACE.OLEDB.12.0"),
         QStringLiteral("Microsoft Office 12.0 Access Database Engine OLE DB Provider"), true},
    };
    return providers;
}

namespace {

struct Field
{
    QString DataLinkProperties::*member;
    QStringList keys; // the first is the one written
};

const QVector<Field> &fields()
{
    static const QVector<Field> list = {
        {&DataLinkProperties::provider, {QStringLiteral("Provider")}},
        {&DataLinkProperties::password, {QStringLiteral("Password"), QStringLiteral("PWD")}},
        {&DataLinkProperties::userId, {QStringLiteral("User ID"), QStringLiteral("UID")}},
        {&DataLinkProperties::initialCatalog, {QStringLiteral("Initial Catalog"), QStringLiteral("Database")}},
        {&DataLinkProperties::dataSource, {QStringLiteral("Data Source"), QStringLiteral("Server")}},
        {&DataLinkProperties::extendedProperties, {QStringLiteral("Extended Properties")}},
    };
    return list;
}

bool isKey(const QString &key, const QStringList &keys)
{
    for (const QString &k : keys)
        if (key.compare(k, Qt::CaseInsensitive) == 0)
            return true;
    return false;
}

const QString kPersist = QStringLiteral("Persist Security Info");

} // namespace

DataLinkProperties DataLinkProperties::fromConnectionString(const QString &connectionString)
{
    DataLinkProperties p;
    for (const AdoToOdbc::Pair &pair : AdoToOdbc::parse(connectionString)) {
        bool known = isKey(pair.key, {kPersist});
        for (const Field &f : fields()) {
            if (isKey(pair.key, f.keys)) {
                p.*f.member = pair.value;
                known = true;
            }
        }
        if (!known)
            p.others << pair;
    }
    return p;
}

QString DataLinkProperties::connectionString() const
{
    QStringList pieces;
    for (const Field &f : fields()) {
        const QString &value = this->*f.member;
        if (!value.isEmpty())
            pieces << f.keys.first() + QLatin1Char('=') + AdoToOdbc::adoValue(value);
        if (f.member == &DataLinkProperties::password && !value.isEmpty())
            pieces << kPersist + QStringLiteral("=True");
    }
    for (const AdoToOdbc::Pair &pair : others)
        pieces << pair.key + QLatin1Char('=') + AdoToOdbc::adoValue(pair.value);
    return pieces.join(QLatin1Char(';'));
}
