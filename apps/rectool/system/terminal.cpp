// Colours where the user wants them; long output goes through the pager that the user has chosen.
#include "terminal.h"

#include <iostream>

#include <system/program.h>

#include "printing/output.h"

#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <string>

#include <QByteArray>
#include <QStandardPaths>
#include <QString>
#endif

namespace RecTool {

bool outputHasColours()
{
#if defined(_WIN32)
    return false;  // consoles of older versions would show the codes
#else
    const QByteArray terminal = qgetenv("TERM");
    return System::isTerminal(System::Stream::Output) && qgetenv("NO_COLOR").isEmpty() && !terminal.isNull() &&
           terminal != "dumb";
#endif
}

#if defined(_WIN32)

Pager::Pager(bool /*wanted*/)
{
}

Pager::~Pager() = default;

#else

namespace {

/// Empty where there is to be none.
std::string pagerCommand()
{
    for (const char* name : {"RECTOOL_PAGER", "PAGER"}) {
        if (qEnvironmentVariableIsSet(name)) {
            const std::string given = qgetenv(name).toStdString();
            return given == "cat" ? "" : given;
        }
    }
    return "less";
}

[[noreturn]] void becomePager(const std::string& command, int input)
{
    static_cast<void>(dup2(input, STDIN_FILENO));
    // As others do: short output stays on the screen, colours are colours.
    if (!qEnvironmentVariableIsSet("LESS")) {
        qputenv("LESS", "FRX");
    }
    static_cast<void>(execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr)));
    _exit(127);
}

bool isThere(const std::string& command)
{
    const QString program = QString::fromLocal8Bit(command.substr(0, command.find(' ')).c_str());
    return !QStandardPaths::findExecutable(program).isEmpty();
}

}  // namespace

Pager::Pager(bool wanted)
{
    const std::string command = wanted && System::isTerminal(System::Stream::Output) ? pagerCommand() : "";
    std::array<int, 2> ends{};
    if (command.empty() || !isThere(command) || pipe2(ends.data(), O_CLOEXEC) != 0) {
        return;
    }
    std::cout.flush();
    const pid_t process = fork();
    if (process == 0) {
        becomePager(command, ends[0]);
    }
    if (process > 0) {
        m_process = process;
        m_output = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
        m_errors = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
        static_cast<void>(dup2(ends[1], STDOUT_FILENO));
        if (System::isTerminal(System::Stream::Errors)) {  // or the two would write over each other
            static_cast<void>(dup2(ends[1], STDERR_FILENO));
        }
        letReaderLeave();
        System::ignoreBrokenPipes();
        static_cast<void>(std::signal(SIGINT, SIG_IGN));  // it is for the pager, whose end ends the writing
    }
    close(ends[0]);
    close(ends[1]);
}

Pager::~Pager()
{
    if (m_process == 0) {
        return;
    }
    std::cout.flush();
    std::cerr.flush();
    static_cast<void>(dup2(m_output, STDOUT_FILENO));  // which ends what the pager reads
    static_cast<void>(dup2(m_errors, STDERR_FILENO));
    close(m_output);
    close(m_errors);
    while (waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) {
    }
}

#endif

}  // namespace RecTool
