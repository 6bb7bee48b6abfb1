// recstation: records what its sources measure, and writes a summary of the run.
#include <cstdlib>
#include <string>
#include <vector>

#include <QCoreApplication>
#include <QTextCodec>

#include "archive/archiveservice.h"
#include "program.h"
#include "system/hostsystem.h"

namespace {

std::vector<std::string> argumentsInUtf8()
{
    std::vector<std::string> arguments;
    for (const QString& argument : QCoreApplication::arguments().mid(1)) {
        arguments.push_back(argument.toStdString());
    }
    return arguments;
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
    const recstation::ExitCode code = recstation::runProgram(argumentsInUtf8());
    if (recstation::ArchiveService::leftThreadBehind()) {
        std::_Exit(static_cast<int>(code));  // it may still use what the end of the process would take away
    }
    return static_cast<int>(code);
}
