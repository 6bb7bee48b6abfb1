// Cutting bands where they overlap, and putting their channels one behind the other.
#include "iqspectra/hops.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace RecStation {

namespace {

bool areEven(const std::vector<double>& channelsHz, double stepHz)
{
    constexpr double Tolerance = 0.01;  // channels
    for (std::size_t i = 0; i < channelsHz.size(); ++i) {
        const double expected = channelsHz.front() + static_cast<double>(i) * stepHz;
        if (std::abs(channelsHz[i] - expected) > Tolerance * stepHz) {
            return false;
        }
    }
    return true;
}

}  // namespace

HopLayout layOutHops(const std::vector<double>& centresHz, double rateHz, std::size_t bins)
{
    HopLayout out;
    out.stepHz = rateHz / static_cast<double>(bins);
    out.parts.resize(centresHz.size());
    std::vector<std::size_t> ascending(centresHz.size());
    std::iota(ascending.begin(), ascending.end(), std::size_t{0});
    std::sort(ascending.begin(), ascending.end(),
              [&centresHz](std::size_t a, std::size_t b) { return centresHz[a] < centresHz[b]; });
    std::vector<double> channelsHz;
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        const double centre = centresHz[ascending[i]];
        const double startHz = centre - rateHz / 2;
        double lowHz = startHz;
        double highHz = centre + rateHz / 2;
        if (i > 0) {
            lowHz = std::max(lowHz, std::midpoint(centresHz[ascending[i - 1]], centre));
        }
        if (i + 1 < ascending.size()) {
            highHz = std::min(highHz, std::midpoint(centre, centresHz[ascending[i + 1]]));
        }
        // The channels from the lower edge on, without the upper one; a rounding error must not give one to both.
        const auto binAt = [&](double hz) {
            constexpr double Tolerance = 1e-6;
            const double bin = std::ceil((hz - startHz) / out.stepHz - Tolerance);
            return static_cast<std::size_t>(std::clamp(bin, 0.0, static_cast<double>(bins)));
        };
        HopPart& part = out.parts[ascending[i]];
        part.firstChannel = channelsHz.size();
        part.firstBin = binAt(lowHz);
        part.bins = binAt(highHz) - part.firstBin;
        for (std::size_t bin = part.firstBin; bin < part.firstBin + part.bins; ++bin) {
            channelsHz.push_back(startHz + static_cast<double>(bin) * out.stepHz);
        }
    }
    out.lowHz = channelsHz.front();
    out.highHz = channelsHz.back() + out.stepHz;
    out.channels = areEven(channelsHz, out.stepHz)
                       ? values::ChannelRange::Even(channelsHz.front(), out.stepHz, channelsHz.size())
                       : values::ChannelRange::List(std::move(channelsHz));
    return out;
}

}  // namespace RecStation
