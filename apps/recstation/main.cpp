// recstation: records what its sources measure, and writes a summary of the run.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include <QCoreApplication>
#include <QTextCodec>

#include "archive/archiveservice.h"
#include "commandline.h"
#include "progress.h"
#include "station.h"
#include "summary.h"
#include "system/hostsystem.h"

namespace {

using recstation::ExitCode;

std::vector<std::string> argumentsInUtf8()
{
    std::vector<std::string> arguments;
    for (const QString& argument : QCoreApplication::arguments().mid(1)) {
        arguments.push_back(argument.toStdString());
    }
    return arguments;
}

bool writeSummary(const recstation::Summary& summary, const recstation::Options& options,
                  recstation::Messages& messages)
{
    for (const QString& remark : summary.remarks(!options.quiet)) {
        messages.message(remark);
    }
    const std::string text = options.json ? summary.json() : summary.fileLines().toStdString();
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        messages.message(QStringLiteral("cannot write the summary to the standard output"));
        return false;
    }
    return true;
}

// A run that did not even begin, told to machines in the shape of every other.
ExitCode reportFailure(const std::exception& error, const recstation::Options& options, recstation::Messages& messages)
{
    if (options.json) {
        recstation::Summary summary;
        summary.failure = QString::fromUtf8(error.what());
        writeSummary(summary, options, messages);
    } else {
        messages.message(QString::fromUtf8(error.what()));
    }
    return dynamic_cast<const recstation::UsageError*>(&error) != nullptr ? ExitCode::Usage : ExitCode::CannotRun;
}

ExitCode runProgram(const recstation::Options& options)
{
    recstation::Messages messages(recstation::standardErrorIsTerminal(), options.quiet);
    try {
        recstation::Station station(options, messages);
        const recstation::Summary summary = station.run();
        const bool written = writeSummary(summary, options, messages);
        return written || summary.exitCode() != ExitCode::Success ? summary.exitCode() : ExitCode::Incomplete;
    } catch (const std::exception& error) {
        return reportFailure(error, options, messages);
    }
}

}  // namespace

int main(int argc, char* argv[])
{
    recstation::prepareStandardStreams();
#if !defined(_WIN32)
    // File names are UTF-8 whatever the locale says, as the recorder takes them.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    const QCoreApplication application(argc, argv);
    const recstation::CommandLine commandLine = recstation::parseCommandLine(argumentsInUtf8());
    const ExitCode code = commandLine.options ? runProgram(*commandLine.options) : commandLine.exitCode;
    if (recstation::ArchiveService::leftThreadBehind()) {
        std::_Exit(static_cast<int>(code));  // it may still use what the end of the process would take away
    }
    return static_cast<int>(code);
}
