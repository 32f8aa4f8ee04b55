#include "core/workspace/ResultFetchMariaDb.h"

#include "core/workspace/ResultFetchNative.h"
#include "core/base/VantryError.h"

#include <QSqlDriver>
#include <cstdlib>

namespace {

struct MYSQL;
struct MYSQL_RES;

// The field description of the client library (MariaDB Connector/C 3), as far as it is read here.
struct MysqlField
{
    char *name;
    char *orgName;
    char *table;
    char *orgTable;
    char *db;
    char *catalog;
    char *def;
    unsigned long length;
    unsigned long maxLength;
    unsigned int nameLength;
    unsigned int orgNameLength;
    unsigned int tableLength;
    unsigned int orgTableLength;
    unsigned int dbLength;
    unsigned int catalogLength;
    unsigned int defLength;
    unsigned int flags;
    unsigned int decimals;
    unsigned int charsetnr;
    int type;
    void *extension;
};

enum FieldType {
    TypeDecimal = 0, TypeTiny = 1, TypeShort = 2, TypeLong = 3, TypeFloat = 4, TypeDouble = 5,
    TypeNull = 6, TypeTimestamp = 7, TypeLongLong = 8, TypeInt24 = 9, TypeDate = 10, TypeTime = 11,
    TypeDateTime = 12, TypeYear = 13, TypeNewDate = 14, TypeVarchar = 15, TypeBit = 16,
    TypeJson = 245, TypeNewDecimal = 246, TypeEnum = 247, TypeSet = 248, TypeTinyBlob = 249,
    TypeMediumBlob = 250, TypeLongBlob = 251, TypeBlob = 252, TypeVarString = 253, TypeString = 254,
    TypeGeometry = 255
};
constexpr unsigned int UnsignedFlag = 32;
constexpr unsigned int BinaryCharset = 63;

struct MariaDbApi
{
    int (*realQuery)(MYSQL *, const char *, unsigned long) = nullptr;
    MYSQL_RES *(*useResult)(MYSQL *) = nullptr;
    unsigned int (*fieldCount)(MYSQL *) = nullptr;
    unsigned int (*numFields)(MYSQL_RES *) = nullptr;
    MysqlField *(*fetchFieldDirect)(MYSQL_RES *, unsigned int) = nullptr;
    char **(*fetchRow)(MYSQL_RES *) = nullptr;
    unsigned long *(*fetchLengths)(MYSQL_RES *) = nullptr;
    void (*freeResult)(MYSQL_RES *) = nullptr;
    const char *(*error)(MYSQL *) = nullptr;
    unsigned int (*errorNumber)(MYSQL *) = nullptr;

    bool load()
    {
        const char *lib = "libmariadb.so.3";
        auto get = [lib](auto &fn, const char *name) {
            fn = reinterpret_cast<std::remove_reference_t<decltype(fn)>>(ResultFetchNative::loadedSymbol(lib, name));
            return fn != nullptr;
        };
        return get(realQuery, "mysql_real_query") && get(useResult, "mysql_use_result")
               && get(fieldCount, "mysql_field_count") && get(numFields, "mysql_num_fields")
               && get(fetchFieldDirect, "mysql_fetch_field_direct") && get(fetchRow, "mysql_fetch_row")
               && get(fetchLengths, "mysql_fetch_lengths") && get(freeResult, "mysql_free_result")
               && get(error, "mysql_error") && get(errorNumber, "mysql_errno");
    }
};

const MariaDbApi *mariaDbApi()
{
    return ResultFetchNative::loadedApi<MariaDbApi>();
}

enum class Decode { Integer, Unsigned, Real, Bit, Bytes, Text };

struct ColumnType
{
    Decode decode;
    const char *name;
};

bool isStringType(int type)
{
    return type == TypeVarchar || type == TypeVarString || type == TypeString
           || (type >= TypeTinyBlob && type <= TypeBlob);
}

ColumnType columnType(const MysqlField &field)
{
    const bool binary = field.charsetnr == BinaryCharset;
    const bool unsignedInt = field.flags & UnsignedFlag;
    switch (field.type) {
    case TypeTiny: return {Decode::Integer, "tinyint"};
    case TypeShort: return {Decode::Integer, "smallint"};
    case TypeInt24: return {Decode::Integer, "mediumint"};
    case TypeLong: return {Decode::Integer, "int"};
    case TypeLongLong: return {unsignedInt ? Decode::Unsigned : Decode::Integer, "bigint"};
    case TypeYear: return {Decode::Integer, "year"};
    case TypeFloat: return {Decode::Real, "float"};
    case TypeDouble: return {Decode::Real, "double"};
    case TypeDecimal:
    case TypeNewDecimal: return {Decode::Text, "decimal"};
    case TypeBit: return {Decode::Bit, "bit"};
    case TypeDate:
    case TypeNewDate: return {Decode::Text, "date"};
    case TypeTime: return {Decode::Text, "time"};
    case TypeDateTime: return {Decode::Text, "datetime"};
    case TypeTimestamp: return {Decode::Text, "timestamp"};
    case TypeJson: return {Decode::Text, "json"};
    case TypeEnum: return {Decode::Text, "enum"};
    case TypeSet: return {Decode::Text, "set"};
    case TypeGeometry: return {Decode::Bytes, "geometry"};
    case TypeTinyBlob:
    case TypeMediumBlob:
    case TypeLongBlob:
    case TypeBlob: return binary ? ColumnType{Decode::Bytes, "blob"} : ColumnType{Decode::Text, "text"};
    case TypeString: return binary ? ColumnType{Decode::Bytes, "binary"} : ColumnType{Decode::Text, "char"};
    case TypeVarchar:
    case TypeVarString: return binary ? ColumnType{Decode::Bytes, "varbinary"} : ColumnType{Decode::Text, "varchar"};
    default: return {isStringType(field.type) && binary ? Decode::Bytes : Decode::Text, "null"};
    }
}

qint64 bitValue(const char *bytes, unsigned long size)
{
    // BIT(n) arrives as its bytes, most significant first.
    quint64 value = 0;
    for (unsigned long i = 0; i < size; ++i)
        value = (value << 8) | quint64(static_cast<unsigned char>(bytes[i]));
    return qint64(value);
}

// Rows streamed from the server (mysql_use_result): nothing else may run on the connection until
// the cursor is closed, which reads and drops the rows not fetched.
class MariaDbCursor : public ResultCursor
{
public:
    MariaDbCursor(const MariaDbApi *api, MYSQL *mysql, MYSQL_RES *result)
        : m_api(api), m_mysql(mysql), m_result(result)
    {
        const unsigned int fields = result ? api->numFields(result) : 0;
        for (unsigned int col = 0; col < fields; ++col) {
            const MysqlField *field = api->fetchFieldDirect(result, col);
            const ColumnType type = columnType(*field);
            m_decode.push_back(type.decode);
            addColumn(QString::fromUtf8(field->name, int(field->nameLength)), QString::fromLatin1(type.name));
        }
    }
    ~MariaDbCursor() override { close(); }

    bool fetch(ResultTable &batch, qint64 maxRows) override
    {
        if (!m_result)
            return false;
        for (qint64 rows = 0; rows < maxRows; ++rows) {
            char **row = m_api->fetchRow(m_result);
            if (!row) {
                const bool failed = m_api->errorNumber(m_mysql) != 0;
                const QString message = QString::fromUtf8(m_api->error(m_mysql));
                close();
                if (failed)
                    throw VantryError(message);
                return false;
            }
            appendRow(batch, row, m_api->fetchLengths(m_result));
        }
        return true;
    }

    void close() override
    {
        if (m_result)
            m_api->freeResult(m_result);
        m_result = nullptr;
    }

    QString path() const override { return QStringLiteral("mariadb"); }

private:
    void appendRow(ResultTable &batch, char **row, const unsigned long *lengths)
    {
        for (size_t col = 0; col < m_decode.size(); ++col) {
            ResultColumn &column = batch.column(int(col));
            const char *text = row[col];
            if (!text) {
                column.appendNull();
                continue;
            }
            switch (m_decode[col]) {
            case Decode::Integer:
                column.appendInt(std::strtoll(text, nullptr, 10));
                break;
            case Decode::Unsigned: {
                const quint64 value = std::strtoull(text, nullptr, 10);
                if (value <= quint64(std::numeric_limits<qint64>::max()))
                    column.appendInt(qint64(value));
                else
                    column.appendText(text, lengths[col]);
                break;
            }
            case Decode::Real:
                column.appendReal(std::strtod(text, nullptr));
                break;
            case Decode::Bit:
                column.appendInt(bitValue(text, lengths[col]));
                break;
            case Decode::Bytes:
                column.appendBytes(text, lengths[col]);
                break;
            case Decode::Text:
                column.appendText(text, lengths[col]);
                break;
            }
        }
    }

    const MariaDbApi *m_api;
    MYSQL *m_mysql;
    MYSQL_RES *m_result;
    std::vector<Decode> m_decode;
};

} // namespace

std::unique_ptr<ResultCursor> ResultFetchMariaDb::open(const QSqlDatabase &db, const QString &statement)
{
    const QVariant handle = db.driver()->handle();
    if (!handle.isValid()
        || (qstrcmp(handle.typeName(), "MYSQL*") != 0 && qstrcmp(handle.typeName(), "st_mysql*") != 0))
        return nullptr;
    MYSQL *mysql = *static_cast<MYSQL *const *>(handle.constData());
    const MariaDbApi *api = mariaDbApi();
    if (!mysql || !api)
        return nullptr;

    const QByteArray sql = statement.toUtf8();
    if (api->realQuery(mysql, sql.constData(), static_cast<unsigned long>(sql.size())) != 0)
        throw VantryError(QString::fromUtf8(api->error(mysql)));
    MYSQL_RES *result = api->useResult(mysql);
    if (!result && api->fieldCount(mysql) != 0)
        throw VantryError(QString::fromUtf8(api->error(mysql)));
    // A statement without rows gives a cursor without columns.
    return std::make_unique<MariaDbCursor>(api, mysql, result);
}
