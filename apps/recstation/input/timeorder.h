// The times that an input tells, and how far some of them go back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "input/badlines.h"

namespace recstation {

/// Recorders are handed no time that is earlier than one before it: what goes back is recorded at the latest time so
/// far, and counted here. Times are microseconds since 1970 UTC.
class TimeOrder {
public:
    /// @param source its name stands in front of what is thrown
    /// @param strict the first time that goes back is thrown
    explicit TimeOrder(std::string source, bool strict) : m_source(std::move(source)), m_strict(strict) {}

    /// Notes the time of a row.
    /// @return the latest so far
    /// @throws std::runtime_error that names the line when strict
    unsigned long long take(unsigned long long time, std::size_t line);
    [[nodiscard]] std::uint64_t rowsBack() const { return m_rows; }
    /// How many rows go back and by how much.
    [[nodiscard]] std::string sentence() const;
    /// Tells that at the end of the input, if any does. It has an effect once.
    void finish(const BadLines& to);

private:
    std::string m_source;
    bool m_strict;
    unsigned long long m_latest = 0;
    unsigned long long m_most = 0;
    std::uint64_t m_rows = 0;
    bool m_finished = false;
};

}  // namespace recstation
