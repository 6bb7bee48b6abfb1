// recstation: records what its sources measure, and writes a summary of the run.
#include <cstdlib>

#include <QCoreApplication>

#include <system/program.h>
#include <terminaltext/qtnames.h>

#include "archive/archiveservice.h"
#include "live/sourcethreads.h"
#include "program.h"

int main(int argc, char* argv[])
{
    System::prepareStandardStreams(System::ClosedStream::TakesAll);
    TerminalText::takeFileNamesInUtf8();
    const QCoreApplication application(argc, argv);
    const RecStation::ExitCode code = RecStation::runProgram(System::argumentsOf(argc, argv));
    if (RecStation::ArchiveService::leftThreadBehind() || RecStation::SourceThreads::leftThreadBehind()) {
        std::_Exit(static_cast<int>(code));  // it may still use what the end of the process would take away
    }
    return static_cast<int>(code);
}
