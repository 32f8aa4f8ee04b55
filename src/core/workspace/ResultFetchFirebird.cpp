#include "core/workspace/ResultFetchFirebird.h"

#include "core/workspace/ResultFetchNative.h"
#include "core/base/VantryError.h"

#include <QDate>
#include <QSqlDriver>
#include <cstring>
#include <vector>

namespace {

// The client library's C interface, as far as the fetch uses it (Firebird 3 on a 64-bit system).
using IscStatus = intptr_t;
using Handle = unsigned int;

struct XsqlVar
{
    short sqltype;
    short sqlscale;
    short sqlsubtype;
    short sqllen;
    char *sqldata;
    short *sqlind;
    short sqlnameLength;
    char sqlname[32];
    short relnameLength;
    char relname[32];
    short ownnameLength;
    char ownname[32];
    short aliasnameLength;
    char aliasname[32];
};

struct Xsqlda
{
    short version;
    char sqldaid[8];
    int sqldabc;
    short sqln;
    short sqld;
    XsqlVar sqlvar[1];
};

constexpr short SqldaVersion1 = 1;
constexpr unsigned short Dialect3 = 3;
constexpr unsigned short DsqlDrop = 2;
constexpr long FetchEnd = 100;
constexpr IscStatus SegmentPartial = 335544366;
constexpr char InfoStatementType = 21;
constexpr char InfoEnd = 1;
constexpr int StatementSelect = 1;
constexpr int StatementSelectForUpdate = 12;

enum SqlType {
    SqlVarying = 448, SqlText = 452, SqlDouble = 480, SqlFloat = 482, SqlLong = 496, SqlShort = 500,
    SqlTimestamp = 510, SqlBlob = 520, SqlDFloat = 530, SqlTime = 560, SqlDate = 570, SqlInt64 = 580,
    SqlBoolean = 32764, SqlNull = 32766
};
constexpr int CharsetOctets = 1;

struct FirebirdApi
{
    IscStatus (*startTransaction)(IscStatus *, Handle *, short, ...) = nullptr;
    IscStatus (*commit)(IscStatus *, Handle *) = nullptr;
    IscStatus (*rollback)(IscStatus *, Handle *) = nullptr;
    IscStatus (*allocate)(IscStatus *, Handle *, Handle *) = nullptr;
    IscStatus (*prepare)(IscStatus *, Handle *, Handle *, unsigned short, const char *, unsigned short, Xsqlda *) = nullptr;
    IscStatus (*describe)(IscStatus *, Handle *, unsigned short, Xsqlda *) = nullptr;
    IscStatus (*sqlInfo)(IscStatus *, Handle *, short, const char *, short, char *) = nullptr;
    IscStatus (*execute)(IscStatus *, Handle *, Handle *, unsigned short, const Xsqlda *) = nullptr;
    IscStatus (*fetch)(IscStatus *, Handle *, unsigned short, const Xsqlda *) = nullptr;
    IscStatus (*freeStatement)(IscStatus *, Handle *, unsigned short) = nullptr;
    IscStatus (*openBlob)(IscStatus *, Handle *, Handle *, Handle *, void *, unsigned short, const unsigned char *) = nullptr;
    IscStatus (*getSegment)(IscStatus *, Handle *, unsigned short *, unsigned short, char *) = nullptr;
    IscStatus (*closeBlob)(IscStatus *, Handle *) = nullptr;
    int (*interpret)(char *, unsigned int, const IscStatus **) = nullptr;

    bool load()
    {
        const char *lib = "libfbclient.so.2";
        auto get = [lib](auto &fn, const char *name) {
            fn = reinterpret_cast<std::remove_reference_t<decltype(fn)>>(ResultFetchNative::loadedSymbol(lib, name));
            return fn != nullptr;
        };
        return get(startTransaction, "isc_start_transaction") && get(commit, "isc_commit_transaction")
               && get(rollback, "isc_rollback_transaction") && get(allocate, "isc_dsql_allocate_statement")
               && get(prepare, "isc_dsql_prepare") && get(describe, "isc_dsql_describe")
               && get(sqlInfo, "isc_dsql_sql_info") && get(execute, "isc_dsql_execute")
               && get(fetch, "isc_dsql_fetch") && get(freeStatement, "isc_dsql_free_statement")
               && get(openBlob, "isc_open_blob2") && get(getSegment, "isc_get_segment")
               && get(closeBlob, "isc_close_blob") && get(interpret, "fb_interpret");
    }
};

const FirebirdApi *firebirdApi()
{
    return ResultFetchNative::loadedApi<FirebirdApi>();
}

// One statement's client state; releases statement and transaction however the fetch ends.
class Session
{
public:
    Session(const FirebirdApi *api, Handle db) : m_db(db), m_api(api) {}
    ~Session()
    {
        IscStatus status[20];
        if (m_statement)
            m_api->freeStatement(status, &m_statement, DsqlDrop);
        if (m_transaction)
            m_api->rollback(status, &m_transaction);
    }
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    // Throws the database's message when the last call failed.
    void check(IscStatus result)
    {
        if (result == 0 && !(m_status[0] == 1 && m_status[1] != 0))
            return;
        QString message;
        const IscStatus *vector = m_status;
        char line[512];
        while (m_api->interpret(line, sizeof line, &vector) > 0)
            message += (message.isEmpty() ? QString() : QStringLiteral(" - ")) + QString::fromUtf8(line);
        throw VantryError(message.isEmpty() ? QStringLiteral("Firebird error %1").arg(result) : message);
    }

    IscStatus *status() { return m_status; }
    Handle m_db;
    Handle m_transaction = 0;
    Handle m_statement = 0;

private:
    const FirebirdApi *m_api;
    IscStatus m_status[20] = {};
};

struct Column
{
    short type;
    short scale;
    short subtype;
    short length;
    int chars; // CHAR(n): the n characters to keep
};

int bytesPerChar(int charset)
{
    switch (charset) {
    case 3: return 3; // UNICODE_FSS
    case 4: return 4; // UTF8
    default: return 1;
    }
}

QString scaledText(qint64 value, int scale)
{
    // NUMERIC and DECIMAL are integers scaled by 10^scale; written out without rounding.
    const bool negative = value < 0;
    QByteArray digits = QByteArray::number(negative ? -(quint64)value : (quint64)value);
    const int places = -scale;
    if (digits.size() <= places)
        digits.prepend(QByteArray(places - int(digits.size()) + 1, '0'));
    digits.insert(digits.size() - places, '.');
    return QString::fromLatin1(negative ? "-" + digits : digits);
}

QString timeText(unsigned int tenThousandths)
{
    const unsigned int seconds = tenThousandths / 10000;
    return QString::asprintf("%02u:%02u:%02u.%04u", seconds / 3600, seconds / 60 % 60, seconds % 60,
                             tenThousandths % 10000);
}

QString dateText(int days)
{
    // Days since 17 November 1858, the modified Julian day.
    return QDate::fromJulianDay(qint64(days) + 2400001).toString(Qt::ISODate);
}

const char *typeName(const Column &column)
{
    switch (column.type) {
    case SqlText: return column.subtype == CharsetOctets ? "char octets" : "char";
    case SqlVarying: return column.subtype == CharsetOctets ? "varchar octets" : "varchar";
    case SqlShort: return column.scale ? "numeric" : "smallint";
    case SqlLong: return column.scale ? "numeric" : "integer";
    case SqlInt64: return column.scale ? "numeric" : "bigint";
    case SqlFloat: return "float";
    case SqlDouble:
    case SqlDFloat: return "double precision";
    case SqlTimestamp: return "timestamp";
    case SqlDate: return "date";
    case SqlTime: return "time";
    case SqlBoolean: return "boolean";
    case SqlBlob: return column.subtype == 1 ? "blob sub_type text" : "blob";
    case SqlNull: return "null";
    default: return nullptr;
    }
}

class Reader
{
public:
    Reader(const FirebirdApi *api, Session &session, bool utf8) : m_api(api), m_session(session), m_utf8(utf8) {}

    void appendText(ResultColumn &column, const char *data, size_t size)
    {
        if (m_utf8) {
            column.appendText(data, size);
            return;
        }
        const QByteArray utf8 = QString::fromLatin1(data, qsizetype(size)).toUtf8();
        column.appendText(utf8.constData(), size_t(utf8.size()));
    }

    // CHAR(n) arrives padded to n characters of the widest encoding; n characters are kept.
    void appendChar(ResultColumn &column, const Column &type, const char *data)
    {
        size_t size = size_t(type.length);
        if (m_utf8) {
            int chars = 0;
            for (size_t i = 0; i < size; ++i)
                chars += (static_cast<unsigned char>(data[i]) & 0xC0) != 0x80;
            while (size > 0 && chars > type.chars && data[size - 1] == ' ') {
                --size;
                --chars;
            }
        }
        appendText(column, data, size);
    }

    void appendBlob(ResultColumn &column, const Column &type, void *id)
    {
        Handle blob = 0;
        m_session.check(m_api->openBlob(m_session.status(), &m_session.m_db, &m_session.m_transaction, &blob, id, 0, nullptr));
        QByteArray bytes;
        char buffer[32768];
        for (;;) {
            unsigned short got = 0;
            const IscStatus result = m_api->getSegment(m_session.status(), &blob, &got, sizeof buffer, buffer);
            if (result != 0 && result != SegmentPartial)
                break; // the end of the BLOB, or an error the close below reports
            bytes.append(buffer, got);
        }
        m_session.check(m_api->closeBlob(m_session.status(), &blob));
        if (type.subtype == 1)
            appendText(column, bytes.constData(), size_t(bytes.size()));
        else
            column.appendBytes(bytes.constData(), size_t(bytes.size()));
    }

    void append(ResultColumn &column, const Column &type, char *data)
    {
        switch (type.type) {
        case SqlText:
            if (type.subtype == CharsetOctets)
                column.appendBytes(data, size_t(type.length));
            else
                appendChar(column, type, data);
            return;
        case SqlVarying: {
            unsigned short size;
            std::memcpy(&size, data, sizeof size);
            if (type.subtype == CharsetOctets)
                column.appendBytes(data + 2, size);
            else
                appendText(column, data + 2, size);
            return;
        }
        case SqlShort:
        case SqlLong:
        case SqlInt64: {
            qint64 value = 0;
            if (type.type == SqlShort) {
                short v;
                std::memcpy(&v, data, sizeof v);
                value = v;
            } else if (type.type == SqlLong) {
                int v;
                std::memcpy(&v, data, sizeof v);
                value = v;
            } else {
                std::memcpy(&value, data, sizeof value);
            }
            if (type.scale == 0) {
                column.appendInt(value);
            } else {
                const QByteArray text = scaledText(value, type.scale).toLatin1();
                column.appendText(text.constData(), size_t(text.size()));
            }
            return;
        }
        case SqlFloat: {
            float v;
            std::memcpy(&v, data, sizeof v);
            column.appendReal(double(v));
            return;
        }
        case SqlDouble:
        case SqlDFloat: {
            double v;
            std::memcpy(&v, data, sizeof v);
            column.appendReal(v);
            return;
        }
        case SqlBoolean:
            column.appendInt(data[0] ? 1 : 0);
            return;
        case SqlBlob:
            appendBlob(column, type, data);
            return;
        default:
            break;
        }
        QString text;
        if (type.type == SqlTimestamp) {
            int days;
            unsigned int time;
            std::memcpy(&days, data, sizeof days);
            std::memcpy(&time, data + 4, sizeof time);
            text = dateText(days) + QLatin1Char(' ') + timeText(time);
        } else if (type.type == SqlDate) {
            int days;
            std::memcpy(&days, data, sizeof days);
            text = dateText(days);
        } else if (type.type == SqlTime) {
            unsigned int time;
            std::memcpy(&time, data, sizeof time);
            text = timeText(time);
        }
        const QByteArray latin = text.toLatin1();
        column.appendText(latin.constData(), size_t(latin.size()));
    }

private:
    const FirebirdApi *m_api;
    Session &m_session;
    bool m_utf8;
};

bool connectionIsUtf8(const QSqlDatabase &db)
{
    const QString options = db.connectOptions().toUpper();
    return options.contains(QLatin1String("LC_CTYPE=UTF8")) || options.contains(QLatin1String("LC_CTYPE=UNICODE_FSS"));
}

// A statement of its own, in a read-committed read-only transaction of its own: the fetch sees
// what is committed, leaves the driver's transaction alone, and, read-only, does not hold back
// the server's garbage collection while the grid keeps the cursor open. Closing commits it.
class FirebirdCursor : public ResultCursor
{
public:
    FirebirdCursor(const FirebirdApi *api, Handle db, bool utf8)
        : m_api(api), m_session(api, db), m_reader(api, m_session, utf8)
    {
    }
    ~FirebirdCursor() override
    {
        try {
            close();
        } catch (const VantryError &) {
        }
    }

    // Prepares and runs the statement; false when it is no query or has a type not read here.
    bool start(const QByteArray &sql)
    {
        static const char tpb[] = {3 /* version3 */, 15 /* read_committed */, 17 /* rec_version */,
                                   8 /* read */, 6 /* nowait */};
        m_session.check(m_api->startTransaction(m_session.status(), &m_session.m_transaction, 1, &m_session.m_db,
                                                short(sizeof tpb), tpb));
        m_session.check(m_api->allocate(m_session.status(), &m_session.m_db, &m_session.m_statement));
        describe(1);
        m_session.check(m_api->prepare(m_session.status(), &m_session.m_transaction, &m_session.m_statement,
                                       sql.size() > 65535 ? 0 : (unsigned short)sql.size(), sql.constData(), Dialect3,
                                       da()));
        if (!isQuery())
            return false;
        if (da()->sqld > da()->sqln) {
            describe(da()->sqld);
            m_session.check(m_api->describe(m_session.status(), &m_session.m_statement, SqldaVersion1, da()));
        }
        const int count = da()->sqld;
        m_buffers.resize(size_t(count));
        m_nulls.assign(size_t(count), 0);
        for (int col = 0; col < count; ++col) {
            XsqlVar &var = da()->sqlvar[col];
            Column column{short(var.sqltype & ~1), var.sqlscale, var.sqlsubtype, var.sqllen, 0};
            if (column.type == SqlText || column.type == SqlVarying) {
                column.subtype = short(var.sqlsubtype & 0xFF); // the character set
                column.chars = var.sqllen / bytesPerChar(column.subtype);
            }
            const char *name = typeName(column);
            if (!name)
                return false; // arrays and newer types: the generic path shows what it can
            m_buffers[size_t(col)].assign(size_t(var.sqllen) + 2, 0);
            var.sqldata = m_buffers[size_t(col)].data();
            var.sqlind = &m_nulls[size_t(col)];
            var.sqltype = short(var.sqltype | 1); // always ask for the NULL indicator
            m_columns.push_back(column);
            addColumn(QString::fromUtf8(var.aliasname, var.aliasnameLength), QString::fromLatin1(name),
                      column.type == SqlBoolean ? QMetaType::Bool : QMetaType::UnknownType);
        }
        m_session.check(m_api->execute(m_session.status(), &m_session.m_transaction, &m_session.m_statement,
                                       SqldaVersion1, nullptr));
        m_open = true;
        return true;
    }

    bool fetch(ResultTable &batch, qint64 maxRows) override
    {
        if (!m_open)
            return false;
        for (qint64 rows = 0; rows < maxRows; ++rows) {
            const IscStatus result = m_api->fetch(m_session.status(), &m_session.m_statement, SqldaVersion1, da());
            if (result == FetchEnd) {
                close();
                return false;
            }
            m_session.check(result);
            for (int col = 0; col < int(m_columns.size()); ++col) {
                ResultColumn &column = batch.column(col);
                if (m_nulls[size_t(col)] < 0)
                    column.appendNull();
                else
                    m_reader.append(column, m_columns[size_t(col)], m_buffers[size_t(col)].data());
            }
        }
        return true;
    }

    void close() override
    {
        m_open = false;
        if (m_session.m_transaction)
            m_session.check(m_api->commit(m_session.status(), &m_session.m_transaction));
    }

    QString path() const override { return QStringLiteral("firebird"); }

private:
    Xsqlda *da() { return reinterpret_cast<Xsqlda *>(m_daMemory.data()); }

    void describe(int columns)
    {
        m_daMemory.assign(sizeof(Xsqlda) + sizeof(XsqlVar) * size_t(std::max(columns, 1) - 1), 0);
        da()->version = SqldaVersion1;
        da()->sqln = short(std::max(columns, 1));
    }

    bool isQuery()
    {
        char info[16] = {};
        const char items[] = {InfoStatementType, InfoEnd};
        m_session.check(m_api->sqlInfo(m_session.status(), &m_session.m_statement, short(sizeof items), items,
                                       short(sizeof info), info));
        const int length = int(static_cast<unsigned char>(info[1]) | static_cast<unsigned char>(info[2]) << 8);
        int kind = 0;
        for (int i = 0; i < length && i < 4; ++i)
            kind |= int(static_cast<unsigned char>(info[3 + i])) << (8 * i);
        return info[0] == InfoStatementType && (kind == StatementSelect || kind == StatementSelectForUpdate);
    }

    const FirebirdApi *m_api;
    Session m_session;
    Reader m_reader;
    std::vector<char> m_daMemory;
    std::vector<Column> m_columns;
    std::vector<std::vector<char>> m_buffers;
    std::vector<short> m_nulls;
    bool m_open = false;
};

} // namespace

std::unique_ptr<ResultCursor> ResultFetchFirebird::open(const QSqlDatabase &db, const QString &statement)
{
    if (db.driverName() != QLatin1String("QIBASE"))
        return nullptr;
    const QVariant handle = db.driver()->handle();
    const FirebirdApi *api = firebirdApi();
    if (!api || !handle.isValid() || handle.metaType().sizeOf() != int(sizeof(Handle)))
        return nullptr;
    const Handle attachment = *static_cast<const Handle *>(handle.constData());
    if (!attachment)
        return nullptr;
    auto cursor = std::make_unique<FirebirdCursor>(api, attachment, connectionIsUtf8(db));
    if (!cursor->start(statement.toUtf8()))
        return nullptr;
    return cursor;
}
