// Built without plotting: every verb that draws says so.
#include <iostream>

#include "earthplot.h"
#include "traceplot.h"

namespace RecTool {

namespace {

ExitCode refuse()
{
    std::cerr << "rectool: This build of rectool has no plotting.\n";
    return ExitCode::Usage;
}

}  // namespace

ExitCode checkPicture(const PlotOptions& /*options*/)
{
    return refuse();
}

ExitCode drawTraces(const TraceOptions& /*options*/, Recordings& /*recordings*/, const std::vector<Trace>& /*traces*/)
{
    return refuse();
}

ExitCode drawChannelTraces(const TraceOptions& /*options*/, Recordings& /*recordings*/,
                           const std::vector<ChannelTrace>& /*traces*/)
{
    return refuse();
}

ExitCode drawHeat(const MapOptions& /*options*/, Recordings& /*recordings*/, const Heat& /*heat*/)
{
    return refuse();
}

ExitCode drawField(const MapOptions& /*options*/, Recordings& /*recordings*/, const std::vector<FieldTrack>& /*tracks*/)
{
    return refuse();
}

ExitCode plotSpectrum(const PlotSpectrumOptions& /*options*/)
{
    return refuse();
}

ExitCode plotLevel(const PlotLevelOptions& /*options*/)
{
    return refuse();
}

ExitCode plotBearings(const PlotBearingsOptions& /*options*/)
{
    return refuse();
}

ExitCode plotTimeline(const PlotTimelineOptions& /*options*/)
{
    return refuse();
}

}  // namespace RecTool
