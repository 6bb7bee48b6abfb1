// zelvod: moves finished recordings to the archive's storage until it is told to stop.
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include <QCoreApplication>
#include <QTextCodec>

#include <terminaltext/terminaltext.h>

#include "commandline.h"
#include "service.h"
#include "system/stop.h"

namespace {

std::vector<std::string> argumentsInUtf8()
{
    std::vector<std::string> arguments;
    for (const QString& argument : QCoreApplication::arguments().mid(1)) {
        arguments.push_back(argument.toStdString());
    }
    return arguments;
}

void complain(const QString& sentence)
{
    const std::string line = "zelvod: " + TerminalText::oneLine(sentence.toStdString()) + '\n';
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
}

bool write(const std::string& text)
{
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
}

zelvod::ExitCode run(const zelvod::Options& options)
{
    try {
        zelvod::watchForStop();
    } catch (const std::exception& error) {
        complain(QString::fromUtf8(error.what()));
        return zelvod::ExitCode::CannotRun;
    }
    return zelvod::runService(options, {zelvod::stopRequested, zelvod::waitForStop, write, complain});
}

}  // namespace

int main(int argc, char* argv[])
{
#if !defined(_WIN32)
    // File names are UTF-8 whatever the locale says, as the recorder takes them.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    zelvod::useBinaryStreams();
    const QCoreApplication application(argc, argv);
    const zelvod::CommandLine commandLine = zelvod::parseCommandLine(argumentsInUtf8());
    const zelvod::ExitCode code = commandLine.options ? run(*commandLine.options) : commandLine.exitCode;
    return static_cast<int>(code);
}
