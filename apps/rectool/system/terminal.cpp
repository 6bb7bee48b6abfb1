#include "terminal.h"

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace RecTool {

bool errorsGoToTerminal()
{
    constexpr int StandardError = 2;
#if defined(_WIN32)
    return _isatty(StandardError) != 0;
#else
    return isatty(StandardError) != 0;
#endif
}

}  // namespace RecTool
