// What recstation does from its arguments to its exit code.
#include "program.h"

#include <exception>
#include <memory>

#include <system/program.h>

#include "check/findings.h"
#include "live/sourcethreads.h"
#include "progress.h"
#include "station.h"
#include "summary.h"

namespace RecStation {

namespace {

bool writeSummary(const Summary& summary, const Options& options, Messages& messages)
{
    for (const QString& remark : summary.remarks(!options.quiet)) {
        messages.message(remark);
    }
    if (!writeToStandardOutput(options.json ? summary.json() : summary.fileLines().toStdString())) {
        messages.message(QStringLiteral("cannot write the summary to the standard output"));
        return false;
    }
    return true;
}

// A run that did not even begin, told to machines in the shape of every other.
ExitCode reportFailure(const std::exception& error, const Options& options, Messages& messages)
{
    if (options.json) {
        Summary summary;
        summary.failure = QString::fromUtf8(error.what());
        writeSummary(summary, options, messages);
    } else {
        messages.message(QString::fromUtf8(error.what()));
    }
    return dynamic_cast<const UsageError*>(&error) != nullptr ? ExitCode::Usage : ExitCode::CannotRun;
}

ExitCode record(const Options& options)
{
    const std::unique_ptr<Messages, DeleteUnlessUsed> messages(
        new Messages(System::isTerminal(System::Stream::Errors), options.quiet));
    try {
        const std::unique_ptr<Station, DeleteUnlessUsed> station(new Station(options, *messages));
        const Summary summary = station->run();
        const bool written = writeSummary(summary, options, *messages);
        return written || summary.exitCode() != ExitCode::Success ? summary.exitCode() : ExitCode::Incomplete;
    } catch (const std::exception& error) {
        return reportFailure(error, options, *messages);
    }
}

}  // namespace

ExitCode runProgram(const std::vector<std::string>& arguments)
{
    const CommandLine commandLine = parseCommandLine(arguments);
    if (!commandLine.options) {
        return commandLine.exitCode;
    }
    const Options& options = *commandLine.options;
    return options.task == Task::Check ? checkStation(options) : record(options);
}

}  // namespace RecStation
