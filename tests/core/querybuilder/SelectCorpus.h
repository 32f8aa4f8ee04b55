#pragma once
// SELECT statements across the query builder's dialects, for the round-trip tests and for the
// runs against the real servers. They read three small tables (qbe_customers, qbe_orders,
// qbe_items) whose rows SelectCorpus::schema() creates.
//
// Three families: statements every one of the four test servers runs (written once, entered for
// each server's dialect that reads it and for Universal); each dialect's own quoting of names;
// each dialect's row-limit forms.

#include "core/querybuilder/SqlDialect.h"

#include <QString>
#include <QStringList>
#include <QVector>

namespace SelectCorpus {

enum Server { NoServer = 0, SQLite = 1, Postgres = 2, MariaDb = 4, Firebird = 8, AllServers = 15 };

struct Entry
{
    SqlDialect dialect;
    QString sql;
    Server server = NoServer; // the server that runs it, when its dialect has one of ours
};

inline Server serverOf(SqlDialect d)
{
    switch (d) {
    case SqlDialect::Sqlite: return SQLite;
    case SqlDialect::PostgreSql: return Postgres;
    case SqlDialect::MySql: return MariaDb;
    case SqlDialect::Firebird: return Firebird;
    default: return NoServer;
    }
}

struct Common
{
    int servers;
    const char *sql;
};

// Statements in plain SQL; `servers` says which servers have every feature they use.
inline const QVector<Common> &common()
{
    static const QVector<Common> list = {
        {AllServers, "SELECT id, name FROM qbe_customers"},
        {AllServers, "select * from qbe_orders where amount > 100"},
        {AllServers, "SELECT c.id, c.name, o.amount FROM qbe_customers c INNER JOIN qbe_orders o ON o.customer_id = c.id"},
        {AllServers, "SELECT c.name, o.id FROM qbe_customers c LEFT JOIN qbe_orders o ON o.customer_id = c.id"},
        {AllServers, "SELECT c.name, o.id FROM qbe_customers c LEFT OUTER JOIN qbe_orders o ON o.customer_id = c.id AND o.amount > 50"},
        {AllServers, "SELECT c.name, o.id FROM qbe_orders o RIGHT JOIN qbe_customers c ON c.id = o.customer_id"},
        {SQLite | Postgres | Firebird, "SELECT c.name, o.id FROM qbe_customers c FULL OUTER JOIN qbe_orders o ON o.customer_id = c.id"},
        {AllServers, "SELECT c.id, i.id FROM qbe_customers c CROSS JOIN qbe_items i WHERE i.qty > 4"},
        {AllServers, "SELECT c.name, o.amount FROM qbe_customers c, qbe_orders o WHERE c.id = o.customer_id AND o.amount > 100"},
        {AllServers, "SELECT c.name, o.status, i.product, i.qty * i.price AS line_total FROM qbe_customers c "
                     "JOIN qbe_orders o ON o.customer_id = c.id JOIN qbe_items i ON i.order_id = o.id WHERE i.qty >= 2"},
        {AllServers, "SELECT c.name, i.product FROM qbe_customers c, qbe_orders o JOIN qbe_items i ON i.order_id = o.id "
                     "WHERE o.customer_id = c.id"},
        {AllServers, "SELECT customer_id, COUNT(*) AS n, SUM(amount) AS total FROM qbe_orders GROUP BY customer_id HAVING COUNT(*) > 1"},
        {AllServers, "SELECT DISTINCT city FROM qbe_customers"},
        {AllServers, "SELECT id FROM qbe_customers WHERE (city = 'Oslo' OR city = 'Bergen') AND score > 10"},
        {AllServers, "SELECT id FROM qbe_customers WHERE city = 'Oslo' OR city = 'Bergen' AND score > 10"},
        {AllServers, "SELECT id FROM qbe_customers WHERE score BETWEEN 10 AND 40 AND name LIKE 'A%'"},
        {AllServers, "SELECT id FROM qbe_customers WHERE city IS NULL OR score NOT BETWEEN 5 AND 30"},
        {AllServers, "SELECT id, name FROM qbe_customers WHERE city IN ('Oslo', 'Turku', 'Lund')"},
        {AllServers, "SELECT name FROM qbe_customers WHERE id IN (SELECT customer_id FROM qbe_orders WHERE amount > 200)"},
        {AllServers, "SELECT name FROM qbe_customers c WHERE NOT EXISTS (SELECT 1 FROM qbe_orders o WHERE o.customer_id = c.id)"},
        {AllServers, "SELECT c.name, (SELECT COUNT(*) FROM qbe_orders o WHERE o.customer_id = c.id) AS orders FROM qbe_customers c"},
        {AllServers, "SELECT d.customer_id, d.total FROM (SELECT customer_id, SUM(amount) AS total FROM qbe_orders "
                     "GROUP BY customer_id) d WHERE d.total > 100"},
        {AllServers, "SELECT e.n FROM (SELECT d.customer_id, d.n FROM (SELECT customer_id, COUNT(*) AS n FROM qbe_orders "
                     "GROUP BY customer_id) d WHERE d.n > 1) e"},
        {AllServers, "SELECT city FROM qbe_customers UNION SELECT status FROM qbe_orders"},
        {AllServers, "SELECT id FROM qbe_customers UNION ALL SELECT customer_id FROM qbe_orders ORDER BY 1"},
        {AllServers, "SELECT name FROM qbe_customers WHERE score > 30 UNION SELECT name FROM qbe_customers WHERE city = 'Oslo' "
                     "UNION ALL SELECT product FROM qbe_items WHERE qty > 5"},
        {AllServers, "WITH big AS (SELECT customer_id FROM qbe_orders WHERE amount > 100) SELECT c.name FROM qbe_customers c "
                     "WHERE c.id IN (SELECT customer_id FROM big)"},
        {AllServers, "WITH t1 AS (SELECT id, city FROM qbe_customers), t2 AS (SELECT customer_id, amount FROM qbe_orders) "
                     "SELECT t1.city, SUM(t2.amount) AS total FROM t1 JOIN t2 ON t2.customer_id = t1.id GROUP BY t1.city"},
        {AllServers, "WITH RECURSIVE n (k) AS (SELECT 1 FROM qbe_customers WHERE id = 1 UNION ALL SELECT k + 1 FROM n WHERE k < 5) "
                     "SELECT k FROM n"},
        {AllServers, "SELECT id, customer_id, ROW_NUMBER() OVER (PARTITION BY customer_id ORDER BY id) AS rn FROM qbe_orders"},
        {AllServers, "SELECT id, SUM(amount) OVER (ORDER BY id) AS running FROM qbe_orders"},
        {AllServers, "SELECT id, CASE WHEN score > 30 AND city IS NOT NULL THEN 'high' WHEN score > 10 THEN 'mid' ELSE 'low' END AS band "
                     "FROM qbe_customers"},
        {AllServers, "SELECT id, COALESCE(city, 'none') AS place FROM qbe_customers"},
        {AllServers, "SELECT id, name FROM qbe_customers ORDER BY city DESC, name ASC, id"},
        {Postgres | MariaDb | Firebird, "SELECT id FROM qbe_orders WHERE amount > ALL (SELECT amount FROM qbe_orders WHERE status = 'new')"},
        {Postgres | MariaDb | Firebird, "SELECT id FROM qbe_orders WHERE amount = ANY (SELECT MAX(amount) FROM qbe_orders GROUP BY status)"},
        {AllServers, "SELECT customer_id FROM qbe_orders GROUP BY customer_id HAVING SUM(amount) > (SELECT AVG(amount) FROM qbe_orders)"},
        {AllServers, "SELECT id, CASE WHEN EXISTS (SELECT 1 FROM qbe_orders o WHERE o.customer_id = c.id) THEN 1 ELSE 0 END AS buyer "
                     "FROM qbe_customers c"},
        {AllServers, "SELECT name FROM qbe_customers WHERE id IN (SELECT customer_id FROM qbe_orders WHERE id IN "
                     "(SELECT order_id FROM qbe_items WHERE qty > 3))"},
        {AllServers, "SELECT o.status, COUNT(*) AS n FROM qbe_orders o GROUP BY o.status HAVING COUNT(*) > "
                     "(SELECT COUNT(*) FROM qbe_customers c WHERE c.city = 'Lund')"},
        {AllServers, "SELECT c.name, t.total FROM qbe_customers c JOIN (SELECT customer_id, SUM(amount) AS total FROM qbe_orders "
                     "GROUP BY customer_id) t ON t.customer_id = c.id"},
        {AllServers, "SELECT a.name, b.name FROM qbe_customers a JOIN qbe_customers b ON a.city = b.city AND a.id < b.id"},
        {AllServers, "SELECT id FROM qbe_customers WHERE id NOT IN (SELECT customer_id FROM qbe_orders) AND score <> 0"},
        {AllServers, "SELECT order_id, qty * price AS line_total, qty + 1 AS more FROM qbe_items WHERE price - 1 > 10"},
        {AllServers, "SELECT COUNT(DISTINCT customer_id) AS buyers FROM qbe_orders"},
        {AllServers, "SELECT o.customer_id, o.status, MIN(o.amount) AS low, MAX(o.amount) AS high FROM qbe_orders o "
                     "GROUP BY o.customer_id, o.status"},
        {AllServers, "SELECT c.id FROM qbe_customers c LEFT JOIN qbe_orders o ON o.customer_id = c.id WHERE o.id IS NULL"},
        {AllServers, "/* customers */ SELECT id, -- the key\n name FROM qbe_customers -- all of them\n WHERE id > 1"},
        {AllServers, "select   c.NAME\nfrom qbe_customers c\nwhere c.score>=20\n  and (c.city='Oslo' or (c.city='Lund' and c.id<>3))"},
        {SQLite | Postgres | MariaDb, "SELECT city FROM qbe_customers INTERSECT SELECT city FROM qbe_customers WHERE score > 20"},
        {SQLite | Postgres | MariaDb, "SELECT id FROM qbe_customers EXCEPT SELECT customer_id FROM qbe_orders"},
        {AllServers, "SELECT id FROM qbe_customers WHERE name = 'O''Brien' OR name LIKE '%a%'"},
        {AllServers, "SELECT CAST(score AS CHAR(10)) AS s FROM qbe_customers"},
        {SQLite | Postgres | Firebird, "SELECT id, city FROM qbe_customers ORDER BY city NULLS LAST, id"},
        {SQLite | Postgres | Firebird, "SELECT id, city FROM qbe_customers ORDER BY city DESC NULLS FIRST, id"},
        {AllServers, "SELECT CASE WHEN score > 20 THEN 'a' ELSE 'b' END AS grp, COUNT(*) AS n FROM qbe_customers "
                     "GROUP BY CASE WHEN score > 20 THEN 'a' ELSE 'b' END"},
        {AllServers, "SELECT id FROM qbe_customers WHERE score > (SELECT AVG(score) FROM qbe_customers)"},
        {AllServers, "SELECT o.id, i.product FROM qbe_orders o LEFT JOIN qbe_items i ON i.order_id = o.id AND (i.qty > 2 OR i.price > 50) "
                     "WHERE NOT (o.status = 'new') AND o.amount IS NOT NULL"},
        {AllServers, "SELECT x.id FROM (SELECT id FROM qbe_customers UNION SELECT id FROM qbe_orders) x WHERE x.id < 4"},
        {AllServers, "SELECT c.city, COUNT(o.id) AS n FROM qbe_customers c LEFT JOIN qbe_orders o ON o.customer_id = c.id "
                     "GROUP BY c.city HAVING COUNT(o.id) >= 1 AND c.city IS NOT NULL"},
        {AllServers, "SELECT id, RANK() OVER (ORDER BY score DESC) AS r, MAX(score) OVER (PARTITION BY city) AS best FROM qbe_customers"},
        {AllServers, "SELECT c.name FROM qbe_customers c WHERE EXISTS (SELECT 1 FROM qbe_orders o JOIN qbe_items i ON i.order_id = o.id "
                     "WHERE o.customer_id = c.id AND i.product = 'pen')"},
        {AllServers, "SELECT o.id FROM qbe_orders o WHERE o.amount > (SELECT AVG(o2.amount) FROM qbe_orders o2 "
                     "WHERE o2.customer_id = o.customer_id)"},
        {SQLite | Postgres | MariaDb, "SELECT UPPER(name) AS n, LOWER(city) AS c FROM qbe_customers WHERE LENGTH(name) > 3"},
        {Postgres | MariaDb | Firebird, "SELECT UPPER(name) AS n FROM qbe_customers WHERE CHAR_LENGTH(name) BETWEEN 3 AND 5"},
    };
    return list;
}

inline QString quoted(SqlDialect d, const QString &name, int style)
{
    // style 0: the dialect's first quoting, 1: its second, where it has one.
    QStringList pairs;
    const SqlDialects::Traits &t = SqlDialects::traits(d);
    if (t.doubleQuoteIdentifiers)
        pairs << QStringLiteral("\"\"");
    if (t.bracketIdentifiers)
        pairs << QStringLiteral("[]");
    if (t.backtickIdentifiers)
        pairs << QStringLiteral("``");
    const QString pair = pairs.at(style % pairs.size());
    const bool upper = d == SqlDialect::Firebird || d == SqlDialect::Interbase || d == SqlDialect::Oracle || d == SqlDialect::Db2;
    const bool keepCase = name.contains(QLatin1Char(' '));
    return pair.at(0) + (upper && !keepCase ? name.toUpper() : name) + pair.at(1);
}

inline QVector<Entry> quotingFamily()
{
    static const char *const templates[] = {
        "SELECT {id}, {name} AS {Customer Name} FROM {qbe_customers} WHERE {city} = 'Oslo' ORDER BY {id}",
        "SELECT c.{name}, o.{amount} FROM {qbe_customers} c JOIN {qbe_orders} o ON o.{customer_id} = c.{id}",
        "SELECT {city}, COUNT(*) AS {n} FROM {qbe_customers} GROUP BY {city}",
        "SELECT x.{total} FROM (SELECT SUM({amount}) AS {total} FROM {qbe_orders}) x",
    };
    QVector<Entry> entries;
    for (int d = 0; d < 15; ++d) {
        const SqlDialect dialect = SqlDialect(d);
        for (int t = 0; t < 4; ++t) {
            QString sql = QString::fromLatin1(templates[t]);
            int open;
            while ((open = sql.indexOf(QLatin1Char('{'))) >= 0) {
                const int close = sql.indexOf(QLatin1Char('}'), open);
                sql.replace(open, close - open + 1, quoted(dialect, sql.mid(open + 1, close - open - 1), t));
            }
            entries.append({dialect, sql, serverOf(dialect)});
        }
    }
    return entries;
}

inline QVector<Entry> limitFamily()
{
    using D = SqlDialect;
    const QVector<QPair<D, const char *>> list = {
        {D::Sqlite, "SELECT id FROM qbe_orders ORDER BY id LIMIT 3"},
        {D::Sqlite, "SELECT id FROM qbe_orders ORDER BY id LIMIT 3 OFFSET 2"},
        {D::Sqlite, "SELECT id FROM qbe_orders ORDER BY id LIMIT 2, 3"},
        {D::Sqlite, "SELECT * FROM (SELECT id FROM qbe_orders ORDER BY amount DESC, id LIMIT 3) t ORDER BY id"},
        {D::MySql, "SELECT id FROM qbe_orders ORDER BY id LIMIT 3"},
        {D::MySql, "SELECT id FROM qbe_orders ORDER BY id LIMIT 3 OFFSET 2"},
        {D::MySql, "SELECT id FROM qbe_orders ORDER BY id LIMIT 2, 3"},
        {D::MySql, "SELECT t.id FROM (SELECT id FROM qbe_orders ORDER BY amount DESC, id LIMIT 3) t ORDER BY t.id"},
        {D::MySql, "(SELECT id FROM qbe_orders ORDER BY id LIMIT 2) UNION ALL (SELECT id FROM qbe_customers ORDER BY id DESC LIMIT 1)"},
        {D::PostgreSql, "SELECT id FROM qbe_orders ORDER BY id LIMIT 3"},
        {D::PostgreSql, "SELECT id FROM qbe_orders ORDER BY id LIMIT 3 OFFSET 2"},
        {D::PostgreSql, "SELECT id FROM qbe_orders ORDER BY id OFFSET 2 ROWS FETCH FIRST 3 ROWS ONLY"},
        {D::PostgreSql, "SELECT id FROM qbe_orders ORDER BY id FETCH NEXT 2 ROW ONLY"},
        {D::PostgreSql, "SELECT id FROM qbe_orders ORDER BY id OFFSET 7"},
        {D::PostgreSql, "(SELECT id FROM qbe_orders ORDER BY id LIMIT 2) UNION ALL (SELECT id FROM qbe_customers ORDER BY id DESC LIMIT 1)"},
        {D::Firebird, "SELECT FIRST 3 id FROM qbe_orders ORDER BY id"},
        {D::Firebird, "SELECT FIRST 3 SKIP 2 id FROM qbe_orders ORDER BY id"},
        {D::Firebird, "SELECT SKIP 8 id FROM qbe_orders ORDER BY id"},
        {D::Firebird, "SELECT FIRST (1 + 2) DISTINCT customer_id FROM qbe_orders ORDER BY customer_id"},
        {D::Firebird, "SELECT id FROM qbe_orders ORDER BY id ROWS 3"},
        {D::Firebird, "SELECT id FROM qbe_orders ORDER BY id ROWS 2 TO 4"},
        {D::Firebird, "SELECT c.name FROM qbe_customers c WHERE c.id IN (SELECT FIRST 2 o.customer_id FROM qbe_orders o ORDER BY o.amount DESC, o.id)"},
        {D::Interbase, "SELECT id FROM qbe_orders ORDER BY id ROWS 3"},
        {D::Interbase, "SELECT id FROM qbe_orders ORDER BY id ROWS 2 TO 4"},
        {D::MsSqlServer, "SELECT TOP 5 id FROM qbe_orders ORDER BY id"},
        {D::MsSqlServer, "SELECT TOP (5) id FROM qbe_orders ORDER BY id"},
        {D::MsSqlServer, "SELECT TOP 10 PERCENT id FROM qbe_orders ORDER BY amount"},
        {D::MsSqlServer, "SELECT DISTINCT TOP 3 WITH TIES customer_id FROM qbe_orders ORDER BY customer_id"},
        {D::MsSqlServer, "SELECT name FROM qbe_customers WHERE id IN (SELECT TOP 2 customer_id FROM qbe_orders ORDER BY amount DESC)"},
        {D::MsAccess, "SELECT TOP 5 id FROM qbe_orders ORDER BY id"},
        {D::MsAccess, "SELECT TOP 25 PERCENT [id] FROM [qbe_orders] ORDER BY [amount] DESC"},
        {D::Sybase, "SELECT TOP 5 id FROM qbe_orders ORDER BY id"},
        {D::Informix, "SELECT FIRST 5 id FROM qbe_orders ORDER BY id"},
        {D::Informix, "SELECT SKIP 2 FIRST 3 id FROM qbe_orders ORDER BY id"},
        {D::Db2, "SELECT id FROM qbe_orders ORDER BY id FETCH FIRST 5 ROWS ONLY"},
        {D::Db2, "SELECT id FROM qbe_orders ORDER BY id OFFSET 2 ROWS FETCH NEXT 5 ROWS ONLY"},
        {D::AnsiSql2003, "SELECT id FROM qbe_orders ORDER BY id FETCH FIRST 5 ROWS ONLY"},
        {D::AnsiSql2003, "SELECT id FROM qbe_orders ORDER BY amount DESC FETCH FIRST 3 ROWS WITH TIES"},
        {D::Oracle, "SELECT * FROM (SELECT id FROM qbe_orders ORDER BY amount DESC) WHERE ROWNUM <= 3"},
        {D::Oracle, "SELECT id FROM qbe_orders MINUS SELECT order_id FROM qbe_items"},
        {D::AnsiSql92, "SELECT id FROM qbe_orders ORDER BY id"},
        {D::AnsiSql89, "SELECT id FROM qbe_orders WHERE amount > 10 ORDER BY id"},
        {D::Universal, "SELECT TOP 5 id FROM qbe_orders ORDER BY id"},
        {D::Universal, "SELECT FIRST 5 SKIP 1 id FROM qbe_orders ORDER BY id"},
        {D::Universal, "SELECT id FROM qbe_orders ORDER BY id LIMIT 5 OFFSET 1"},
        {D::Universal, "SELECT id FROM qbe_orders ORDER BY id ROWS 5"},
        {D::Universal, "SELECT id FROM qbe_orders ORDER BY id OFFSET 1 ROWS FETCH FIRST 5 ROWS ONLY"},
        {D::Generic, "SELECT id FROM qbe_orders ORDER BY id FETCH FIRST 5 ROWS ONLY"},
    };
    QVector<Entry> entries;
    for (const auto &e : list)
        entries.append({e.first, QString::fromUtf8(e.second), serverOf(e.first)});
    return entries;
}

// Other dialect forms that only round-trip: no server of ours speaks these dialects.
inline QVector<Entry> dialectFamily()
{
    using D = SqlDialect;
    const QVector<QPair<D, const char *>> list = {
        {D::MsAccess, "SELECT c.name, o.amount, i.product FROM ((qbe_customers c INNER JOIN qbe_orders o ON o.customer_id = c.id) "
                      "INNER JOIN qbe_items i ON i.order_id = o.id) LEFT JOIN qbe_items j ON j.id = i.id"},
        {D::MsAccess, "SELECT [c].[name] FROM [qbe_customers] AS [c] WHERE [c].[city] LIKE 'O*'"},
        {D::MsSqlServer, "SELECT [c].[name], @limit AS lim FROM [dbo].[qbe_customers] c WHERE c.id = @id"},
        {D::MsSqlServer, "SELECT N'text' AS t, 0x1F AS b FROM qbe_customers"},
        {D::Oracle, "SELECT c.name FROM qbe_customers c WHERE c.id = :id AND c.city = :1"},
        {D::Oracle, "SELECT c.name, NVL(c.city, '-') AS city FROM qbe_customers c WHERE ROWNUM <= 10 AND c.name || 'x' <> 'x'"},
        {D::PostgreSql, "SELECT x::int, y::text[], $1 AS p FROM qbe_customers WHERE name ILIKE 'a%' AND tags @> ARRAY['a']"},
        {D::PostgreSql, "SELECT $$dollar 'quoted'$$ AS d, E'esc\\'aped' AS e FROM qbe_customers /* outer /* nested */ comment */"},
        {D::PostgreSql, "SELECT g.i FROM generate_series(1, 5) g (i) NATURAL JOIN qbe_customers"},
        {D::PostgreSql, "SELECT a.id FROM qbe_orders a JOIN qbe_items b USING (id)"},
        {D::MySql, "SELECT `c`.`name`, \"a string\" AS s FROM `qbe_customers` `c` # a comment\nWHERE `c`.`name` = 'it\\'s'"},
        {D::MySql, "SELECT id FROM qbe_customers WHERE city = ? AND score > ? UNION DISTINCT SELECT 1 FROM qbe_orders"},
        {D::Sqlite, "SELECT [name], `city`, \"score\" FROM qbe_customers WHERE id = :id OR id = ?1"},
        {D::Informix, "SELECT c.name FROM qbe_customers c, OUTER qbe_orders o WHERE o.customer_id = c.id"},
        {D::Db2, "SELECT c.name FROM qbe_customers c WHERE c.id IN (SELECT customer_id FROM qbe_orders FETCH FIRST 1 ROWS ONLY)"},
        {D::AnsiSql92, "SELECT \"c\".\"name\" FROM \"qbe_customers\" AS \"c\" NATURAL JOIN qbe_orders"},
        {D::AnsiSql89, "SELECT c.name, o.amount FROM qbe_customers c, qbe_orders o WHERE c.id = o.customer_id"},
        {D::Sybase, "SELECT [name] FROM qbe_customers WHERE id = @id AND city <> ''"},
        {D::AnsiSql2003, "SELECT id, ROW_NUMBER() OVER w AS rn FROM qbe_customers ORDER BY id"},
        {D::Interbase, "SELECT \"NAME\" FROM \"QBE_CUSTOMERS\" WHERE \"ID\" = ?"},
        {D::Universal, "SELECT [a], `b`, \"c\" FROM [s].`t` WHERE x = @p OR y = :q OR z = $1 OR w = ?"},
        {D::Universal, "SELECT a FROM t1 NATURAL LEFT JOIN t2 RIGHT OUTER JOIN t3 ON t3.a = t2.a FULL JOIN t4 ON t4.b = t1.b"},
        {D::Universal, "SELECT id FROM t WHERE a = 1 AND (b = 2 OR (c = 3 AND (d = 4 OR e = 5))) OR f = 6"},
        {D::Universal, "SELECT SUM(x) FILTER (WHERE x > 0) AS pos, PERCENTILE_CONT(0.5) WITHIN GROUP (ORDER BY x) AS med FROM t"},
        {D::Universal, "SELECT EXTRACT(YEAR FROM d) AS y, SUBSTRING(s FROM 2 FOR 3) AS sub, TRIM(BOTH ' ' FROM s) AS tr FROM t"},
    };
    QVector<Entry> entries;
    for (const auto &e : list)
        entries.append({e.first, QString::fromUtf8(e.second), NoServer});
    return entries;
}

// The whole corpus: the common statements for Universal and for each server dialect that runs
// them (and ANSI SQL/92, which reads them too), then the three dialect families.
inline QVector<Entry> all()
{
    QVector<Entry> entries;
    for (const Common &c : common()) {
        entries.append({SqlDialect::Universal, QString::fromUtf8(c.sql), NoServer});
        for (SqlDialect d : {SqlDialect::Sqlite, SqlDialect::PostgreSql, SqlDialect::MySql, SqlDialect::Firebird})
            if (c.servers & serverOf(d))
                entries.append({d, QString::fromUtf8(c.sql), serverOf(d)});
    }
    entries += quotingFamily();
    entries += limitFamily();
    entries += dialectFamily();
    return entries;
}

// The tables and rows the statements read, as statements every server runs.
inline QStringList schema()
{
    QStringList sql = {
        QStringLiteral("CREATE TABLE qbe_customers (id INTEGER NOT NULL PRIMARY KEY, name VARCHAR(40), city VARCHAR(40), score INTEGER)"),
        QStringLiteral("CREATE TABLE qbe_orders (id INTEGER NOT NULL PRIMARY KEY, customer_id INTEGER, amount INTEGER, "
                       "status VARCHAR(10), FOREIGN KEY (customer_id) REFERENCES qbe_customers (id))"),
        QStringLiteral("CREATE TABLE qbe_items (id INTEGER NOT NULL PRIMARY KEY, order_id INTEGER, product VARCHAR(20), "
                       "qty INTEGER, price INTEGER, FOREIGN KEY (order_id) REFERENCES qbe_orders (id))"),
    };
    const char *const customers[] = {"1, 'Anna', 'Oslo', 35", "2, 'Bo', 'Lund', 12", "3, 'Carla', 'Lund', 48",
                                     "4, 'O''Brien', NULL, 7", "5, 'Alvar', 'Turku', 22", "6, 'Eda', 'Bergen', 0"};
    for (const char *c : customers)
        sql << QStringLiteral("INSERT INTO qbe_customers VALUES (%1)").arg(QLatin1String(c));
    const char *const orders[] = {"1, 1, 120, 'new'", "2, 1, 40, 'paid'", "3, 2, 250, 'paid'", "4, 3, 90, 'new'",
                                  "5, 3, 300, 'sent'", "6, 3, 15, 'paid'", "7, 5, 220, 'sent'", "8, 5, 60, 'new'",
                                  "9, 2, 75, 'sent'", "10, 1, 180, 'paid'"};
    for (const char *o : orders)
        sql << QStringLiteral("INSERT INTO qbe_orders VALUES (%1)").arg(QLatin1String(o));
    const char *const products[] = {"pen", "ink", "pad", "cap", "box"};
    for (int i = 1; i <= 20; ++i)
        sql << QStringLiteral("INSERT INTO qbe_items VALUES (%1, %2, '%3', %4, %5)")
                   .arg(i).arg((i * 7) % 10 + 1).arg(QLatin1String(products[i % 5])).arg(i % 7 + 1).arg(10 + (i * 13) % 60);
    return sql;
}

} // namespace SelectCorpus
