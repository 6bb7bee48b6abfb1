// Lines out of what a peer sends, with bounded memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "live/connection.h"

namespace RecStation {

/// Cuts bytes into lines as they come. Lines that are too long are dropped and counted.
class LineSplitter {
public:
    /// @param longest bytes of a line without its line feed
    explicit LineSplitter(std::size_t longest) : m_longest(longest) {}

    void put(std::string_view bytes);
    /// The next whole line, without line feed and carriage return; good until the next call of anything here.
    [[nodiscard]] std::optional<std::string_view> next();
    [[nodiscard]] bool holdsLine() const { return m_bytes.find('\n', m_taken) != std::string::npos; }
    [[nodiscard]] std::uint64_t tooLong() const { return m_tooLong; }
    void clear();  ///< forgets what was put in, for a new connection; not the count

private:
    std::size_t m_longest;
    std::string m_bytes;
    std::size_t m_taken = 0;  // of m_bytes
    bool m_dropping = false;  // up to the next line feed
    std::uint64_t m_tooLong = 0;
};

/// A connection that gives lines.
class LineConnection {
public:
    explicit LineConnection(std::size_t longest) : m_lines(longest) {}

    void open(const Address& address);  ///< as Connection::open
    void close() noexcept { m_connection.close(); }
    void send(std::string_view bytes) { m_connection.send(bytes); }
    /// Waits for the next line. It is good until the next call of anything here.
    /// @return nothing when the deadline passed before @throws as Connection::read
    [[nodiscard]] std::optional<std::string_view> next(Deadline deadline);
    /// A line has come already: what a flood brought is taken in one step, with next(Deadline::min()), which never
    /// waits.
    [[nodiscard]] bool holdsLine() const { return m_lines.holdsLine(); }
    [[nodiscard]] std::uint64_t tooLong() const { return m_lines.tooLong(); }

private:
    Connection m_connection;
    LineSplitter m_lines;
    std::vector<char> m_buffer;
};

}  // namespace RecStation
