// The words of traces, which are put together for all alike.
#include "traces.h"

#include <exception>

#include <vkbase/trace.h>

#include "filenames.h"

namespace Recording2 {

bool Traces::enabled()
{
    return (ErrorHandler::Instance().TraceMask() & ErrorHandler::RecordingTraces) != 0;
}

std::string Traces::textOfException()
{
    try {
        throw;
    } catch (const std::exception& exception) {
        return exception.what();
    } catch (...) {
        return "unknown exception";
    }
}

void Traces::tell(const char* source, const QString& message, std::uint16_t line)
{
    if (enabled()) {
        _Q_Trace(message, QString::fromLatin1(source), line);
    }
}

void Traces::tellOfFile(const QString& what, const std::string& path, std::uint16_t line, System::Error reason)
{
    const QString message = QStringLiteral("CFileAccess: %1: %2").arg(what, FileNames::fromBytes(path));
    const QString why =
        reason == 0 ? QString() : QStringLiteral(": ") + QString::fromStdString(System::errorText(reason));
    tell(FileAccess, message + why, line);
}

}  // namespace Recording2
