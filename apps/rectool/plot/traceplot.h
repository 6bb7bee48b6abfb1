// Pictures of traces: level against frequency, and that of a channel against time.
#pragma once

#include <vector>

#include "analysis/trace.h"

namespace RecTool {

/// A panel for each trace. Each has a channel. The recordings are not walked.
[[nodiscard]] ExitCode drawTraces(const TraceOptions& options, Recordings& recordings,
                                  const std::vector<Trace>& traces);
/// The same; each has a sample.
[[nodiscard]] ExitCode drawChannelTraces(const TraceOptions& options, Recordings& recordings,
                                         const std::vector<ChannelTrace>& traces);

}  // namespace RecTool
