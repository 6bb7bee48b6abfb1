// What a run would record, found out without recording: sources with their values, recorders with what they lack; as
// tables and as JSON.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <QString>
#include <QStringList>

#include "configuration.h"
#include "options.h"

namespace RecStation {

/// A value of the tree that a source made or changed.
struct FoundValue {
    QString path;
    QString text;             ///< what it was at last; of a map empty
    bool unknown = false;     ///< it never was anything but "not a number"
    std::uint64_t shown = 0;  ///< changes to something known
    double perSecond = 0;     ///< by the source's own clock; 0: not to be told
    std::size_t cells = 0;    ///< of a map's channel range; 0 for everything else
    double lowestHz = 0;      ///< of that range
    double highestHz = 0;
};

struct FoundSource {
    QString name;
    QString problem;       ///< why it shows nothing; empty where it does
    bool reached = false;  ///< its peer answers, although it shows nothing
    QStringList remarks;   ///< what it reported, the first few
    std::vector<FoundValue> values;
};

/// What a recording needs and nobody shows.
struct FoundLack {
    QStringList keywords;
    QString why;
};

struct FoundRecorder {
    QString name;
    bool on = false;  ///< would be switched on
    QString directory;
    bool isMade = false;  ///< the directory, at the start
    std::optional<std::int64_t> freeBytes;
    QString problem;       ///< why it cannot record there; else empty
    QStringList keywords;  ///< that it would record, by their names
    std::vector<FoundLack> lacks;
};

struct Findings {
    QString failure;  ///< why nothing could be checked; else empty
    std::vector<FoundSource> sources;
    std::vector<FoundRecorder> recorders;
};

// ---- how they are found and told

/// Fills keywords and lacks, from the tree in force.
/// @param receives a source measures what receivers do; otherwise a recording may do without frequencies
void findKeywords(FoundRecorder& found, const Instance& instance, bool receives);

/// Incomplete where anything is missing, CannotRun where no source or no recorder is left.
[[nodiscard]] ExitCode exitCodeOf(const Findings& findings);
[[nodiscard]] std::string findingsText(const Findings& findings);
[[nodiscard]] std::string findingsJson(const Findings& findings);

/// Tries the sources, looks at the recorders' directories, and writes what it found to the standard output.
/// @return Success, Incomplete where something is missing, CannotRun where nothing would be recorded, Usage
[[nodiscard]] ExitCode checkStation(const Options& options);

}  // namespace RecStation
