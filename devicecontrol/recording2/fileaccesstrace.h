// What is traced of recording files.
#pragma once

#include <cstdint>
#include <string>

#include <QString>

#include <system/nativefile.h>

namespace Recording2::FileAccessTrace {

inline const QString Source = QStringLiteral("devicecontrol\\recording2\\fileaccess");

[[nodiscard]] bool enabled();
/// "CFileAccess: WHAT: PATH"
void tell(const QString& what, const std::string& path, std::uint16_t line);
/// "CFileAccess: WHAT: PATH: the system's reason"
void failure(const QString& what, const std::string& path, System::Error error, std::uint16_t line);

}  // namespace Recording2::FileAccessTrace
