// Records out of bytes of which there are more every time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "../../format/bytesource.h"

namespace Recording2::Inspection {

/// Some bytes of a recording, in which records are looked for by their position.
class RecordWindow {
public:
    struct Bytes {
        std::int32_t code = 0;
        std::string_view data;  ///< until the next load
        std::int64_t end = 0;   ///< position behind the record
    };

    /// The record there, read strictly, if what is loaded holds all of it.
    [[nodiscard]] std::optional<Bytes> at(std::int64_t position);
    /// Loads what lies there: what at() missed last, and more the longer the reading goes on from one load to the next.
    void load(Format::ByteSource& source, std::int64_t position);
    /// What comes next is little: the reader has caught up.
    void beginSmall() { m_atOnce = SmallestLoad; }

private:
    static constexpr std::size_t SmallestLoad = 4096;

    std::string m_bytes;
    std::int64_t m_begin = 0;
    std::size_t m_atOnce = SmallestLoad;
    std::size_t m_missed = 0;  // bytes of a record that were not all there
};

}  // namespace Recording2::Inspection
