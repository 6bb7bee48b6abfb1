// The command line of recstation.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "options.h"
#include "sources/bearings/bearingssource.h"
#include "sources/nmea/nmeasource.h"
#include "sources/sweep/sweepsource.h"
#if defined(RECSTATION_HAS_IQ)
#include "sources/iq/iqsource.h"
#endif

namespace recstation {

/// All texts are UTF-8.
struct Options {
    std::string plugin;                  ///< empty: the one beside the program
    std::string config;                  ///< empty: the built-in configuration
    std::string output;                  ///< empty: as configured
    std::vector<std::string> recorders;  ///< to switch on; empty: those that suit the sources
    std::optional<double> speed;         ///< nothing: as fast as possible
    double archiveWaitSeconds = 60;      ///< for the archive, at the end of the run
    bool json = false;
    bool quiet = false;
    bool trace = false;
    bool makeOutput = false;  ///< make the directory of output
    bool allowGap = false;    ///< record sources together that measured at other times
    std::string splitOnGap;   ///< as it was given; empty: do not
    std::optional<unsigned long long>
        splitGapUs;       ///< the same: begin new recordings where time leaps farther, to and fro
    bool recover = true;  ///< recordings that earlier runs left unfinished
    std::string journal;  ///< "process", "power" or "off"; empty: as configured

    // The sources to run; the simulator when none is named.
    std::optional<SimOptions> sim;
    std::optional<FeedOptions> feed;
    std::optional<SweepOptions> sweep;
    std::optional<BearingsOptions> bearings;
    std::optional<NmeaOptions> nmea;
#if defined(RECSTATION_HAS_IQ)
    std::optional<IqOptions> iq;
#endif
};

/// The options, or the exit code when the program has nothing to do: help was shown, or the arguments are wrong and
/// the reason was written to the standard error output.
struct CommandLine {
    std::optional<Options> options;
    ExitCode exitCode = ExitCode::Success;
};

/// @param arguments UTF-8, without the program name
[[nodiscard]] CommandLine parseCommandLine(const std::vector<std::string>& arguments);

}  // namespace recstation
