// The verbs that draw recordings: plot spectrum, plot level, plot bearings and plot timeline.
#pragma once

#include <string>
#include <vector>

#include "making/pictureoptions.h"
#include "printing/exitcode.h"

namespace RecTool {

/// Whether a picture may be drawn with these options; told if not. No recording is ever overwritten, nor what
/// is no ordinary file.
[[nodiscard]] ExitCode checkPicture(const PlotOptions& options);

struct PlotSpectrumOptions : PlotOptions {
    std::vector<std::string> types;  ///< keywords or numbers, panels in this order; empty: the RF and the IF spectrum
    bool onlyRf = false;
    bool onlyIf = false;
    bool max = false;         ///< a pixel is the highest of its levels: the same as without options
    bool mean = false;        ///< of the cells of a pixel, instead of the highest
    bool continuous = false;  ///< do not break the frequency axis at wide gaps
    std::string unit = "dB";  ///< of the levels
};
ExitCode plotSpectrum(const PlotSpectrumOptions& options);

struct PlotLevelOptions : PlotOptions {
    std::vector<std::string> types;  ///< keywords or numbers, panels in this order; empty: LEVEL
    std::string unit;                ///< of the values; empty: what is known of the keyword
};
ExitCode plotLevel(const PlotLevelOptions& options);

struct PlotBearingsOptions : PlotOptions {
    bool relative = false;  ///< to the antenna, also where the heading was recorded
};
ExitCode plotBearings(const PlotBearingsOptions& options);

struct PlotTimelineOptions : PlotOptions {
    std::vector<std::string> types;  ///< keywords or numbers of values that have a panel too
    bool relative = false;           ///< bearings as in PlotBearingsOptions
    std::string unit = "dB";         ///< of the spectra's levels
};
/// Spectra, bearings and values below each other, time across.
ExitCode plotTimeline(const PlotTimelineOptions& options);

}  // namespace RecTool
