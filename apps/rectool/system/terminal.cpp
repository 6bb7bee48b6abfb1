// Whether a stream is a terminal and has colours, and streams made ready for UTF-8.
#include "terminal.h"

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdlib>
#else
#include <unistd.h>

#include <cstdlib>

#include <QByteArray>
#endif

namespace RecTool {

namespace {

constexpr int StandardInput = 0;
constexpr int StandardOutput = 1;
constexpr int StandardError = 2;

#if defined(_WIN32)
UINT codePageBefore = 0;

bool isTerminal(int descriptor)
{
    return _isatty(descriptor) != 0;
}
#else
bool isTerminal(int descriptor)
{
    return isatty(descriptor) != 0;
}
#endif

}  // namespace

bool outputGoesToTerminal()
{
    return isTerminal(StandardOutput);
}

#if defined(_WIN32)
bool outputHasColours()
{
    return false;  // consoles of older versions would show the codes
}
#else
bool outputHasColours()
{
    const QByteArray terminal = qgetenv("TERM");
    return outputGoesToTerminal() && qgetenv("NO_COLOR").isEmpty() && !terminal.isNull() && terminal != "dumb";
}
#endif

bool errorsGoToTerminal()
{
    return isTerminal(StandardError);
}

bool inputComesFromTerminal()
{
    return isTerminal(StandardInput);
}

#if defined(_WIN32)
// A console keeps its code page when the program ends.
void prepareOutput()
{
    static_cast<void>(_setmode(StandardOutput, _O_BINARY));
    static_cast<void>(_setmode(StandardError, _O_BINARY));
    codePageBefore = GetConsoleOutputCP();
    if (codePageBefore != 0 && SetConsoleOutputCP(CP_UTF8) != FALSE) {
        static_cast<void>(std::atexit([] { SetConsoleOutputCP(codePageBefore); }));
    }
}
#else
void prepareOutput()
{
}
#endif

}  // namespace RecTool
