// Setting up or running the mover under a lock, with pauses between its runs.
#include "service.h"

#include <algorithm>
#include <cstdio>

#include <QDateTime>
#include <QLockFile>

#include <system/stopsignal.h>
#include <terminaltext/terminaltext.h>
#include <zelvo/archive.h>

#include "report.h"

namespace Zelvod {

namespace {

using System::StopSignal;
using Zelvo::MoverReport;

void complain(const QString& sentence)
{
    const std::string line = "zelvod: " + TerminalText::oneLine(sentence.toStdString()) + '\n';
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
}

// @return false when nobody can read it any more
bool write(const std::string& text)
{
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
}

class Service {
public:
    Service(const Options& options, const Zelvo::ArchiveConfiguration& configuration)
        : m_options(options), m_mover(configuration)
    {
    }

    ExitCode runOnce()
    {
        const MoverReport report = m_mover.runPending(StopSignal::requested);
        const bool told = tell(report);
        if (report.otherMover) {
            complain(QStringLiteral("another mover of this station is at work"));
        }
        const bool complete = report.failed == 0 && report.problem.isEmpty() && !report.otherMover &&
                              !report.interrupted && report.nextRunMs < 0;
        return complete && told ? ExitCode::Success : ExitCode::Incomplete;
    }

    ExitCode runUntilStopped(const StopSignal& stop)
    {
        while (!StopSignal::requested()) {
            const MoverReport report = m_mover.runPending(StopSignal::requested);
            if (!tell(report)) {
                return ExitCode::Incomplete;
            }
            if (!StopSignal::requested()) {
                stop.wait(pauseAfter(report));
            }
        }
        return ExitCode::Success;
    }

private:
    [[nodiscard]] std::int64_t pauseAfter(const MoverReport& report) const
    {
        constexpr std::int64_t Least = 100;
        const std::int64_t due =
            report.nextRunMs < 0 ? m_options.everyMs : report.nextRunMs - QDateTime::currentMSecsSinceEpoch();
        return std::clamp(due, std::min(Least, m_options.everyMs), m_options.everyMs);
    }

    // @return false when nobody can read it any more
    bool tell(const MoverReport& report)
    {
        bool told = true;
        if (m_options.json) {
            const bool worthIt = m_options.once || isNews(report, m_lastProblem);
            told = !worthIt || write(jsonLine(report, QDateTime::currentMSecsSinceEpoch()));
        } else {
            const QString lines = text(report, m_lastProblem, m_options.quiet);
            told = lines.isEmpty() || write(lines.toStdString());
        }
        m_lastProblem = report.problem;
        return told;
    }

    const Options& m_options;
    Zelvo::Mover m_mover;
    QString m_lastProblem;
};

ExitCode run(const Options& options)
{
    const StopSignal stop;
    const Zelvo::ArchiveConfiguration configuration = Zelvo::LoadArchiveConfiguration(options.config);
    if (options.setUp) {
        Zelvo::SetUpArchive(configuration);
        return ExitCode::Success;
    }
    QLockFile only(configuration.directory + QStringLiteral("/zelvod.lock"));
    only.setStaleLockTime(0);
    if (!only.tryLock(0)) {
        complain(only.error() == QLockFile::LockFailedError
                     ? QStringLiteral("another zelvod serves %1").arg(configuration.directory)
                     : QStringLiteral("cannot write into %1; is the archive set up (zelvod --set-up)?")
                           .arg(configuration.directory));
        return ExitCode::CannotRun;
    }
    Service service(options, configuration);
    return options.once ? service.runOnce() : service.runUntilStopped(stop);
}

}  // namespace

ExitCode runService(const Options& options)
{
    try {
        return run(options);
    } catch (const std::exception& error) {
        complain(QString::fromUtf8(error.what()));
        return ExitCode::CannotRun;
    }
}

}  // namespace Zelvod
