// Lines out of a stream of bytes, with bounded memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "input/byteinput.h"

namespace RecStation {

class LineReader {
public:
    /// Damaged: the input cannot be understood from here on; the line that this cut is dropped, and the end follows.
    enum class Result : std::uint8_t { Line, TooLong, Damaged, End };

    /// @param longestLine bytes; a longer line is passed over as a whole
    LineReader(ByteInput input, std::size_t longestLine);

    /// Reads the next line; the last one may lack its line feed. Hands on what the input throws, but
    /// DamagedInput.
    Result next();
    [[nodiscard]] const std::string& line() const { return m_line; }        ///< without line feed; after Result::Line
    [[nodiscard]] const std::string& problem() const { return m_problem; }  ///< after Result::Damaged
    [[nodiscard]] std::size_t number() const { return m_number; }           ///< of the line just read, from 1
    [[nodiscard]] bool terminated() const { return m_terminated; }          ///< the line just read had its line feed

private:
    Result readLine();
    bool fill();
    void keep(std::size_t end);

    ByteInput m_input;
    std::size_t m_longestLine;
    std::vector<char> m_buffer;
    std::size_t m_position = 0;  // of the next unread byte in the buffer
    std::size_t m_filled = 0;
    std::size_t m_number = 0;
    std::string m_line;
    std::string m_problem;
    bool m_tooLong = false;
    bool m_terminated = false;
};

}  // namespace RecStation
