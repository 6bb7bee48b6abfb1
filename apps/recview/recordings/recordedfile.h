// One file of a recording as it was found: what it is of, when it was, and what it holds.
#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>

namespace RecView {

class Overview;

enum class Kind : std::uint8_t { Number, Text, Selection, Boolean, Levels, Bearings };

/// The word for it that pages know.
[[nodiscard]] const char* nameOf(Kind kind);

/// What values of a keyword are counted in; empty: nothing, or not known.
[[nodiscard]] std::string unitOf(Kind kind, const std::string& keyword);

/// A type of which there are records.
struct RecordedType {
    std::int32_t code = 0;
    std::string keyword;  ///< UTF-8; "type 7" where the type table does not name it
    Kind kind = Kind::Text;
    std::string unit;  ///< empty: none, or not known
    /// Lowest and highest frequency of a map so far, NaN without any.
    double lowHz = std::numeric_limits<double>::quiet_NaN();
    double highHz = std::numeric_limits<double>::quiet_NaN();
};

/// By type number.
using RecordedTypes = std::map<std::int32_t, RecordedType>;

/// A file as it was at a moment: one that has become another one is looked at anew, one that is written again and
/// again. Times are milliseconds since 1970 UTC; those of a recording that does not tell when it began are its own.
struct RecordedFile {
    std::string path;    ///< as the system has it
    std::string name;    ///< of the file, UTF-8: what is none is replaced
    std::string folder;  ///< of the file, or the archive's group: where splits of one recording are found
    std::string device;  ///< UTF-8
    std::string deviceType;
    std::uint64_t startMs = 0;
    std::uint64_t endMs = 0;  ///< of the last moment
    std::int64_t bytes = 0;
    bool archived = false;   ///< it is at hand from the archive, to be read only
    bool live = false;       ///< it is still being written
    bool timesKnown = true;  ///< false: it is written without a journal, so that nobody knows its times yet
    std::vector<Recording2::Inspection::TypeEntry> types;
    RecordedTypes recorded;
    std::shared_ptr<Overview> growing;  ///< of a file that is being written; null where there is none
    std::string content;                ///< tells what it holds from what another file of its path held
    std::string damage;                 ///< one sentence where something is wrong with it that can be read all the same
};

using FilePointer = std::shared_ptr<const RecordedFile>;

/// Looks at a finished recording: its header, its types and its first records.
/// @param problem receives one sentence where there is nothing to show @return null then
[[nodiscard]] FilePointer lookAtFile(const std::string& path, const std::string& shownName, std::string& problem);

/// What is wrong with a file that can be read all the same, one sentence; empty for a sound one.
[[nodiscard]] std::string damageOf(const Recording2::Inspection::Summary& summary);

/// When a recording began, 0 where its header tells no moment that can be.
[[nodiscard]] std::uint64_t plausibleStart(std::uint64_t startMs);

/// The type that a record is of. @param types of its file
[[nodiscard]] RecordedType typeOf(const Recording2::Inspection::Record& record,
                                  const std::vector<Recording2::Inspection::TypeEntry>& types);
/// Whether a record's text is one of a value, so that its kind is known.
[[nodiscard]] bool hasKind(const Recording2::Inspection::Record& record);

/// Any bytes as UTF-8: what is none is replaced.
[[nodiscard]] std::string validUtf8(const std::string& bytes);

}  // namespace RecView
