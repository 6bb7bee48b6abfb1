// Finds PostgreSQL's programs, makes the cluster, starts it and stops it, never as root.
#include "postgresserver.h"

#include <QSqlDatabase>
#include <QStandardPaths>

#include <pwd.h>

#include "archivefixture.h"

namespace ArchiveTests {

namespace {

// Debian keeps the server's programs out of the search path.
QString programs()
{
    const QDir versions("/usr/lib/postgresql");
    for (const QString& version : versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::Reversed)) {
        const QString folder = versions.filePath(version) + "/bin";
        if (QFile::exists(folder + "/initdb") && QFile::exists(folder + "/pg_ctl")) {
            return folder;
        }
    }
    return {};
}

// The server refuses to run as root.
QString otherUser()
{
    return geteuid() != 0 ? QString() : "nobody";
}

}  // namespace

QString PostgresServer::missing()
{
    if (programs().isEmpty()) {
        return "PostgreSQL is not installed";
    }
    if (!QSqlDatabase::isDriverAvailable("QPSQL")) {
        return "Qt's driver for PostgreSQL is not installed";
    }
    if (!otherUser().isEmpty() && QStandardPaths::findExecutable("setpriv").isEmpty()) {
        return "PostgreSQL does not run as root, and setpriv is not installed";
    }
    return {};
}

PostgresServer::PostgresServer(const QString& password) : m_folder(temporaryTemplate())
{
    const QString passwordFile = m_folder.filePath("password");
    writeBytes(passwordFile, (password + QLatin1Char('\n')).toUtf8());
    if (!otherUser().isEmpty()) {
        const passwd* user = getpwnam("nobody");  // NOLINT(concurrency-mt-unsafe): one thread
        for (const QString& path : {m_folder.path(), passwordFile}) {
            if (user == nullptr || chown(QFile::encodeName(path).constData(), user->pw_uid, user->pw_gid) != 0) {
                m_output = QStringLiteral("cannot give files to nobody");
                return;
            }
        }
    }
    m_made = run("initdb",
                 {"--pgdata", m_folder.filePath("data"), "--username", "archive", "--pwfile", passwordFile, "--auth",
                  password.isEmpty() ? "trust" : "scram-sha-256", "--no-sync", "--no-locale", "--encoding=UTF8"});
}

PostgresServer::~PostgresServer()
{
    stop();
}

bool PostgresServer::start()
{
    const QString options =
        QStringLiteral("-k %1 -c listen_addresses= -c fsync=off -c shared_buffers=8MB").arg(m_folder.path());
    return m_made && run("pg_ctl", {"start", "--wait", "--pgdata", m_folder.filePath("data"), "--log",
                                    m_folder.filePath("log"), "--options", options});
}

void PostgresServer::stop()
{
    if (m_made && QFile::exists(m_folder.filePath("data/postmaster.pid"))) {
        run("pg_ctl", {"stop", "--wait", "--mode", "immediate", "--pgdata", m_folder.filePath("data")});
    }
}

QString PostgresServer::registry() const
{
    return QStringLiteral("postgresql:///postgres?user=archive&host=") + m_folder.path();
}

bool PostgresServer::run(const QString& program, const QStringList& arguments)
{
    QString command = programs() + QLatin1Char('/') + program;
    QStringList all = arguments;
    if (!otherUser().isEmpty()) {
        all = QStringList{"--reuid=nobody", "--regid=nogroup", "--clear-groups", command} + arguments;
        command = QStringLiteral("setpriv");
    }
    QProcess process;
    process.setWorkingDirectory(m_folder.path());
    process.setProcessChannelMode(QProcess::MergedChannels);
    // The server keeps what it inherits; a pipe would never end.
    process.setStandardOutputFile(m_folder.filePath("output"));
    process.start(command, all);
    constexpr int Patience = 60'000;
    const bool good =
        process.waitForFinished(Patience) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    m_output = QString::fromLocal8Bit(readFile(m_folder.filePath("output")));
    return good;
}

}  // namespace ArchiveTests
