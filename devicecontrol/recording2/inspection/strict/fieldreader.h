// Reading fields strictly: where replay passes over a damaged field, this says what is wrong with it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include <system/nativefile.h>
#include "../../format/cursor.h"

namespace Recording2::Inspection {

/// Fields from a position on, up to a bound that no field may pass. Every field says whether it was sound; when it was
/// not, problem() says why, and the target of a number or time is as it was.
class FieldReader {
public:
    FieldReader(Format::ByteSource& source, std::int64_t position, std::int64_t bound,
                std::size_t bufferBytes = std::size_t{64} * 1024);

    [[nodiscard]] std::int64_t position() const { return m_cursor.position(); }
    [[nodiscard]] std::int64_t bound() const { return m_bound; }
    [[nodiscard]] std::int64_t left() const { return m_bound - position(); }
    void seek(std::int64_t position) { m_cursor.seek(position); }
    void endAt(std::int64_t bound) { m_bound = bound; }

    template <typename Number>
    bool number(Number& target)
    {
        Number value = 0;
        return accept(m_cursor.readNumber(value)) && take(target, value);
    }
    bool time(std::uint64_t& target);
    bool text(std::string& target);  ///< its length, a separator, the bytes
    /// The field of the header that holds such a value.
    template <typename Value>
    bool value(Value& target)
    {
        if constexpr (std::is_same_v<Value, std::string>) {
            return text(target);
        } else if constexpr (std::is_same_v<Value, std::uint64_t>) {
            return time(target);
        } else {
            return number(target);
        }
    }
    bool bytes(std::string& target, std::int64_t length);  ///< length bytes and no separator

    /// The record here. @return false where none is whole; recordProblem() then says why, in one sentence
    bool record(std::int32_t& code, std::string& data);
    /// Where the record at a position ends; 0 when none is whole.
    std::int64_t endOfRecord(std::int64_t position);
    [[nodiscard]] std::string recordProblem() const;

    /// The end of a sentence that names the field: "is not a number".
    [[nodiscard]] const char* problem() const { return m_problem; }
    /// Whether every byte from an offset to an end is this one.
    bool holdsOnly(std::int64_t offset, std::int64_t end, char byte);

private:
    template <typename Value>
    static bool take(Value& target, const Value& value)
    {
        target = value;
        return true;
    }
    bool recordHead(std::int32_t& code, std::int32_t& length);
    bool accept(Format::FieldStatus status);
    bool fail(const char* problem);
    int byteAt(std::int64_t offset);

    Format::ByteSource& m_source;
    Format::Cursor m_cursor;
    std::int64_t m_bound;
    const char* m_problem = "";
    const char* m_part = "";            // of the record that was read last
    std::array<char, 4096> m_window{};  // separators are looked at again, mostly within the same few bytes
    std::int64_t m_windowStart = 0;
    std::int64_t m_windowSize = 0;
};

}  // namespace Recording2::Inspection
