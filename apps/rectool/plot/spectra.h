// The spectra of recordings, and what there is to draw of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <values/maps.h>
#include <values/valuebase.h>

#include "frequencies.h"
#include "replay/recordedvalues.h"
#include "source.h"

namespace RecTool {

using LevelMap = values::CellMap<float, values::levelHandler>;

/// The value as a map of levels; null when it is none.
[[nodiscard]] const LevelMap* asLevels(const values::ValueBase* value);

/// A recorded type that holds spectra, and what a first pass found out about it.
struct Spectrum {
    std::size_t track = 0;
    std::int32_t code = 0;
    std::string title;
    std::string keyword;
    std::uint64_t records = 0;  // in the span
    bool inForce = false;       // somewhere in the span
    values::ChannelRange range;
    std::vector<FrequencySpan> covered;
    std::size_t joined = 0;          // spans that were left when they were joined
    std::vector<double> rangeTimes;  // in the span, the one in force at its beginning left out
    // Of the records that hold a level, also of those in front of the span:
    std::optional<double> firstMs;
    std::optional<double> lastMs;
    double lastedMs = 0;  // from the one before to the last one; 0 without one

    [[nodiscard]] bool is(const PlottedRecord& record) const
    {
        return record.track == track && record.record.code == code;
    }
};

struct SpectrumChoice {
    std::vector<std::string> types;
    bool onlyRf = false;
    bool onlyIf = false;
};

/// The spectra that are asked for, in that order; those that nobody recorded are left out.
/// @return nothing, told, when one of the types is in none of the recordings
[[nodiscard]] std::optional<std::vector<Spectrum>> wantedSpectra(const SpectrumChoice& choice,
                                                                 const PlotSource& source);

/// Looks at the records of a first pass for the frequencies and the times of spectra. Only texts with a channel range
/// need to be understood for that.
class SpectrumSurvey {
public:
    SpectrumSurvey(std::vector<Spectrum>& spectra, const PlotSource& source) : m_spectra(spectra), m_source(source) {}

    void visit(const PlottedRecord& record);
    /// Makes the picture as wide as its spectra last. @return those that there are
    [[nodiscard]] std::vector<Spectrum> finish(PlotSource& source);

private:
    void newRange(Spectrum& spectrum, const values::ChannelRange& range, double momentMs) const;

    std::vector<Spectrum>& m_spectra;
    const PlotSource& m_source;
    std::vector<RecordedValues> m_recorded;  // by track
};

/// Why there is nothing to draw.
[[nodiscard]] std::string noSpectrum(const PlotOptions& options, const std::vector<Spectrum>& spectra);

}  // namespace RecTool
