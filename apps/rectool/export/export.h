// What "export" writes for other programs, and what all its formats share.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <values/valuebase.h>

#include "making/newfile.h"
#include "replay/linesofbearing.h"
#include "replay/recordings.h"

namespace RecTool {

/// Turns moments of the axis into microseconds since 1970 UTC. Fast where moments share a second.
class ExportTime {
public:
    /// @param startMs of the first recording, since 1970 UTC; 0, or after the year 9999: not known
    explicit ExportTime(std::uint64_t startMs);

    /// Whether clock times can be told; otherwise microseconds are since the recording's start.
    [[nodiscard]] bool isKnown() const { return m_startUs != 0; }
    [[nodiscard]] std::int64_t us(double momentMs) const;
    /// "2023-11-14T22:13:20.010Z", microseconds only where there are any; milliseconds of the recording where clock
    /// times are not known.
    [[nodiscard]] std::string iso(double momentMs);
    /// "2023-11-14, 22:13:20.010000"
    [[nodiscard]] std::string dateAndTime(double momentMs);
    /// The same as iso for microseconds since 1970.
    [[nodiscard]] std::string isoAt(std::int64_t us);

private:
    void takeSecond(std::int64_t us);

    std::int64_t m_startUs = 0;
    std::int64_t m_second = -1;
    std::string m_text;  // of that second: "2023-11-14T22:13:20"
};

struct ExportOptions : RecordingsOptions {
    std::string output;
    bool force = false;
    std::vector<std::string> types;  ///< keywords or numbers; empty: all that the format takes
};

struct CsvExportOptions : ExportOptions {
    std::string form = "long";  ///< or "sweep", "bearings"
};

struct Hdf5ExportOptions : ExportOptions {
    std::string unit = "dB";  ///< of levels: recordings do not tell
    int deflate = 1;          ///< 0: not compressed; to 9
};

struct SigMfExportOptions : ExportOptions {
    std::string samples;  ///< the file of IQ samples; empty: the one beside the output
    std::string format;   ///< of the samples, SigMF's name; empty: as their metadata say, or their suffix
    double rateHz = 0;    ///< samples a second; 0: as their metadata say
};

[[nodiscard]] ExitCode exportCsv(const CsvExportOptions& options);
[[nodiscard]] ExitCode exportHdf5(const Hdf5ExportOptions& options);
[[nodiscard]] ExitCode exportGpx(const ExportOptions& options);
[[nodiscard]] ExitCode exportKml(const ExportOptions& options);
[[nodiscard]] ExitCode exportSigMf(const SigMfExportOptions& options);

/// Walks what is to be exported, and counts what is not.
class ExportedRecords {
public:
    /// @param types of the records, in the order of their tracks; empty: all
    ExportedRecords(Recordings& recordings, std::vector<TrackType> types);

    /// Visits the records of the span whose value is understood. Maps of levels have only the levels that the record
    /// carries itself; the others are NaN. @param goesOn false: the rest is passed over
    void walk(const std::function<bool()>& goesOn,
              const std::function<void(const PlacedRecord&, const values::ValueBase&)>& visit);
    /// Frequency, azimuth relative to the antenna, heading of its zero, elevation, level, quality, latitude, longitude;
    /// NaN for what is not known.
    using BearingRow = std::array<double, 8>;
    /// Lets something see the bearings of the span whose type is wanted, each as it was taken, while records are
    /// walked.
    void lookAtBearings(std::function<void(const PlacedRecord&, const BearingRow&)> look);
    [[nodiscard]] std::uint64_t bearings() const { return m_bearingCount; }  ///< that were seen
    [[nodiscard]] bool isWanted(const TrackType& type) const;
    /// Whether a user chose the types.
    [[nodiscard]] bool areNamed() const { return !m_types.empty(); }
    [[nodiscard]] const std::string& keyword(const TrackType& type);
    [[nodiscard]] const std::string& device(const TrackType& type) const;
    /// Notes a record that the format has no place for.
    void leaveOut(const TrackType& type) { ++m_leftOut[keyword(type)]; }
    /// Tells what was left out and not understood. @return the result, Damaged where it was Fine and something was not
    /// understood
    [[nodiscard]] ExitCode tellLeftOut(const std::string& file, ExitCode result);

private:
    Recordings& m_recordings;
    std::vector<TrackType> m_types;
    std::optional<AllBearings> m_bearings;
    std::uint64_t m_bearingCount = 0;
    std::vector<std::map<std::int32_t, std::string>> m_keywords;  // of each track
    std::map<std::string, std::uint64_t> m_leftOut;
    std::map<std::string, std::uint64_t> m_notUnderstood;
};

/// What a format writes of the records into the file, up to its end.
using ExportWriter = std::function<ExitCode(Recordings& recordings, ExportedRecords& records, NewFile& file)>;
/// The beginning of every format: takes the recordings and types, and makes the file.
/// @param samples a further file that the new one must not be; may be empty
[[nodiscard]] ExitCode exportTo(const ExportOptions& options, const ExportWriter& write,
                                const std::string& samples = {});

/// The end of every format: gives the file its name and tells the damage, and what was written.
/// @param what was written, "3 sweeps"
/// @param problem why it could not be, as NewFile::finish takes it
[[nodiscard]] ExitCode endExport(Recordings& recordings, ExportedRecords& records, NewFile& file,
                                 const std::string& what, const std::string& problem = {});

}  // namespace RecTool
