#pragma once
// The benchmark table on MariaDB and Firebird, and the raw client loops of MariaDB
// (mysql_fetch_row), Firebird (isc_dsql_fetch) and ODBC (SQLFetch over bound columns, a row
// array at a time) that the result table is measured against. Each loop lives in a file of its
// own: the client headers define the same macro names with other values.
#include "BenchData.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace BenchData {

inline bool benchExec(const QSqlDatabase &db, const QString &sql)
{
    QSqlQuery query(db);
    if (query.exec(sql))
        return true;
    std::printf("%s\n  %s\n", qPrintable(sql.left(100)), qPrintable(query.lastError().text()));
    return false;
}

// Fills vantry_bench_t with the rows of the SQLite file (MariaDB's sequence engine makes them).
inline void createMariaDb(const QSqlDatabase &db, int rows)
{
    benchExec(db, "drop table if exists vantry_bench_t");
    benchExec(db, "create table vantry_bench_t (id bigint, a bigint, b bigint, x double, y double, code varchar(10), "
                  "name varchar(20), tag varchar(5), memo varchar(140), note varchar(30)) character set utf8mb4");
    benchExec(db, QStringLiteral(
                      "insert into vantry_bench_t select seq, (seq * 7919) % 1000003, if(seq % 10 = 0, null, seq div 3), "
                      "seq * 0.25, if(seq % 7 = 0, null, 1.0e0 / (seq + 1)), concat('C', lpad((seq * 31) % 1000000, 7, '0')), "
                      "concat('name ', seq % 50000, ' abc'), case when seq % 5 = 0 then null when seq % 3 = 0 then '' else 'red' end, "
                      "concat(seq, ' ', substr(repeat('m', 120), 1 + seq % 60)), if(seq % 4 = 0, null, 'a note of some length') "
                      "from seq_0_to_%1").arg(rows - 1));
}

// Fills VANTRY_BENCH_T on Firebird with the same rows, a block of inserts on the server.
inline void createFirebird(const QSqlDatabase &db, int rows)
{
    benchExec(db, "recreate table vantry_bench_t (id bigint, a bigint, b bigint, x double precision, y double precision, "
                  "code varchar(10), name varchar(20), tag varchar(5), memo varchar(140), note varchar(30))");
    benchExec(db, QStringLiteral(
                      "execute block as declare i bigint = 0; begin while (i < %1) do begin "
                      "insert into vantry_bench_t values (:i, mod(:i * 7919, 1000003), iif(mod(:i, 10) = 0, null, :i / 3), "
                      ":i * 0.25, iif(mod(:i, 7) = 0, null, 1.0e0 / (:i + 1)), 'C' || lpad(mod(:i * 31, 1000000), 7, '0'), "
                      "'name ' || mod(:i, 50000) || ' abc', case when mod(:i, 5) = 0 then null when mod(:i, 3) = 0 then '' "
                      "else 'red' end, :i || ' ' || substring(lpad('', 120, 'm') from 1 + mod(:i, 60)), "
                      "iif(mod(:i, 4) = 0, null, 'a note of some length')); i = i + 1; end end").arg(rows));
}

// The server and the account come from the test-server environment (VANTRY_MYSQL_*, VANTRY_FB_*).
Raw rawMariaDb(const char *sql);
Raw rawFirebird(const char *sql);
// Numbers bound as such (the first five columns), texts as UTF-16, a row array at a time.
Raw rawOdbc(const QString &connection, const char *sql);

} // namespace BenchData
