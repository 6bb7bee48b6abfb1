// Starting recview, passing its address on, and ending it.
#include "viewer.h"

#include <utility>

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QProcess>
#include <QThread>

namespace RecStation {

namespace {

QString viewerProgram()
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("recview"));
}

constexpr int PatienceMs = 1'000;

}  // namespace

Viewer::Viewer(const QStringList& directories, int port)
{
    if (!QFileInfo(viewerProgram()).isExecutable()) {
        tell(QStringLiteral("warning: there is no page, as recview is not beside this program"));
        return;
    }
    QStringList arguments = {QStringLiteral("--quiet"), QStringLiteral("--until-input-ends"), QStringLiteral("--port"),
                             QString::number(port), QStringLiteral("--")};
    arguments += directories;
    m_thread.reset(QThread::create([this, arguments] { run(arguments); }));
    m_thread->start();
}

Viewer::~Viewer()
{
    if (m_thread != nullptr) {
        m_thread->quit();
        m_thread->wait();
    }
}

std::optional<QString> Viewer::news()
{
    if (!m_hasNews.load(std::memory_order_relaxed)) {
        return std::nullopt;
    }
    const std::lock_guard lock(m_mutex);
    m_hasNews = false;
    return std::exchange(m_news, {});
}

void Viewer::tell(const QString& sentence)
{
    const std::lock_guard lock(m_mutex);
    m_news += (m_news.isEmpty() ? QString() : QStringLiteral("; ")) + sentence;
    m_hasNews = true;
}

void Viewer::run(const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QObject::connect(&process, &QProcess::readyReadStandardOutput, &process, [&] {
        while (process.canReadLine()) {
            tell(QStringLiteral("the recordings show at ") + QString::fromUtf8(process.readLine()).trimmed());
        }
    });
    QObject::connect(&process, &QProcess::errorOccurred, &process, [&](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            tell(QStringLiteral("warning: there is no page, as recview cannot be started: ") + process.errorString());
        }
    });
    QObject::connect(&process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), &process,
                     [&](int code, QProcess::ExitStatus status) {
                         if (status != QProcess::NormalExit || code != 0) {  // Ctrl-C reaches both
                             tell(QStringLiteral("warning: recview has ended, and the page with it"));
                         }
                     });
    process.start(viewerProgram(), arguments);
    QEventLoop().exec();  // until the thread is to quit
    process.disconnect();
    process.closeWriteChannel();
    if (process.state() != QProcess::NotRunning && !process.waitForFinished(PatienceMs)) {
        process.kill();
        process.waitForFinished(PatienceMs);
    }
}

}  // namespace RecStation
