#pragma once
// The database servers of scripts/test-servers, as the integration tests see them: read from the
// environment that "scripts/test-servers env-file" describes, with ready-made connection records.
//
// When the environment is missing a test is skipped, unless VANTRY_REQUIRE_SERVERS=1 (set by
// scripts/test), when it fails with a message saying how to start the servers.

#include "core/connections/vtrIL.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QString>
#include <QStringList>
#include <QtTest>

namespace TestServers {

inline QString env(const char *name)
{
    return qEnvironmentVariable(name);
}

// The variables every integration test needs.
inline QStringList requiredVariables()
{
    return {QStringLiteral("VANTRY_PG_PORT"), QStringLiteral("VANTRY_MYSQL_PORT"), QStringLiteral("VANTRY_FB_DATABASE"),
            QStringLiteral("VANTRY_SQLITE_FILE"), QStringLiteral("ODBCSYSINI"), QStringLiteral("ODBCINI"),
            QStringLiteral("VANTRY_ODBC_SQLITE_DSN")};
}

// Empty when all are present, else a message naming the missing ones.
inline QString missingMessage()
{
    QStringList missing;
    for (const QString &name : requiredVariables())
        if (qEnvironmentVariableIsEmpty(name.toLatin1().constData()))
            missing << name;
    if (missing.isEmpty())
        return QString();
    return QStringLiteral("test servers not configured (missing %1): run scripts/test-servers start and "
                          "source \"$(scripts/test-servers env-file)\"")
        .arg(missing.join(QStringLiteral(", ")));
}

inline bool serversRequired()
{
    return qEnvironmentVariable("VANTRY_REQUIRE_SERVERS") == QLatin1String("1");
}

inline TReaderConnection record(TDataSourceType type, const QString &server, int port, const QString &database,
                                const QString &user, const QString &password)
{
    TReaderConnection rc;
    rc.ConnectionType = type;
    rc.Description = dataSourceTypeName(type);
    rc.Server = server;
    rc.Port = port;
    rc.DataBase = database;
    rc.UserName = user;
    rc.Password = password;
    return rc;
}

inline TReaderConnection postgres()
{
    return record(dsPostgreSQL, env("VANTRY_PG_HOST"), env("VANTRY_PG_PORT").toInt(), env("VANTRY_PG_DATABASE"),
                  env("VANTRY_PG_USER"), env("VANTRY_PG_PASSWORD"));
}

inline TReaderConnection mariadb()
{
    return record(dsMySql, env("VANTRY_MYSQL_HOST"), env("VANTRY_MYSQL_PORT").toInt(), env("VANTRY_MYSQL_DATABASE"),
                  env("VANTRY_MYSQL_USER"), env("VANTRY_MYSQL_PASSWORD"));
}

inline TReaderConnection firebird()
{
    TReaderConnection rc = record(dsInterbase, env("VANTRY_FB_HOST"), env("VANTRY_FB_PORT").toInt(),
                                  env("VANTRY_FB_DATABASE"), env("VANTRY_FB_USER"), env("VANTRY_FB_PASSWORD"));
    rc.UseUnicode = true;
    return rc;
}

inline TReaderConnection sqlite(const QString &file = env("VANTRY_SQLITE_FILE"))
{
    TReaderConnection rc = record(dsSqLite, QString(), 0, file, QString(), QString());
    rc.SourceFile = file;
    return rc;
}

// An ODBC record: a data source name, or a whole "DRIVER=..." string in Server.
inline TReaderConnection odbc(const QString &server, const QString &user = QString(), const QString &password = QString())
{
    return record(dsODBC, server, 0, QString(), user, password);
}

inline TReaderConnection oleDb(const QString &connectionString)
{
    return record(dsOleDb, connectionString, 0, QString(), QString(), QString());
}

// Opens a plain Qt SQL connection named `connectionName` to a test server, for tests that set
// up tables and check what the program wrote: "postgres", "mariadb", "firebird", or an ODBC
// source "odbc-postgres", "odbc-mariadb", "odbc-sqlite". A name already open is reused.
inline QSqlDatabase openServer(const QString &server, const QString &connectionName)
{
    if (QSqlDatabase::contains(connectionName))
        return QSqlDatabase::database(connectionName);
    struct Server
    {
        const char *name, *driver, *prefix;
    };
    static const Server servers[] = {{"postgres", "QPSQL", "VANTRY_PG_"},
                                     {"mariadb", "QMYSQL", "VANTRY_MYSQL_"},
                                     {"firebird", "QIBASE", "VANTRY_FB_"}};
    for (const Server &known : servers) {
        if (server != QLatin1String(known.name))
            continue;
        const QString prefix = QLatin1String(known.prefix);
        auto var = [&prefix](const char *name) { return qEnvironmentVariable((prefix + QLatin1String(name)).toLatin1()); };
        QSqlDatabase db = QSqlDatabase::addDatabase(QLatin1String(known.driver), connectionName);
        db.setHostName(var("HOST"));
        db.setPort(var("PORT").toInt());
        db.setDatabaseName(var("DATABASE"));
        db.setUserName(var("USER"));
        db.setPassword(var("PASSWORD"));
        if (server == QLatin1String("firebird"))
            db.setConnectOptions(QStringLiteral("ISC_DPB_LC_CTYPE=UTF8"));
        if (!db.open())
            qWarning() << server << db.lastError().text();
        return db;
    }
    const bool pg = server.endsWith(QLatin1String("postgres"));
    const bool maria = server.endsWith(QLatin1String("mariadb"));
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QODBC"), connectionName);
    db.setDatabaseName(env(pg ? "VANTRY_ODBC_PG_DSN" : maria ? "VANTRY_ODBC_MYSQL_DSN" : "VANTRY_ODBC_SQLITE_DSN"));
    if (pg || maria) {
        db.setUserName(env(pg ? "VANTRY_PG_USER" : "VANTRY_MYSQL_USER"));
        db.setPassword(env(pg ? "VANTRY_PG_PASSWORD" : "VANTRY_MYSQL_PASSWORD"));
    }
    if (!db.open())
        qWarning() << server << db.lastError().text();
    return db;
}

} // namespace TestServers

// Skips (or, with VANTRY_REQUIRE_SERVERS=1, fails) the current test when the servers' environment is missing.
#define VANTRY_REQUIRE_TEST_SERVERS()                                                   \
    do {                                                                                \
        const QString vantryMissing_ = TestServers::missingMessage();                   \
        if (!vantryMissing_.isEmpty()) {                                                \
            if (TestServers::serversRequired())                                         \
                QFAIL(qPrintable(vantryMissing_));                                      \
            QSKIP(qPrintable(vantryMissing_));                                          \
        }                                                                               \
    } while (false)
