// Traces of recording files, which nobody sees unless they are switched on.
#include "fileaccesstrace.h"

#include <vkbase/trace.h>

#include "filenames.h"

namespace Recording2 {

bool FileAccessTrace::enabled()
{
    return (ErrorHandler::Instance().TraceMask() & ErrorHandler::RecordingTraces) != 0;
}

void FileAccessTrace::tell(const QString& what, const std::string& path, std::uint16_t line)
{
    if (enabled()) {
        _Q_Trace(QStringLiteral("CFileAccess: %1: %2").arg(what, FileNames::fromBytes(path)), Source, line);
    }
}

void FileAccessTrace::failure(const QString& what, const std::string& path, System::Error error, std::uint16_t line)
{
    if (enabled()) {
        _Q_Trace(QStringLiteral("CFileAccess: %1: %2: %3")
                     .arg(what, FileNames::fromBytes(path), QString::fromStdString(System::errorText(error))),
                 Source, line);
    }
}

}  // namespace Recording2
