// A direction-finding log: its rows one after the other, and what is in it as a whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "input/byteinput.h"
#include "input/timeorder.h"
#include "sources/bearings/bearingssource.h"
#include "sources/bearings/csvreader.h"
#include "sources/bearings/rowparser.h"

namespace RecStation {

/// The bytes of a log, which is read twice.
/// A file is opened anew for every reading. The standard input and pipes can be read once only, so their bytes are kept
/// in memory, 256 MiB at most.
class LogInput {
public:
    /// @param file UTF-8; "-" is the standard input
    /// @throws std::runtime_error when it cannot be read, or cannot be kept
    explicit LogInput(const std::string& file);

    /// Bytes from the beginning on. May outlive this object.
    /// @throws std::runtime_error when the file cannot be opened
    [[nodiscard]] ByteInput open() const;
    [[nodiscard]] const std::string& name() const { return m_name; }  ///< for messages

    /// What was read of an input that can be read once only.
    struct Kept {
        std::string bytes;
        std::string damage;  ///< why there are no more, where what is packed is damaged
    };

private:
    std::string m_file;
    std::string m_name;
    std::shared_ptr<const Kept> m_kept;  // null: a file that is read where it stands
};

class BearingLog {
public:
    /// Opens the input and reads the header, if it has one.
    /// @param bad takes every bad row, and must outlive this; null: they were told
    /// @throws std::runtime_error when an option cannot be used, or the header lacks a column
    BearingLog(const BearingsOptions& options, const LogInput& input, BadLines* bad);

    /// The next row that is not bad, counted if it is skipped; nothing at the end and when the process is to stop.
    [[nodiscard]] std::optional<LogRow> next();

    [[nodiscard]] const RowReader& parser() const { return *m_parser; }
    [[nodiscard]] std::uint64_t skipped() const { return m_skipped + m_csv.comments(); }
    [[nodiscard]] std::uint64_t bad() const { return m_bad; }

private:
    [[nodiscard]] std::unique_ptr<RowReader> begin(const BearingsOptions& options, const LogInput& input);
    [[nodiscard]] std::optional<CsvRecord> nextRecord();

    CsvReader m_csv;
    std::optional<CsvRecord> m_first;  // of a log without a header
    std::unique_ptr<RowReader> m_parser;
    BadLines* m_badLines;
    std::uint64_t m_skipped = 0;
    std::uint64_t m_bad = 0;
};

/// The log as a whole.
struct LogSurvey {
    std::vector<double> channelsHz;  ///< ascending, those without bearings included
    LoggedBearing first;
    std::uint64_t bearings = 0;
    TimeOrder order;                  ///< of the bearings; their rows are counted
    unsigned long long lastTime = 0;  ///< the latest of all bearings
    bool oneStation = true;           ///< all bearings are of the first one's station
    bool hasPosition = false;
    bool hasAltitude = false;
    std::string remark;  ///< about the rows; empty: nothing
};

/// Reads the log to its end.
/// @throws std::runtime_error as BearingLog does, and when there is no bearing or there are too many channels
[[nodiscard]] LogSurvey surveyLog(const BearingsOptions& options, const LogInput& input, BadLines& bad);

}  // namespace RecStation
