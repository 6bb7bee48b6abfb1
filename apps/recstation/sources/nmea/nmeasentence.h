// An NMEA 0183 sentence: its type and fields, with the checksum verified.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "input/badlines.h"

namespace RecStation {

/// Views into the line.
struct NmeaSentence {
    std::string_view address;              ///< with the talker: "GPGGA"
    std::string_view type;                 ///< without the talker: "GGA"; "PASHR" as it is, like all proprietary ones
    std::vector<std::string_view> fields;  ///< after the type
    bool hasChecksum = false;

    /// Empty when the sentence has fewer fields.
    [[nodiscard]] std::string_view field(std::size_t index) const
    {
        return index < fields.size() ? fields[index] : std::string_view();
    }
};

/// Nothing for a line without a sentence: blank, or a comment after #, or one that begins with ! (AIS). A tag block in
/// front of a sentence is passed over.
/// @throws LineError when the line is no sentence, or its checksum is wrong
[[nodiscard]] std::optional<NmeaSentence> parseNmeaSentence(std::string_view line);

}  // namespace RecStation
