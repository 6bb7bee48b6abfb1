// Arguments and standard streams of Windows.
#include "program.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <cstdlib>
#include <memory>

#include "text_windows.h"

namespace System {

namespace {

UINT codePageBefore = 0;

}  // namespace

// The C runtime has the arguments in a code page that lacks most characters.
std::vector<std::string> argumentsOf(int /*argc*/, const char* const* /*argv*/)
{
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&::LocalFree)> wide(::CommandLineToArgvW(::GetCommandLineW(), &count),
                                                               ::LocalFree);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(inUtf8(std::wstring_view(wide.get()[i])));
    }
    return arguments;
}

// Handles are no small numbers here: no file takes the place of a missing stream. A console keeps its code page when
// the program ends.
void prepareStandardStreams(ClosedStream /*closed*/)
{
    static_cast<void>(::_setmode(static_cast<int>(Stream::Output), _O_BINARY));
    static_cast<void>(::_setmode(static_cast<int>(Stream::Errors), _O_BINARY));
    codePageBefore = ::GetConsoleOutputCP();
    if (codePageBefore != 0 && ::SetConsoleOutputCP(CP_UTF8) != FALSE) {
        static_cast<void>(std::atexit([] { ::SetConsoleOutputCP(codePageBefore); }));
    }
}

bool isTerminal(Stream stream)
{
    const DWORD handle = stream == Stream::Input    ? STD_INPUT_HANDLE
                         : stream == Stream::Output ? STD_OUTPUT_HANDLE
                                                    : STD_ERROR_HANDLE;
    DWORD mode = 0;
    return ::GetConsoleMode(::GetStdHandle(handle), &mode) != FALSE;
}

void ignoreBrokenPipes()
{
}

}  // namespace System
