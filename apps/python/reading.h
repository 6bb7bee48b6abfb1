// One call's look at recordings: which files, types and times, and what was found damaged on the way.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "rectool/replay/recordings.h"
#include "refusal.h"

namespace RecPython {

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
