// zelvod: moves finished recordings to the archive's storage until it is told to stop.
#include <QCoreApplication>

#include <system/program.h>
#include <terminaltext/qtnames.h>

#include "commandline.h"

int main(int argc, char* argv[])
{
    System::prepareStandardStreams(System::ClosedStream::RefusesAll);
    TerminalText::takeFileNamesInUtf8();
    const QCoreApplication application(argc, argv);
    const Zelvod::CommandLine commandLine = Zelvod::parseCommandLine(System::argumentsOf(argc, argv));
    return static_cast<int>(commandLine.options ? Zelvod::runService(*commandLine.options) : commandLine.exitCode);
}
