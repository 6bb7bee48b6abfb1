// MappingGenerator: rebuilds a bearing map from a recording.
#pragma once

#include <memory>

#include <recording2/export.h>
#include <values/maps.h>

namespace Recording2 {

class CFileAccess;

/// Replays the direction-finding records of a recording into a bearing map.
///
/// Copies share the recording that is loaded. One thread at a time uses a generator and its copies. Times are
/// microseconds since 1970-01-01 00:00:00 UTC.
class RECORDING2_EXPORT MappingGenerator {
public:
    using BearingMap = values::FastValueMap<values::Bearing, values::BearingHandler>;

    MappingGenerator() = default;
    MappingGenerator(const MappingGenerator&) = default;
    MappingGenerator& operator=(const MappingGenerator&) = default;
    virtual ~MappingGenerator() = default;

    /// Opens a recording in place of the one before.
    /// @param startTime, stopTime receive the span of its header; untouched when false is returned
    /// @param file path, as CFileAccess takes it
    /// @param second path of the status values, UTF-8, may be null
    /// @return whether it is a recording that can be read
    bool LoadRecording(long long& startTime, long long& stopTime, const char* file, const char* second);

    /// Applies the channel range in force at the start time, then every DFSPECTRUM record from there to the stop time.
    /// From the start that LoadRecording tells, the first record is the first; to its stop, the last record is the
    /// last. Nothing happens without a loaded recording or when it has no channel range table. The map is not emptied
    /// first. A record that cannot be applied is passed over.
    void RequestMapping(BearingMap& map, long long startTime, long long stopTime);

private:
    std::shared_ptr<CFileAccess> m_file;
};

}  // namespace Recording2
