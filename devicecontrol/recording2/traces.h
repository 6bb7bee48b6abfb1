// What the library traces, which nobody sees unless it is switched on.
#pragma once

#include <cstdint>
#include <string>

#include <QString>

#include <system/nativefile.h>

namespace Recording2::Traces {

// Where a trace comes from, as operators know it.
constexpr const char* FileAccess = "devicecontrol\\recording2\\fileaccess";
constexpr const char* Recorder = "devicecontrol\\recording2\\recording";
constexpr const char* LoadInterface = "devicecontrol\\recording2\\loadinterface";

[[nodiscard]] bool enabled();
/// What the exception that is being handled says. Observers of values may throw anything.
[[nodiscard]] std::string textOfException();
void tell(const char* source, const QString& message, std::uint16_t line);
/// "CFileAccess: WHAT: PATH", and the system's reason where there is one.
void tellOfFile(const QString& what, const std::string& path, std::uint16_t line, System::Error reason = 0);

}  // namespace Recording2::Traces
