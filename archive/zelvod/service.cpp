// Setting up or running the mover under a lock, with pauses between its runs; a run as text or JSON line, and whether
// it is news.
#include "service.h"

#include <algorithm>
#include <cstdio>

#include <QDateTime>
#include <QLockFile>

#include <nlohmann/json.hpp>

#include <system/stopsignal.h>
#include <terminaltext/terminaltext.h>

namespace Zelvod {

namespace {

std::string isoTime(std::int64_t milliseconds)
{
    return QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC).toString(Qt::ISODateWithMs).toStdString();
}

nlohmann::json jsonTexts(const QStringList& texts)
{
    nlohmann::json list = nlohmann::json::array();
    for (const QString& text : texts) {
        list.push_back(text.toStdString());
    }
    return list;
}

QString files(std::int64_t count)
{
    return count == 1 ? QStringLiteral("1 file") : QStringLiteral("%1 files").arg(count);
}

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

bool isNews(const Zelvo::MoverReport& report, const QString& lastProblem)
{
    return report.moved > 0 || report.failed > 0 || report.removed > 0 || !report.messages.isEmpty() ||
           report.problem != lastProblem;
}

std::string jsonLine(const Zelvo::MoverReport& report, std::int64_t nowMs)
{
    nlohmann::ordered_json object;
    object["time"] = isoTime(nowMs);
    object["moved"] = report.moved;
    object["bytes"] = report.bytes;
    object["failed"] = report.failed;
    object["waiting"] = report.waiting;
    object["removed"] = report.removed;
    object["problem"] = report.problem.isEmpty() ? nlohmann::json() : nlohmann::json(report.problem.toStdString());
    object["nextTry"] = report.nextRunMs < 0 ? nlohmann::json() : nlohmann::json(isoTime(report.nextRunMs));
    object["messages"] = jsonTexts(report.messages);
    return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
}

QString text(const Zelvo::MoverReport& report, const QString& lastProblem, bool failuresOnly)
{
    QStringList lines = report.messages;
    if (report.problem != lastProblem) {
        lines += report.problem.isEmpty() ? QStringLiteral("all is well again") : report.problem;
    }
    if (!failuresOnly && (report.moved > 0 || report.removed > 0)) {
        QString line = QStringLiteral("moved %1, %2 bytes").arg(files(report.moved)).arg(report.bytes);
        if (report.removed > 0) {
            line += QStringLiteral("; removed %1 whose time was over").arg(files(report.removed));
        }
        lines += report.waiting > 0 ? line + QStringLiteral("; %1 waiting").arg(files(report.waiting)) : line;
    }
    QString printed;
    for (const QString& line : lines) {
        printed += QString::fromStdString(TerminalText::oneLine(line.toStdString())) + QLatin1Char('\n');
    }
    return printed;
}

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
