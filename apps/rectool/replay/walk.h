// Reading a recording for a verb, finished or as it is now: what is wrong with it is told, and how far the reading has
// come.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <recording2/inspection/following.h>
#include <recording2/inspection/inspection.h>

namespace RecTool {

/// For the verbs that look at a recording while it grows.
class PresentRecording {
public:
    /// @return false for a file that cannot be read and for a recording that was left unclosed: summary() tells why
    [[nodiscard]] bool open(const std::string& file);

    /// Of one that is being written: without tables but the types, and after the walk with the stop time of its last
    /// record.
    [[nodiscard]] const Recording2::Inspection::Summary& summary() const { return m_summary; }
    [[nodiscard]] bool isBeingWritten() const { return m_following.has_value(); }
    /// False for one that is being written without a journal.
    [[nodiscard]] bool timesKnown() const { return !m_following || m_following->timesKnown(); }
    /// Visits the records that there are now, until the visitor gives false. Once.
    /// @param progress as for walkRecords; a line of progress where it is empty
    /// @return what is damaged in the tables and in the records
    [[nodiscard]] std::vector<Recording2::Inspection::Finding> walk(
        const std::function<bool(const Recording2::Inspection::Record&)>& visit,
        const std::function<void(std::int64_t, std::int64_t)>& progress = {});
    /// Says on standard error what a reader of the result must know of a recording that is being written.
    void tellWhetherBeingWritten() const;

private:
    std::string m_file;
    Recording2::Inspection::Summary m_summary;
    std::optional<Recording2::Inspection::Following> m_following;
};

/// Why a recording without a journal is shown as it is: a sentence.
[[nodiscard]] std::string withoutTimes();

/// Reads header and tables. @return false, told, for a file that cannot be read
[[nodiscard]] bool readSummary(const std::string& file, Recording2::Inspection::Summary& summary);

/// Visits the records under a line of progress, until the visitor gives false.
/// @param progress is told instead, where it is not empty
/// @return what is damaged in the tables and in the records
[[nodiscard]] std::vector<Recording2::Inspection::Finding> walk(
    const std::string& file, const Recording2::Inspection::Summary& summary,
    const std::function<bool(const Recording2::Inspection::Record&)>& visit,
    const std::function<void(std::int64_t, std::int64_t)>& progress = {});

}  // namespace RecTool
