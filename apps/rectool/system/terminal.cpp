#include "terminal.h"

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace RecTool {

namespace {

bool isTerminal(int descriptor)
{
#if defined(_WIN32)
    return _isatty(descriptor) != 0;
#else
    return isatty(descriptor) != 0;
#endif
}

}  // namespace

bool errorsGoToTerminal()
{
    constexpr int StandardError = 2;
    return isTerminal(StandardError);
}

bool inputComesFromTerminal()
{
    constexpr int StandardInput = 0;
    return isTerminal(StandardInput);
}

}  // namespace RecTool
