// One file of a recording as it was found: what it is of, when it was, and what it holds. And recordings as people see
// them: the files that a recorder split one into, as one on a common time axis.
#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>

namespace RecView {

class Overview;

enum class Kind : std::uint8_t { Number, Text, Selection, Boolean, Levels, Bearings };

/// The word for it that pages know.
[[nodiscard]] const char* nameOf(Kind kind);

/// A type of which there are records.
struct RecordedType {
    std::int32_t code = 0;
    std::string keyword;  ///< UTF-8; "type 7" where the type table does not name it
    Kind kind = Kind::Text;
    std::string unit;  ///< empty: none, or not known
    /// Lowest and highest frequency of a map so far, NaN without any.
    double lowHz = std::numeric_limits<double>::quiet_NaN();
    double highHz = std::numeric_limits<double>::quiet_NaN();

    void widen(double low, double high);  ///< so that it reaches over these frequencies, too
};

/// By type number.
using RecordedTypes = std::map<std::int32_t, RecordedType>;
using NamedTypes = std::vector<Recording2::Inspection::TypeEntry>;

/// A file as it was at a moment: one that has become another one is looked at anew, one that is written again and
/// again. Times are milliseconds since 1970 UTC; those of a recording that does not tell when it began are its own.
struct RecordedFile {
    std::string path;    ///< as the system has it
    std::string name;    ///< of the file, UTF-8: what is none is replaced
    std::string folder;  ///< of the file: where splits of one recording are found
    std::string device;  ///< UTF-8
    std::string deviceType;
    std::uint64_t startMs = 0;
    std::uint64_t endMs = 0;  ///< of the last moment
    std::int64_t bytes = 0;
    bool live = false;       ///< it is still being written
    bool timesKnown = true;  ///< false: it is written without a journal, so that nobody knows its times yet
    NamedTypes types;
    RecordedTypes recorded;
    std::shared_ptr<Overview> growing;  ///< of a file that is being written; null where there is none
    std::string content;                ///< tells what it holds from what another file of its path held
    std::string damage;                 ///< one sentence where something is wrong with it that can be read all the same
};

using FilePointer = std::shared_ptr<const RecordedFile>;

/// Looks at a finished recording: its header, its types and its first records.
/// @param problem receives one sentence where there is nothing to show @return null then
[[nodiscard]] FilePointer lookAtFile(const std::string& path, std::string& problem);
/// What header and type table tell of a file.
[[nodiscard]] std::shared_ptr<RecordedFile> describedFile(const std::string& path,
                                                          const Recording2::Inspection::Header& header,
                                                          const NamedTypes& types);

/// What is wrong with a file that can be read all the same, one sentence; empty for a sound one.
[[nodiscard]] std::string damageOf(const Recording2::Inspection::Summary& summary);

/// When a recording began, 0 where its header tells no moment that can be.
[[nodiscard]] std::uint64_t plausibleStart(std::uint64_t startMs);

/// The kind of a record's value; nothing where its text is none of a value.
[[nodiscard]] std::optional<Kind> kindOf(const Recording2::Inspection::Record& record);
/// @param types of its file
[[nodiscard]] RecordedType typeOf(std::int32_t code, Kind kind, const NamedTypes& types);
/// Adds the type of a record that is the first one of it.
void noteType(const Recording2::Inspection::Record& record, const NamedTypes& types, RecordedTypes& recorded);

/// Any bytes as UTF-8: what is none is replaced.
[[nodiscard]] std::string validUtf8(const std::string& bytes);

/// The files of one recording in the order of their times; at least one.
struct Timeline {
    std::string id;  ///< of the first file's name; no other timeline has it
    std::vector<FilePointer> files;

    [[nodiscard]] double startMs() const { return static_cast<double>(files.front()->startMs); }
    [[nodiscard]] double endMs() const;
    [[nodiscard]] bool isLive() const { return files.back()->live; }
    [[nodiscard]] bool timesKnown() const;
    /// What was recorded in any of the files, with the frequencies of all.
    [[nodiscard]] RecordedTypes recorded() const;
    /// The number of the file that is in force at a moment: the last that had begun, or the first one.
    [[nodiscard]] std::size_t fileAt(double ms) const;
};

/// Files of one device in one folder that follow each other within ten seconds, each begun after the end of the one
/// before, are one recording.
[[nodiscard]] std::vector<Timeline> makeTimelines(std::vector<FilePointer> files);

/// A file that cannot be shown, or not whole.
struct Problem {
    std::string name;
    std::string error;  ///< one sentence, and what to do about it
};

/// What there is at a moment. It never changes.
struct Listing {
    std::vector<Timeline> timelines;
    std::vector<Problem> problems;

    /// Null where there is none of that name.
    [[nodiscard]] const Timeline* find(const std::string& id) const;
};

using ListingPointer = std::shared_ptr<const Listing>;

}  // namespace RecView
