// ODBC results read value by value from the statement's handle, each value in the form that keeps
// it exact: integers and doubles as such, binary as bytes, and everything else (decimals, dates,
// times with their fractions, texts) as the driver's own text. Qt's ODBC driver turns timestamps
// into QDateTime (milliseconds) and decimals into doubles, which the grid could not write back.
#include "core/workspace/ResultFetchNative.h"

#include "core/workspace/EngineCancel.h"
#include "core/base/SqlErrorText.h"
#include "core/base/VantryError.h"

#include <QSqlError>
#include <QSqlField>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QSqlResult>

namespace {

using SqlHandle = void *;
using SqlLen = long;

enum : short { SqlSuccess = 0, SqlSuccessWithInfo = 1, SqlNoData = 100 };
enum : short { CWideChar = -8, CBigInt = -25, CDouble = 8, CBinary = -2 };
constexpr SqlLen NullData = -1;

struct OdbcApi
{
    short (*fetch)(SqlHandle) = nullptr;
    short (*getData)(SqlHandle, unsigned short, short, void *, SqlLen, SqlLen *) = nullptr;

    bool load()
    {
        fetch = reinterpret_cast<decltype(fetch)>(ResultFetchNative::loadedSymbol("libodbc.so.2", "SQLFetch"));
        getData = reinterpret_cast<decltype(getData)>(ResultFetchNative::loadedSymbol("libodbc.so.2", "SQLGetData"));
        return fetch && getData;
    }
};

const OdbcApi *odbcApi()
{
    return ResultFetchNative::loadedApi<OdbcApi>();
}

enum class Read { Integer, Real, Bytes, Text };

// How a column of an ODBC SQL type is read, and the type name the rest of the program knows it by.
struct OdbcType
{
    Read read;
    QString name;
};

OdbcType odbcType(const QSqlField &field)
{
    switch (field.typeID()) {
    case -7: case -6: case 4: case 5: case -5: // bit, tinyint, integer, smallint, bigint
        return {Read::Integer, QString::fromLatin1(field.metaType().name())};
    case 6: case 7: case 8:                     // float, real, double
        return {Read::Real, QStringLiteral("double")};
    case -2: case -3: case -4:                  // binary, varbinary, long varbinary
        return {Read::Bytes, QStringLiteral("QByteArray")};
    case 2:
        return {Read::Text, QStringLiteral("numeric")};
    case 3:
        return {Read::Text, QStringLiteral("decimal")};
    default:
        // Dates and times keep the names that tell the write-back they are not compared with "=";
        // their values stay the driver's text, fractions included.
        return {Read::Text, QString::fromLatin1(field.metaType().name())};
    }
}

class OdbcCursor : public ResultCursor
{
public:
    OdbcCursor(const OdbcApi *api, const QSqlDatabase &db, EngineCancel *cancel)
        : m_api(api), m_query(db), m_cancel(cancel)
    {
        m_query.setForwardOnly(true);
    }
    ~OdbcCursor() override { close(); }

    // Runs the statement; false, before running it, when Qt's driver gives no statement handle.
    bool start(const QString &statement)
    {
        bool ok = m_query.prepare(statement);
        m_statement = ok ? handleOf(m_query) : nullptr;
        if (ok && !m_statement)
            return false;
        if (ok && m_cancel)
            m_cancel->watchStatement(&m_query);
        ok = ok && m_query.exec();
        if (!ok) {
            const QSqlError error = m_query.lastError();
            close();
            throw VantryError(sqlErrorText(error));
        }
        const QSqlRecord record = m_query.record();
        for (int col = 0; col < record.count(); ++col) {
            const OdbcType type = odbcType(record.field(col));
            m_reads.push_back(type.read);
            addColumn(record.field(col).name(), type.name);
        }
        m_open = m_query.isSelect();
        return true;
    }

    bool fetch(ResultTable &batch, qint64 maxRows) override
    {
        for (qint64 rows = 0; m_open && rows < maxRows; ++rows) {
            const short rc = m_api->fetch(m_statement);
            if (rc == SqlNoData) {
                close();
                return false;
            }
            if (rc != SqlSuccess && rc != SqlSuccessWithInfo)
                fail();
            for (int col = 0; col < int(m_reads.size()); ++col)
                readValue(batch.column(col), col);
        }
        return m_open;
    }

    void close() override
    {
        if (m_cancel)
            m_cancel->watchStatement(nullptr);
        m_cancel = nullptr;
        m_open = false;
        m_query.finish();
    }

    QString path() const override { return QStringLiteral("odbc"); }

private:
    static SqlHandle handleOf(const QSqlQuery &query)
    {
        const QVariant handle = query.result() ? query.result()->handle() : QVariant();
        return handle.isValid() ? *static_cast<const SqlHandle *>(handle.constData()) : nullptr;
    }

    [[noreturn]] void fail()
    {
        close();
        throw VantryError(QStringLiteral("The ODBC driver could not read the next row"));
    }

    void readValue(ResultColumn &column, int col)
    {
        const unsigned short number = static_cast<unsigned short>(col + 1);
        SqlLen indicator = 0;
        switch (m_reads[size_t(col)]) {
        case Read::Integer: {
            qint64 value = 0;
            check(m_api->getData(m_statement, number, CBigInt, &value, sizeof value, &indicator));
            return indicator == NullData ? column.appendNull() : column.appendInt(value);
        }
        case Read::Real: {
            double value = 0;
            check(m_api->getData(m_statement, number, CDouble, &value, sizeof value, &indicator));
            return indicator == NullData ? column.appendNull() : column.appendReal(value);
        }
        case Read::Bytes: {
            QByteArray bytes;
            if (!readLong(number, CBinary, bytes, 0))
                return column.appendNull();
            return column.appendBytes(bytes.constData(), size_t(bytes.size()));
        }
        case Read::Text: {
            QByteArray utf16;
            if (!readLong(number, CWideChar, utf16, 2))
                return column.appendNull();
            const QByteArray text = QString::fromUtf16(reinterpret_cast<const char16_t *>(utf16.constData()),
                                                       utf16.size() / 2)
                                        .toUtf8();
            return column.appendText(text.constData(), size_t(text.size()));
        }
        }
    }

    // Reads a value of any length in pieces; false for NULL. `terminator` is the size of the
    // zero the driver writes after each piece of text (none for binary).
    bool readLong(unsigned short number, short type, QByteArray &out, int terminator)
    {
        char piece[8192];
        for (;;) {
            SqlLen indicator = 0;
            const short rc = m_api->getData(m_statement, number, type, piece, sizeof piece, &indicator);
            if (rc == SqlNoData)
                return true;
            check(rc);
            if (indicator == NullData)
                return false;
            const bool more = rc == SqlSuccessWithInfo;
            const SqlLen room = SqlLen(sizeof piece) - terminator;
            out.append(piece, int(more || indicator < 0 || indicator > room ? room : indicator));
            if (!more)
                return true;
        }
    }

    void check(short rc)
    {
        if (rc != SqlSuccess && rc != SqlSuccessWithInfo)
            fail();
    }

    const OdbcApi *m_api;
    QSqlQuery m_query;
    EngineCancel *m_cancel;
    SqlHandle m_statement = nullptr;
    std::vector<Read> m_reads;
    bool m_open = false;
};

} // namespace

std::unique_ptr<ResultCursor> ResultFetchNative::openOdbc(const QSqlDatabase &db, const QString &statement,
                                                          EngineCancel *cancel)
{
    const OdbcApi *api = odbcApi();
    if (db.driverName() != QLatin1String("QODBC") || !api)
        return nullptr;
    auto cursor = std::make_unique<OdbcCursor>(api, db, cancel);
    if (!cursor->start(statement))
        return nullptr;
    return cursor;
}
