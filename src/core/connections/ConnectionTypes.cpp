#include "core/connections/ConnectionTypes.h"

#include "core/base/VantryError.h"

namespace ConnectionTypes {

namespace {

const Entry kEntries[] = {
    {"Oracle Database", dsOracle, 331},
    {"Microsoft SQL Server", dsSqlServer, 321},
    {"ODBC", dsODBC, 341},
    {"MySQL", dsMySql, 343},
    {"PostgreSQL", dsPostgreSQL, 345},
    {"Interbase/Firebird", dsInterbase, 347},
    {"OleDB(ADO)", dsOleDb, 339},
    {"SQLite", dsSqLite, 349},
    {"Microsoft SQL Server CE", dsSqlServerCE, 323},
};

constexpr int kCount = int(sizeof kEntries / sizeof kEntries[0]);

} // namespace

int count() { return kCount; }

const Entry &entry(int index)
{
    if (index < 0 || index >= kCount)
        throw VantryError(QStringLiteral("There is no connection type number %1.").arg(index));
    return kEntries[index];
}

QString entryText(int index) { return QString::fromLatin1(entry(index).text); }

TDataSourceType typeOfIndex(int index) { return entry(index).type; }

int indexOfType(TDataSourceType type)
{
    for (int i = 0; i < kCount; ++i) {
        if (kEntries[i].type == type)
            return i;
    }
    return -1;
}

int codeOfType(TDataSourceType type)
{
    const int index = indexOfType(type);
    return index < 0 ? kFallbackCode : kEntries[index].code;
}

int indexOfCode(int code)
{
    for (int i = 0; i < kCount; ++i) {
        if (kEntries[i].code == code)
            return i;
    }
    return -1;
}

TDataSourceType typeOfCode(int code)
{
    const int index = indexOfCode(code);
    return index < 0 ? dsNone : kEntries[index].type;
}

} // namespace ConnectionTypes
