// How traces are printed: as a table, as CSV and as JSON.
#pragma once

#include <iosfwd>
#include <vector>

#include "analysis/trace.h"

namespace RecTool {

/// Level against frequency. Each trace has a channel.
void printTraces(const TraceOptions& options, const Recordings& recordings, const std::vector<Trace>& traces);
/// One channel against time. Each trace has a sample.
void printChannelTraces(const TraceOptions& options, const Recordings& recordings,
                        const std::vector<ChannelTrace>& traces);

/// What is printed with --json.
void writeTraceJson(const TraceOptions& options, const Recordings& recordings, const std::vector<Trace>& traces,
                    std::ostream& out);

}  // namespace RecTool
