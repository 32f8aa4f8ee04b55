#pragma once
// A PostgreSQL server of the test's own, in a temporary folder on a free loopback port, that the
// test may stop and start at will without disturbing the shared test servers. Needs the server
// binaries (scripts/install-deps installs them); run as root it runs the server as "postgres".
#include "TestServers.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

class PrivatePostgres
{
public:
    PrivatePostgres()
    {
        const QStringList versions = QDir(QStringLiteral("/usr/lib/postgresql")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        if (versions.isEmpty() || !m_dir.isValid())
            return;
        m_bin = QStringLiteral("/usr/lib/postgresql/%1/bin/").arg(versions.last());
        m_port = freePort();
        if (m_port == 0)
            return;
        if (::geteuid() == 0)
            QProcess::execute(QStringLiteral("chown"), {QStringLiteral("postgres:"), m_dir.path()});
        m_ready = tool(QStringLiteral("initdb"), {"-D", data(), "-U", "postgres", "-E", "UTF8", "--auth=trust",
                                                  "--no-instructions"})
                  && start();
    }
    ~PrivatePostgres()
    {
        if (m_ready)
            stop();
    }

    bool isReady() const { return m_ready; }
    bool start()
    {
        return tool(QStringLiteral("pg_ctl"),
                    {"-D", data(), "-l", m_dir.filePath(QStringLiteral("server.log")), "-w", "-t", "30", "-o",
                     QStringLiteral("-p %1 -k %2 -c listen_addresses=127.0.0.1").arg(m_port).arg(m_dir.path()), "start"});
    }
    // Stops the server at once, as a crash or a pulled cable would: clients are not told.
    bool stop() { return tool(QStringLiteral("pg_ctl"), {"-D", data(), "-m", "immediate", "-w", "stop"}); }

    TReaderConnection record() const
    {
        return TestServers::record(dsPostgreSQL, QStringLiteral("127.0.0.1"), m_port, QStringLiteral("postgres"),
                                   QStringLiteral("postgres"), QString());
    }

private:
    // A loopback port nobody listens on now: the kernel's pick for a socket bound to port 0.
    static int freePort()
    {
        const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        int port = 0;
        if (fd >= 0 && ::bind(fd, reinterpret_cast<sockaddr *>(&address), size) == 0
            && ::getsockname(fd, reinterpret_cast<sockaddr *>(&address), &size) == 0)
            port = ntohs(address.sin_port);
        if (fd >= 0)
            ::close(fd);
        return port;
    }
    QString data() const { return m_dir.filePath(QStringLiteral("data")); }
    bool tool(const QString &name, QStringList args) const
    {
        QString program = m_bin + name;
        if (::geteuid() == 0) {
            args = QStringList{QStringLiteral("-u"), QStringLiteral("postgres"), QStringLiteral("--"), program} + args;
            program = QStringLiteral("runuser");
        }
        QProcess p;
        p.setWorkingDirectory(QDir::tempPath());
        p.start(program, args);
        return p.waitForFinished(60000) && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0;
    }

    QTemporaryDir m_dir;
    QString m_bin;
    int m_port = 0;
    bool m_ready = false;
};
