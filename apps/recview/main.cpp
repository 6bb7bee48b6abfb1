// recview: shows recordings in the browser.
#include <QCoreApplication>

#include <system/program.h>
#include <terminaltext/qtnames.h>

#include "program.h"

int main(int argc, char* argv[])
{
    System::prepareStandardStreams(System::ClosedStream::RefusesAll);
    TerminalText::takeFileNamesInUtf8();
    const QCoreApplication application(argc, argv);
    return static_cast<int>(RecView::runProgram(System::argumentsOf(argc, argv)));
}
