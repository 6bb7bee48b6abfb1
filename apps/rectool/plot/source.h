// The recording that a picture is drawn from.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>

#include "../output.h"
#include "../progress.h"
#include "../typenames.h"
#include "plot.h"
#include "timespan.h"

namespace RecTool {

class PlotSource {
public:
    /// Reads header and tables and takes over the span. @param passes how often the records will be walked
    PlotSource(const PlotOptions& options, int passes);
    PlotSource(const PlotSource&) = delete;
    PlotSource& operator=(const PlotSource&) = delete;

    /// Fine, or, told, what keeps the recording from being drawn.
    [[nodiscard]] ExitCode state() const { return m_state; }
    [[nodiscard]] const std::string& file() const { return m_file; }
    [[nodiscard]] const Recording2::Inspection::Summary& summary() const { return m_summary; }
    [[nodiscard]] const TypeNames& names() const { return m_names; }
    /// What was asked for, otherwise from the first record to the last one or the end of the recording; at least a
    /// millisecond wide.
    [[nodiscard]] const TimeSpan& span() const { return m_span; }
    [[nodiscard]] std::uint64_t startMs() const { return m_summary.header.startMs; }
    /// The bookmarks in the span.
    [[nodiscard]] std::vector<Recording2::Inspection::Bookmark> bookmarks() const;

    /// One pass over the records up to the end of the span, except those whose time is lost.
    void walk(const std::function<void(const Recording2::Inspection::Record&)>& visit);

    /// Tells the damage and makes the exit code of a finished picture, or of one that could not be drawn.
    [[nodiscard]] ExitCode end(ExitCode drawn);
    /// The same with a reason why there is no picture.
    [[nodiscard]] ExitCode refuse(const std::string& why);

private:
    ExitCode takeSpan(const PlotOptions& options);

    std::string m_file;
    Recording2::Inspection::Summary m_summary;
    TypeNames m_names;
    TimeSpan m_span;
    ExitCode m_state = ExitCode::Fine;
    Progress m_progress;
    int m_passes;
    int m_pass = 0;
    std::vector<Recording2::Inspection::Finding> m_inRecords;
};

}  // namespace RecTool
