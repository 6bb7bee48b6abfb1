// Whether the terminal has colours, and the user wants them.
#include "terminal.h"

#include <QByteArray>

#include <system/program.h>

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

}  // namespace RecTool
