#pragma once
// The benchmark data set shared by the fetch benchmarks: 1,000,000 rows x 10 columns of mixed
// types (integers, reals, short and long texts, NULLs) in a SQLite file and a PostgreSQL table,
// and the raw client loops that read them as the reference.
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QString>
#include <algorithm>
#include <cstdio>
#include <libpq-fe.h>
#include <sqlite3.h>
#include <string>

namespace BenchData {

struct Raw
{
    double ms = 0;
    quint64 payload = 0; // bytes of the values: 8 per number, the text's bytes, 0 for NULL
    quint64 checksum = 0;
};

template<typename Fn>
inline double bestOf(int runs, Fn fn)
{
    double best = 1e300;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        fn();
        best = std::min(best, timer.nsecsElapsed() / 1e6);
    }
    return best;
}

inline const char *CreateSql = "create table t (id integer, a integer, b integer, x real, y real, "
                        "code text, name text, tag text, memo text, note text)";

inline void createSqlite(const QString &file, int rows)
{
    QFile::remove(file);
    sqlite3 *db = nullptr;
    sqlite3_open(file.toUtf8().constData(), &db);
    sqlite3_exec(db, CreateSql, nullptr, nullptr, nullptr);
    sqlite3_exec(db, "begin", nullptr, nullptr, nullptr);
    sqlite3_stmt *insert = nullptr;
    sqlite3_prepare_v2(db, "insert into t values (?,?,?,?,?,?,?,?,?,?)", -1, &insert, nullptr);
    const std::string memo(120, 'm');
    char buffer[256];
    for (int i = 0; i < rows; ++i) {
        sqlite3_bind_int64(insert, 1, i);
        sqlite3_bind_int64(insert, 2, (i * 7919LL) % 1000003);
        if (i % 10 == 0) sqlite3_bind_null(insert, 3); else sqlite3_bind_int64(insert, 3, i / 3);
        sqlite3_bind_double(insert, 4, i * 0.25);
        if (i % 7 == 0) sqlite3_bind_null(insert, 5); else sqlite3_bind_double(insert, 5, 1.0 / (i + 1));
        std::snprintf(buffer, sizeof buffer, "C%07d", (i * 31) % 1000000);
        sqlite3_bind_text(insert, 6, buffer, -1, SQLITE_TRANSIENT);
        std::snprintf(buffer, sizeof buffer, "name %d abc", i % 50000);
        sqlite3_bind_text(insert, 7, buffer, -1, SQLITE_TRANSIENT);
        if (i % 5 == 0) sqlite3_bind_null(insert, 8); else sqlite3_bind_text(insert, 8, i % 3 ? "red" : "", -1, SQLITE_STATIC);
        std::snprintf(buffer, sizeof buffer, "%d %s", i, memo.c_str() + (i % 60));
        sqlite3_bind_text(insert, 9, buffer, -1, SQLITE_TRANSIENT);
        if (i % 4 == 0) sqlite3_bind_null(insert, 10); else sqlite3_bind_text(insert, 10, "a note of some length", -1, SQLITE_STATIC);
        sqlite3_step(insert);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    sqlite3_exec(db, "commit", nullptr, nullptr, nullptr);
    sqlite3_close(db);
}

inline Raw rawSqlite(const QString &file)
{
    Raw raw;
    raw.ms = bestOf(3, [&] {
        sqlite3 *db = nullptr;
        sqlite3_open_v2(file.toUtf8().constData(), &db, SQLITE_OPEN_READONLY, nullptr);
        sqlite3_stmt *stmt = nullptr;
        sqlite3_prepare_v2(db, "select * from t", -1, &stmt, nullptr);
        quint64 payload = 0, sum = 0;
        while (sqlite3_step(stmt) == SQLITE_ROW) {
            const int columns = sqlite3_column_count(stmt);
            for (int c = 0; c < columns; ++c) {
                switch (sqlite3_column_type(stmt, c)) {
                case SQLITE_INTEGER: sum += quint64(sqlite3_column_int64(stmt, c)); payload += 8; break;
                case SQLITE_FLOAT: sum += quint64(sqlite3_column_double(stmt, c)); payload += 8; break;
                case SQLITE_TEXT: {
                    const unsigned char *text = sqlite3_column_text(stmt, c);
                    const int n = sqlite3_column_bytes(stmt, c);
                    sum += n ? text[0] : 0;
                    payload += quint64(n);
                    break;
                }
                default: break;
                }
            }
        }
        sqlite3_finalize(stmt);
        sqlite3_close(db);
        raw.payload = payload;
        raw.checksum = sum;
    });
    return raw;
}

inline Raw rawPostgres(const QByteArray &conninfo)
{
    Raw raw;
    raw.ms = bestOf(3, [&] {
        PGconn *conn = PQconnectdb(conninfo.constData());
        PGresult *result = PQexec(conn, "select * from vantry_bench_t");
        quint64 payload = 0, sum = 0;
        const int rows = PQntuples(result), cols = PQnfields(result);
        for (int r = 0; r < rows; ++r)
            for (int c = 0; c < cols; ++c) {
                if (PQgetisnull(result, r, c))
                    continue;
                const char *value = PQgetvalue(result, r, c);
                const int n = PQgetlength(result, r, c);
                sum += n ? quint64(value[0]) : 0;
                payload += c < 5 ? 8 : quint64(n);
            }
        PQclear(result);
        PQfinish(conn);
        raw.payload = payload;
        raw.checksum = sum;
    });
    return raw;
}

// Fills vantry_bench_t on the PostgreSQL server with the same rows as the SQLite file.
inline void createPostgres(const QByteArray &conninfo, int rows)
{
    PGconn *conn = PQconnectdb(conninfo.constData());
    const QByteArray fill = QStringLiteral(
        "drop table if exists vantry_bench_t; "
        "create table vantry_bench_t (id bigint, a bigint, b bigint, x float8, y float8, code text, name text, tag text, memo text, note text); "
        "insert into vantry_bench_t select i, (i * 7919) % 1000003, case when i % 10 = 0 then null else i / 3 end, i * 0.25, "
        "case when i % 7 = 0 then null else 1.0 / (i + 1) end, 'C' || lpad(((i * 31) % 1000000)::text, 7, '0'), "
        "'name ' || (i % 50000) || ' abc', case when i % 5 = 0 then null when i % 3 = 0 then '' else 'red' end, "
        "i || ' ' || substr(repeat('m', 120), 1 + (i % 60)::int), case when i % 4 = 0 then null else 'a note of some length' end "
        "from generate_series(0::bigint, %1) i; analyze vantry_bench_t").arg(rows - 1).toUtf8();
    PGresult *result = PQexec(conn, fill.constData());
    if (PQresultStatus(result) != PGRES_COMMAND_OK)
        std::printf("PostgreSQL fill failed: %s\n", PQresultErrorMessage(result));
    PQclear(result);
    PQfinish(conn);
}

// Adds the table `sortset` to a SQLite file: per row a random text of 10 to 20 letters (few
// shared prefixes, unlike the repetitive texts of t) and a random 64-bit integer, from a fixed
// seed so every run sorts the same values.
inline void createSortTable(const QString &file, int rows)
{
    sqlite3 *db = nullptr;
    sqlite3_open(file.toUtf8().constData(), &db);
    sqlite3_exec(db, "drop table if exists sortset; create table sortset (id integer, word text, num integer)", nullptr,
                 nullptr, nullptr);
    sqlite3_exec(db, "begin", nullptr, nullptr, nullptr);
    sqlite3_stmt *insert = nullptr;
    sqlite3_prepare_v2(db, "insert into sortset values (?,?,?)", -1, &insert, nullptr);
    quint64 state = 0x9E3779B97F4A7C15ull;
    auto next = [&state] { // xorshift64*
        state ^= state >> 12;
        state ^= state << 25;
        state ^= state >> 27;
        return state * 0x2545F4914F6CDD1Dull;
    };
    char word[24];
    for (int i = 0; i < rows; ++i) {
        const int length = 10 + int(next() % 11);
        for (int c = 0; c < length; ++c)
            word[c] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"[next() % 52];
        sqlite3_bind_int64(insert, 1, i);
        sqlite3_bind_text(insert, 2, word, length, SQLITE_TRANSIENT);
        sqlite3_bind_int64(insert, 3, qint64(next()));
        sqlite3_step(insert);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    sqlite3_exec(db, "commit", nullptr, nullptr, nullptr);
    sqlite3_close(db);
}

// Generates the SQLite file `name` in the benchmarks' temporary folder and returns its path.
inline QString generatedSqliteFile(const char *name, int rows)
{
    const QString dir = QDir::tempPath() + QStringLiteral("/vantry-bench");
    QDir().mkpath(dir);
    const QString file = dir + QLatin1Char('/') + QLatin1String(name);
    std::printf("Generating %d rows x 10 columns in %s ...\n", rows, qPrintable(file));
    createSqlite(file, rows);
    return file;
}

inline QByteArray postgresConninfo()
{
    return QStringLiteral("host=%1 port=%2 dbname=%3 user=%4 password=%5")
        .arg(qEnvironmentVariable("VANTRY_PG_HOST"), qEnvironmentVariable("VANTRY_PG_PORT"),
             qEnvironmentVariable("VANTRY_PG_DATABASE"), qEnvironmentVariable("VANTRY_PG_USER"),
             qEnvironmentVariable("VANTRY_PG_PASSWORD"))
        .toUtf8();
}

} // namespace BenchData
