#include "core/workspace/EngineCancel.h"

#include "core/workspace/ResultFetchNative.h"

#include <QAtomicInteger>
#include <QSqlDriver>
#include <QSqlQuery>
#include <QSqlResult>

namespace {

template<typename Fn>
Fn symbol(const char *library, const char *name)
{
    return reinterpret_cast<Fn>(ResultFetchNative::loadedSymbol(library, name));
}

template<typename Handle>
Handle handleOf(const QVariant &handle, std::initializer_list<const char *> typeNames)
{
    for (const char *typeName : typeNames)
        if (handle.isValid() && qstrcmp(handle.typeName(), typeName) == 0)
            return *static_cast<const Handle *>(handle.constData());
    return nullptr;
}

void cancelSqlite(const QVariant &handle, std::function<void()> &cancel)
{
    void *connection = handleOf<void *>(handle, {"sqlite3*"});
    auto interrupt = symbol<void (*)(void *)>("libsqlite3.so.0", "sqlite3_interrupt");
    if (connection && interrupt)
        cancel = [=] { interrupt(connection); };
}

void cancelPostgres(const QVariant &handle, std::function<void()> &cancel, std::function<void()> &release)
{
    void *conn = handleOf<void *>(handle, {"PGconn*", "pg_conn*"});
    auto getCancel = symbol<void *(*)(void *)>("libpq.so.5", "PQgetCancel");
    auto doCancel = symbol<int (*)(void *, char *, int)>("libpq.so.5", "PQcancel");
    auto freeCancel = symbol<void (*)(void *)>("libpq.so.5", "PQfreeCancel");
    if (!conn || !getCancel || !doCancel || !freeCancel)
        return;
    void *token = getCancel(conn);
    if (!token)
        return;
    cancel = [=] {
        char error[256];
        doCancel(token, error, int(sizeof error));
    };
    release = [=] { freeCancel(token); };
}

// KILL QUERY goes over a connection of its own with the same parameters, opened by the thread
// that cancels.
void cancelMysql(const QSqlDatabase &db, std::function<void()> &cancel)
{
    void *mysql = handleOf<void *>(db.driver()->handle(), {"MYSQL*", "st_mysql*"});
    auto threadId = symbol<unsigned long (*)(void *)>("libmariadb.so.3", "mysql_thread_id");
    if (!mysql || !threadId)
        return;
    const unsigned long id = threadId(mysql);
    const QString driver = db.driverName(), host = db.hostName(), user = db.userName(),
                  password = db.password(), database = db.databaseName(), options = db.connectOptions();
    const int port = db.port();
    cancel = [=] {
        static QAtomicInteger<int> serial;
        const QString name = QStringLiteral("vantry-cancel-%1").arg(serial.fetchAndAddRelaxed(1));
        {
            QSqlDatabase killer = QSqlDatabase::addDatabase(driver, name);
            killer.setHostName(host);
            killer.setPort(port);
            killer.setUserName(user);
            killer.setPassword(password);
            killer.setDatabaseName(database);
            killer.setConnectOptions(options);
            if (killer.open())
                QSqlQuery(killer).exec(QStringLiteral("KILL QUERY %1").arg(id));
            killer.close();
        }
        QSqlDatabase::removeDatabase(name);
    };
}

void cancelFirebird(const QVariant &handle, std::function<void()> &cancel)
{
    // The client's handle type is a typedef of an unsigned int, so Qt may name it either way.
    if (!handle.isValid() || handle.metaType().sizeOf() != int(sizeof(unsigned int)))
        return;
    const unsigned int dbHandle = *static_cast<const unsigned int *>(handle.constData());
    using CancelFn = long (*)(long *, unsigned int *, unsigned short);
    auto cancelOperation = symbol<CancelFn>("libfbclient.so.2", "fb_cancel_operation");
    if (!cancelOperation)
        return;
    cancel = [=] {
        long status[20] = {};
        unsigned int target = dbHandle;
        constexpr unsigned short RaiseCancel = 3; // fb_cancel_raise
        cancelOperation(status, &target, RaiseCancel);
    };
}

} // namespace

std::shared_ptr<EngineCancel> EngineCancel::forConnection(const QSqlDatabase &db)
{
    std::shared_ptr<EngineCancel> engine(new EngineCancel);
    const QString driver = db.driverName();
    const QVariant handle = db.driver() ? db.driver()->handle() : QVariant();
    if (driver == QLatin1String("QSQLITE"))
        cancelSqlite(handle, engine->m_cancel);
    else if (driver == QLatin1String("QPSQL"))
        cancelPostgres(handle, engine->m_cancel, engine->m_release);
    else if (driver == QLatin1String("QMYSQL") || driver == QLatin1String("QMARIADB"))
        cancelMysql(db, engine->m_cancel);
    else if (driver == QLatin1String("QIBASE"))
        cancelFirebird(handle, engine->m_cancel);
    else if (driver == QLatin1String("QODBC"))
        engine->m_statementCancel = true;
    return engine;
}

EngineCancel::~EngineCancel()
{
    release();
}

void EngineCancel::watchStatement(const QSqlQuery *query)
{
    if (!m_statementCancel)
        return;
    std::lock_guard<std::mutex> lock(m_mutex);
    m_statement = nullptr;
    if (query && query->result())
        m_statement = handleOf<void *>(query->result()->handle(), {"SQLHANDLE", "void*"});
}

void EngineCancel::cancel()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_cancel)
        m_cancel();
    if (m_statement) {
        auto sqlCancel = symbol<short (*)(void *)>("libodbc.so.2", "SQLCancel");
        if (sqlCancel)
            sqlCancel(m_statement);
    }
}

void EngineCancel::release()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_release)
        m_release();
    m_release = nullptr;
    m_cancel = nullptr;
    m_statement = nullptr;
}
