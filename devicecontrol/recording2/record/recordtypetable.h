// The record type table: the 48 keywords that a recorder knows, their value paths and their type ids.
#pragma once

#include <array>
#include <cstdint>

namespace Recording2 {

/// Type ids that the recorder treats specially. They are stored in recordings.
enum TypeId : std::int32_t {
    UnknownType = 0,
    RfSpectrum = 1,
    IfSpectrum = 2,
    DrvCommands = 3,
    StartFreq = 11,
    StopFreq = 12,
    StartLevel = 14,
    StopLevel = 15,
    RfYLimit = 16,
    DfSpectrum = 20,
    IfSpan = 32,
    Frequency = 46,
    DfSpectrumSample = 48,
};

struct RecordType {
    const char* keyword;
    const char* defaultPath;  ///< below the recorder's value path, unless it begins with "/"
    std::int32_t id;
};

/// The built-in rows, in their authors' order.
extern const std::array<RecordType, 48> RecordTypeTable;

}  // namespace Recording2
