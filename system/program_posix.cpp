// Arguments and standard streams of POSIX systems.
#include "program.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace System {

std::vector<std::string> argumentsOf(int argc, const char* const* argv)
{
    return argc < 2 ? std::vector<std::string>() : std::vector<std::string>(argv + 1, argv + argc);
}

void prepareStandardStreams(ClosedStream closed)
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) == -1 && errno == EBADF) {
            // Takes the lowest free number, which is this one. Without it the program runs as it was called.
            [[maybe_unused]] const int opened =
                ::open("/dev/null", closed == ClosedStream::TakesAll ? O_RDWR : O_RDONLY);
        }
    }
}

bool isTerminal(Stream stream)
{
    return ::isatty(static_cast<int>(stream)) == 1;
}

void ignoreBrokenPipes()
{
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
}

}  // namespace System
