// What cannot be used: errors of input and command line; lines, told one by one while there are few, counted always.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

#include <QString>

namespace RecStation {

/// Says in one sentence why a line cannot be used.
class LineError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Of an input that is to be read strictly: it ends the run, also where other sources could go on.
class StrictError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Something on the command line that cannot be used, found out only when configuration or files were read.
class UsageError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Takes one sentence about the input, with the source's name in front.
using InputReport = std::function<void(const QString& sentence)>;

class BadLines {
public:
    /// @param source its name stands before every sentence
    /// @param strict the first bad line is thrown as StrictError
    BadLines(std::string source, bool strict, InputReport report);

    /// From now on messages about lines name this input too, one of several; empty: none.
    void nameInput(std::string name) { m_input = std::move(name); }
    /// Counts a bad line and tells of it while it is one of the first twenty.
    /// @throws std::runtime_error with the same sentence when strict
    void add(std::size_t line, const std::string& problem);
    /// Tells how many were not told one by one. To be called at the end, has an effect once.
    void finish();
    /// Tells anything else about the input.
    void say(const std::string& sentence) const;
    [[nodiscard]] std::uint64_t count() const { return m_count; }
    [[nodiscard]] bool isStrict() const { return m_strict; }
    /// What stands before a sentence about a line: "sweep: night.csv: line 7: ".
    [[nodiscard]] std::string at(std::size_t line) const;

private:
    std::string m_source;
    std::string m_input;
    bool m_strict;
    InputReport m_report;
    std::uint64_t m_count = 0;
    bool m_finished = false;
};

}  // namespace RecStation
