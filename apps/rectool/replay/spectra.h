// The spectra of recordings, and what there is to draw of them.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <values/maps.h>

#include "frequencies.h"
#include "recordings.h"

namespace RecTool {

/// A recorded type that holds spectra, and what a first pass found out about it.
struct Spectrum {
    TrackType type;
    std::string keyword;
    std::string title;
    std::uint64_t records = 0;  // in the span
    bool isInForce = false;     // somewhere in the span
    values::ChannelRange range;
    std::vector<FrequencySpan> covered;
    std::size_t joinedSpans = 0;     // so many were left when they were joined
    std::vector<double> rangeTimes;  // in the span, the one in force at its beginning left out
    // Of the records that hold a level, also of those before the span:
    std::optional<double> firstMs;
    std::optional<double> lastMs;
    double lastedMs = 0;  // from the one before to the last one; 0 without one

    /// Takes what a record of a first pass tells of frequencies and times. Only texts with a channel range need to be
    /// understood for that.
    void survey(const PlacedRecord& plotted, const Recordings& source);

private:
    void takeRange(const values::ChannelRange& newRange, double momentMs, const Recordings& source);
};

/// What a type is called: as the type table has it, or as the RF or the IF spectrum that it is without being there.
[[nodiscard]] std::string keywordOf(const TypeNames& names, std::int32_t code);

/// The spectra that are asked for, RF and IF where nothing is, in that order; those that nobody recorded are left out.
/// @return nothing, told, when one of the types is in none of the recordings
[[nodiscard]] std::optional<std::vector<Spectrum>> wantedSpectra(const Recordings& source,
                                                                 const std::vector<std::string>& types = {},
                                                                 bool onlyRf = false, bool onlyIf = false);

/// Ends the survey, and makes the picture as wide as its spectra last. @return those that there are
[[nodiscard]] std::vector<Spectrum> endSurvey(std::vector<Spectrum>& spectra, Recordings& source);

/// Visits the sweeps in the span, each with the levels that its record carries itself, until the visitor gives false.
/// @return whether it never did
bool walkSweeps(Recordings& source, const std::vector<Spectrum>& spectra,
                const std::function<bool(std::size_t spectrum, const LevelMap& map, double momentMs)>& visit);
/// Why there is no sweep among the channels from one frequency to another, of wantedSpan.
[[nodiscard]] std::string noSweep(const RecordingsOptions& options, const std::vector<Spectrum>& spectra, double lowHz,
                                  double highHz);
/// Why there is nothing to draw.
[[nodiscard]] std::string noSpectrum(const RecordingsOptions& options, const std::vector<Spectrum>& spectra);

}  // namespace RecTool
