// One call's look at recordings: which files, types and times, what was found damaged on the way, and what ends the
// call: what rectool would say, or the Ctrl-C of whoever waits.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "rectool/printing/exitcode.h"
#include "rectool/printing/output.h"
#include "rectool/replay/recordings.h"

namespace RecPython {

/// Becomes recording2.RequestError or FileError, by the exit code that rectool would end with.
class Refusal : public std::runtime_error {
public:
    Refusal(RecTool::ExitCode code, std::string file, const std::string& sentence)
        : std::runtime_error(sentence), m_code(code), m_file(std::move(file))
    {
    }
    [[nodiscard]] RecTool::ExitCode code() const { return m_code; }
    [[nodiscard]] const std::string& file() const { return m_file; }  ///< empty where it is about none

private:
    RecTool::ExitCode m_code;
    std::string m_file;
};

/// Keeps what rectool's parts complain of, in the thread that calls them. One at a time a thread.
class Kept {
public:
    /// @throws Refusal with what was complained of unless the code is Fine
    void require(RecTool::ExitCode code) const;
    [[noreturn]] void refuse(RecTool::ExitCode code, const std::string& more = {}) const;

private:
    RecTool::Complaints m_complaints;
};

/// Thrown where a signal handler of Python raised something, which is then still set.
struct Interrupted {};

/// Asks Python now and then whether somebody pressed Ctrl-C. Called without the interpreter's lock.
class Patience {
public:
    /// To be called for every record. @throws Interrupted
    void next()
    {
        constexpr std::uint32_t Often = 256;
        if (++m_count % Often == 0) {
            look();
        }
    }

private:
    static void look();

    std::uint32_t m_count = 0;
};

/// Times are texts as rectool takes them; empty: no bound.
struct Request {
    std::vector<std::string> files;
    std::string keyword;  ///< or a number; empty: every type
    std::string device;   ///< empty: the only one
    std::string from;
    std::string to;
    const char* toName = "stop";
};

/// Damage met, file by file.
struct FoundDamage {
    std::string file;
    std::int64_t offset = 0;
    std::string text;
};

/// Reads headers and tables at once. @throws Refusal
class Reading {
public:
    explicit Reading(const Request& request);

    [[nodiscard]] RecTool::Recordings& recordings() { return *m_recordings; }
    [[nodiscard]] const RecTool::Recordings& recordings() const { return *m_recordings; }
    /// The types of the keyword, one a track. @throws Refusal when nothing or more than one device has it
    [[nodiscard]] std::vector<RecTool::TrackType> types() const;
    /// Whether the device that was asked for is that of a track.
    [[nodiscard]] bool isWanted(std::size_t track) const;
    [[nodiscard]] std::string keywordOf(const RecTool::TrackType& type) const;
    [[nodiscard]] const std::string& deviceOf(std::size_t track) const;
    /// Start of the axis in microseconds since 1970 UTC; 0: not known.
    [[nodiscard]] std::int64_t startUs() const;
    /// When a record's value was measured, in microseconds since the start of the axis.
    [[nodiscard]] std::int64_t sinceStartUs(const RecTool::PlacedRecord& placed) const;
    [[nodiscard]] std::vector<FoundDamage> damage() const;

private:
    [[nodiscard]] std::vector<RecTool::TrackType> named() const;
    void requireOneDevice(const std::vector<RecTool::TrackType>& types) const;

    Request m_request;
    std::unique_ptr<RecTool::Recordings> m_recordings;
};

/// What is told of a type beside its arrays.
struct FoundType {
    std::string keyword;
    std::string device;
    std::int64_t startUs = 0;
    std::uint64_t notUnderstood = 0;  ///< records
    std::vector<FoundDamage> damage;
};

/// A look at the records of one keyword of one device.
class TypeReading : public Reading {
public:
    /// @throws Refusal as types
    explicit TypeReading(const Request& request) : Reading(request), m_types(types()) {}

    /// Passes every record in its order, and whether it is of the keyword. Without the interpreter's lock.
    /// @throws Interrupted, and what the visitor throws
    void walk(const std::function<void(const RecTool::PlacedRecord& placed, bool isOfType)>& visit);
    [[nodiscard]] std::string keyword() const { return keywordOf(m_types.front()); }
    /// To be asked for after the walk.
    [[nodiscard]] FoundType found(std::uint64_t notUnderstood) const;

private:
    std::vector<RecTool::TrackType> m_types;
};

}  // namespace RecPython
