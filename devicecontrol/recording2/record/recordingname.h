// The file name of a recording: texts of the station, which may hold anything, and the time.
#pragma once

#include <cstdint>

#include <QDateTime>
#include <QString>

namespace Recording2 {

/// The file name of a recording that starts at a moment, without directory: texts, time, ".tmp". Blanks become "_", and
/// so does what a file name cannot hold; texts that are too long are cut.
/// @param prefix device caption with its "__", or empty
/// @param localTime name it by local time instead of UTC with the local offset
[[nodiscard]] QString RecordingFileName(const QString& prefix, const QString& deviceName, const QDateTime& utcNow,
                                        bool localTime);
/// "+hh-mm" east of Greenwich, "-hh-mm" otherwise (also for 0).
[[nodiscard]] QString UtcOffsetSuffix(std::int64_t offsetSeconds);

}  // namespace Recording2
