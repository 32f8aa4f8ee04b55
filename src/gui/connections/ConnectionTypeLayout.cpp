#include "gui/connections/ConnectionTypeLayout.h"

#include "core/connections/ConnectionTypes.h"

#include <initializer_list>

const char *const kFirebirdFileFilter = "Interbase and Firebird Databases|*.gdb;*.ib;*.fdb|All files (*.*)|*.*";
const char *const kAllFilesFilter = "All files (*.*)|*.*";

namespace {
enum Index { Oracle, SqlServer, Odbc, MySql, PostgreSql, Firebird, OleDb, SqLite, SqlServerCe };

bool oneOf(int index, std::initializer_list<int> set)
{
    for (int i : set)
        if (i == index)
            return true;
    return false;
}
} // namespace

ConnectionTypeLayout connectionTypeLayout(int i)
{
    ConnectionTypeLayout l;
    l.port = oneOf(i, {MySql, PostgreSql});
    l.database = oneOf(i, {SqlServer, MySql, PostgreSql});
    l.user = !oneOf(i, {OleDb, SqLite, SqlServerCe});
    l.password = !oneOf(i, {OleDb, SqLite});
    l.memo = i == OleDb;
    l.file = oneOf(i, {Firebird, SqLite, SqlServerCe});
    l.stringLabel = l.memo || l.file;
    l.server = !l.stringLabel;
    l.connectAs = i == Oracle;
    l.unicode = oneOf(i, {MySql, PostgreSql, Firebird, SqLite});
    l.ssl = oneOf(i, {MySql, PostgreSql});
    l.compression = i == MySql;
    l.buildConnectionString = oneOf(i, {Odbc, OleDb});
    l.serverDropDown = !oneOf(i, {MySql, PostgreSql});
    l.passwordInUserCells = i == SqlServerCe;

    l.serverLabel = QStringLiteral("Server Name:");
    if (oneOf(i, {MySql, PostgreSql}))
        l.serverLabel = QStringLiteral("Host Name:");
    else if (i == Oracle)
        l.serverLabel = QStringLiteral("TNS Name:");
    else if (i == Odbc)
        l.serverLabel = QStringLiteral("ODBC DSN:");
    l.stringLabelText = l.file ? QStringLiteral("Database:") : QStringLiteral("Connection String:");

    // The Interbase filter stays on the box for every type that hides it.
    l.fileFilter = QString::fromLatin1(oneOf(i, {SqLite, SqlServerCe}) ? kAllFilesFilter : kFirebirdFileFilter);

    if (i == Odbc)
        l.serversKind = QStringLiteral("ODBC");
    else if (i == Oracle)
        l.serversKind = QStringLiteral("ORACLE");
    else if (i == SqlServer)
        l.serversKind = QStringLiteral("SQL SERVER");

    l.caption = ConnectionTypes::entryText(i) + QStringLiteral(" connection properties");
    return l;
}
