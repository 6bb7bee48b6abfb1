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

/// What a line of a log holds. Views into the line.
struct NmeaLine {
    std::string_view front;      ///< what stands before the first sentence: a time of the logger, or a tag block
    std::string_view sentences;  ///< from the first one on; empty when there is none
};

/// @throws LineError when the line has no sentence and is neither blank, nor a comment after #, nor AIS (!AIVDM), nor
/// JSON, which the tools of gpsd write before sentences, nor binary
[[nodiscard]] NmeaLine readNmeaLine(std::string_view line);

/// Some bytes are no text: a receiver's data in a form of its own, or noise.
[[nodiscard]] bool isBinary(std::string_view text);

/// Takes the next sentence out of those of a line: several stand in one where line ends were lost.
[[nodiscard]] std::string_view takeNmeaSentence(std::string_view& sentences);

/// One sentence, from the $ on.
/// @throws LineError when it is none, or its checksum is wrong
[[nodiscard]] NmeaSentence parseNmeaSentence(std::string_view text);

}  // namespace RecStation
