#include "BenchEngines.h"

#include <sql.h>
#include <sqlext.h>
#include <vector>

BenchData::Raw BenchData::rawOdbc(const QString &connection, const char *sql)
{
    constexpr SQLULEN RowArray = 256;
    constexpr SQLLEN TextBytes = 512 * 2;
    Raw raw;
    raw.ms = bestOf(3, [&] {
        SQLHENV env = nullptr;
        SQLHDBC dbc = nullptr;
        SQLHSTMT stmt = nullptr;
        SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env);
        SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, SQLPOINTER(SQL_OV_ODBC3), 0);
        SQLAllocHandle(SQL_HANDLE_DBC, env, &dbc);
        const QByteArray text = connection.toUtf8();
        if (!SQL_SUCCEEDED(SQLDriverConnect(dbc, nullptr, (SQLCHAR *)text.constData(), SQL_NTS, nullptr, 0, nullptr,
                                            SQL_DRIVER_NOPROMPT))) {
            std::printf("ODBC: cannot connect with %s\n", text.constData());
            return;
        }
        SQLAllocHandle(SQL_HANDLE_STMT, dbc, &stmt);
        SQLSetStmtAttr(stmt, SQL_ATTR_ROW_ARRAY_SIZE, SQLPOINTER(RowArray), 0);
        SQLULEN fetched = 0;
        SQLSetStmtAttr(stmt, SQL_ATTR_ROWS_FETCHED_PTR, &fetched, 0);
        SQLExecDirect(stmt, (SQLCHAR *)sql, SQL_NTS);
        SQLSMALLINT cols = 0;
        SQLNumResultCols(stmt, &cols);
        std::vector<std::vector<char>> data(static_cast<size_t>(cols));
        std::vector<std::vector<SQLLEN>> indicators(static_cast<size_t>(cols), std::vector<SQLLEN>(RowArray));
        for (SQLSMALLINT c = 0; c < cols; ++c) {
            const bool number = c < 5;
            const SQLLEN width = number ? 8 : TextBytes;
            data[size_t(c)].resize(size_t(width) * RowArray);
            SQLBindCol(stmt, SQLUSMALLINT(c + 1), number ? (c < 3 ? SQL_C_SBIGINT : SQL_C_DOUBLE) : SQL_C_WCHAR,
                       data[size_t(c)].data(), width, indicators[size_t(c)].data());
        }
        quint64 payload = 0, sum = 0;
        while (SQL_SUCCEEDED(SQLFetch(stmt))) {
            for (SQLSMALLINT c = 0; c < cols; ++c) {
                const SQLLEN width = c < 5 ? 8 : TextBytes;
                for (SQLULEN r = 0; r < fetched; ++r) {
                    const SQLLEN length = indicators[size_t(c)][r];
                    if (length == SQL_NULL_DATA)
                        continue;
                    const char *value = data[size_t(c)].data() + size_t(width) * r;
                    sum += length ? quint64(quint8(value[0])) : 0;
                    payload += c < 5 ? 8 : quint64(length) / 2;
                }
            }
        }
        SQLFreeHandle(SQL_HANDLE_STMT, stmt);
        SQLDisconnect(dbc);
        SQLFreeHandle(SQL_HANDLE_DBC, dbc);
        SQLFreeHandle(SQL_HANDLE_ENV, env);
        raw.payload = payload;
        raw.checksum = sum;
    });
    return raw;
}
