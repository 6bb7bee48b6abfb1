// The inputs of the source "sweep": one, or several files one after the other.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "input/linereader.h"
#include "sources/sweep/sweeprow.h"

namespace RecStation {

/// Several files are read in the order of the times of their first rows, whatever their names; those of one time as
/// they were given. Only one is open at a time.
class SweepFiles {
public:
    /// Takes a sentence about an input.
    using Tell = std::function<void(const std::string& sentence)>;

    /// Opens the first. Files without any row are told, and come last.
    /// @param files UTF-8, one at least; the only one may be "-" or a pipe
    /// @throws UsageError when "-" is one of several; std::runtime_error when one cannot be read, or is no file and one
    /// of several
    SweepFiles(const std::vector<std::string>& files, long long utcOffsetUs, const Tell& tell);

    [[nodiscard]] LineReader& lines() { return *m_lines; }
    /// Opens the next file; false when there is none.
    [[nodiscard]] bool openNext();
    /// How messages name the open file where there are several; empty for one.
    [[nodiscard]] std::string name() const;
    /// The file that is read first, as it was given.
    [[nodiscard]] const std::string& first() const { return m_files.front(); }
    [[nodiscard]] std::size_t count() const { return m_files.size(); }
    [[nodiscard]] bool isLive() const { return m_files.front() == "-"; }

    /// The latest time of all rows, microseconds since 1970 UTC; reads all files.
    [[nodiscard]] std::optional<unsigned long long> lastTime() const;

private:
    void sortByTime(const Tell& tell);
    void open();

    std::vector<std::string> m_files;
    long long m_utcOffsetUs;
    std::size_t m_current = 0;
    std::optional<LineReader> m_lines;
};

}  // namespace RecStation
