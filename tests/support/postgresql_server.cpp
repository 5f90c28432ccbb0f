#include "tests/support/postgresql_server.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

namespace test_support {

namespace {

constexpr int patienceMsecs = 60'000;

/// Of a process that has no other threads; without those that the processes have themselves.
QList<QByteArray> childrenOf(qint64 process) {
    QFile file(QStringLiteral("/proc/%1/task/%1/children").arg(process));
    return file.open(QIODevice::ReadOnly) ? file.readAll().simplified().split(' ')
                                          : QList<QByteArray>();
}

} // namespace

// The path of a socket may have 107 bytes, hence no other folder than /tmp.
PostgresqlServer::PostgresqlServer(Durability durability)
    : m_programs(neededVariable("KELVRO_POSTGRESQL_BIN")), m_durability(durability),
      m_folder(QStringLiteral("/tmp/kelvro-postgresql-XXXXXX")),
      m_process(std::make_unique<ServerProcess>(m_folder.filePath(QStringLiteral("log")))) {
    makeData();
    start();
    sql(QStringLiteral("create extension documentdb cascade"));
}

PostgresqlServer::~PostgresqlServer() {
    if (m_process->state() != QProcess::NotRunning) {
        kill();
    }
}

QString PostgresqlServer::subfolder(const char* name) const {
    return m_folder.filePath(QString::fromLatin1(name));
}

void PostgresqlServer::makeData() {
    // The user postgres has to get through it.
    ::chmod(m_folder.path().toUtf8().constData(), 0711);
    for (const char* name : {"data", "sockets"}) {
        // The server trusts whoever gets into the folder of its socket.
        const QByteArray folder = subfolder(name).toUtf8();
        if (::mkdir(folder.constData(), 0700) != 0) {
            throw std::runtime_error("cannot make the folder " + folder.toStdString());
        }
        if (::geteuid() == 0) {
            runProgram(QStringLiteral("chown"),
                       {QStringLiteral("postgres:"), QString::fromUtf8(folder)});
        }
    }
    QStringList command = asUser({m_programs + QStringLiteral("/initdb"),
                                  QStringLiteral("--pgdata=") + subfolder("data"),
                                  QStringLiteral("--username=postgres"),
                                  QStringLiteral("--auth=trust"), QStringLiteral("--encoding=UTF8"),
                                  QStringLiteral("--locale=C.UTF-8"), QStringLiteral("--no-sync")});
    const QString program = command.takeFirst();
    runProgram(program, command);
}

// As which user, too, decides who it ends with: a change of user takes back what was said before.
QStringList PostgresqlServer::asUser(const QStringList& command) const {
    QStringList whole{QStringLiteral("setpriv")};
    if (::geteuid() == 0) { // as which PostgreSQL refuses to run
        whole += {QStringLiteral("--reuid=postgres"), QStringLiteral("--regid=postgres"),
                  QStringLiteral("--init-groups"), QStringLiteral("--"), QStringLiteral("setpriv")};
    }
    return whole +
           QStringList{QStringLiteral("--pdeathsig"), QStringLiteral("QUIT"),
                       QStringLiteral("--")} +
           command;
}

void PostgresqlServer::stop() {
    m_process->endBy(SIGINT);
}

void PostgresqlServer::start() {
    QStringList command =
        asUser({m_programs + QStringLiteral("/postgres"), QStringLiteral("-D"), subfolder("data")});
    const auto set = [&command](const QString& setting) {
        command << QStringLiteral("-c") << setting;
    };
    const QString sockets = subfolder("sockets");
    set(QStringLiteral("listen_addresses="));
    set(QStringLiteral("unix_socket_directories=") + sockets);
    set(QStringLiteral("max_connections=200"));
    set(QStringLiteral("shared_preload_libraries=pg_cron,pg_documentdb_core,pg_documentdb"));
    set(QStringLiteral("cron.database_name=postgres"));
    set(QStringLiteral("cron.host=") + sockets);
    set(QStringLiteral("cron.log_run=off"));
    set(QStringLiteral("documentdb.localhost_connection_string=host=") + sockets);
    set(QStringLiteral("documentdb.maxWriteBatchSize=100000"));
    for (const char* setting : {"fsync", "synchronous_commit", "full_page_writes"}) {
        set(QString::fromLatin1(setting) + QLatin1Char('=') +
            (m_durability == Durability::Complete ? QStringLiteral("on") : QStringLiteral("off")));
    }
    const QString program = command.takeFirst();
    QElapsedTimer waited;
    waited.start();
    while (!m_process->startAndAwait(program, command, "ready to accept connections")) {
        // What is left of one that was killed keeps the next one out until it has gone too.
        if (!m_process->log().contains("pre-existing shared memory block") ||
            waited.hasExpired(patienceMsecs)) {
            throw std::runtime_error("PostgreSQL does not start: " +
                                     m_process->log().toStdString());
        }
    }
}

void PostgresqlServer::kill() {
    const QList<QByteArray> children = childrenOf(m_process->processId());
    m_process->killAndWait();
    for (const QByteArray& child : children) {
        ::kill(child.toInt(), SIGKILL);
    }
}

QByteArray PostgresqlServer::sql(const QString& statement) {
    return runProgram(m_programs + QStringLiteral("/psql"),
                      {QStringLiteral("--no-psqlrc"), QStringLiteral("--quiet"),
                       QStringLiteral("--tuples-only"), QStringLiteral("--no-align"),
                       QStringLiteral("--host=") + subfolder("sockets"),
                       QStringLiteral("--username=postgres"), QStringLiteral("--dbname=postgres"),
                       QStringLiteral("--command=") + statement});
}

QString PostgresqlServer::url() const {
    return QStringLiteral("postgres://postgres@/postgres?host=") + subfolder("sockets");
}

} // namespace test_support
