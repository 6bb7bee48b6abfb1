// Lines out of a stream of bytes, with bounded memory.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "input/byteinput.h"

namespace RecStation {

class LineReader {
public:
    /// @param longestLine bytes; a longer line is passed over as a whole
    LineReader(ByteInput input, std::size_t longestLine) : m_input(std::move(input)), m_longestLine(longestLine) {}

    /// Goes to the next line; the last one may lack its line feed. Hands on what the input throws, but DamagedInput.
    /// @return false at the end
    [[nodiscard]] bool next();
    /// Without its line feed.
    /// @throws LineError where it is too long, or the input cannot be understood from within it on: the end follows
    /// then
    [[nodiscard]] const std::string& line() const;
    [[nodiscard]] std::size_t number() const { return m_number; }   ///< of the line, from 1
    [[nodiscard]] bool terminated() const { return m_terminated; }  ///< the line had its line feed

private:
    bool readLine();
    bool fill();
    void keep(std::size_t end);

    ByteInput m_input;
    std::size_t m_longestLine;
    std::vector<char> m_buffer = std::vector<char>(std::size_t{64} * 1024);
    std::size_t m_position = 0;  // of the next unread byte in the buffer
    std::size_t m_filled = 0;
    std::size_t m_number = 0;
    std::string m_line;
    std::string m_problem;   // with the line
    bool m_damaged = false;  // within the line
    bool m_terminated = false;
};

}  // namespace RecStation
