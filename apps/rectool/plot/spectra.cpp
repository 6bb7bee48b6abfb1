// Choosing RF and IF spectra, and surveying their ranges, times and records.
#include "spectra.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include <values/recordingtext.h>

#include "printing/text.h"

namespace RecTool {

namespace {

constexpr const char* RfKeyword = "RFSPECTRUM";
constexpr const char* IfKeyword = "IFSPECTRUM";

/// The type number of the RF or IF spectrum. A recorder names only the one with which it began in the type table; the
/// other one has its usual number all the same.
std::optional<std::int32_t> spectrumNumber(const char* keyword, const TypeNames& names)
{
    constexpr std::int32_t UsualRf = 1;
    constexpr std::int32_t UsualIf = 2;
    const std::int32_t usual = keyword == RfKeyword ? UsualRf : UsualIf;
    const std::optional<std::int32_t> named = names.numberOf(keyword);
    return named || names.find(usual) != nullptr ? named : usual;
}

Spectrum makeSpectrum(const PlotSource::TypeInTrack& type, const PlotSource& source)
{
    const TypeNames& names = source.tracks()[type.track].names;
    Spectrum spectrum;
    spectrum.track = type.track;
    spectrum.code = type.code;
    spectrum.keyword = names.label(type.code);
    for (const char* keyword : {RfKeyword, IfKeyword}) {
        if (spectrumNumber(keyword, names) == type.code) {
            spectrum.keyword = keyword;
        }
    }
    spectrum.title = spectrum.keyword == RfKeyword   ? "RF spectrum (RFSPECTRUM)"
                     : spectrum.keyword == IfKeyword ? "IF spectrum (IFSPECTRUM)"
                                                     : spectrum.keyword;
    spectrum.title = source.labelled(type.track, spectrum.title);
    return spectrum;
}

/// Whether a map's text holds a level, other than the "{{{" of what was not measured.
bool carriesLevel(const std::string& text)
{
    constexpr std::size_t Command = 4;  // "|50;"
    const std::size_t all = text.find("|50;");
    if (all != std::string::npos) {
        return text.find_first_not_of('{', all + Command) != std::string::npos;
    }
    const std::size_t run = text.find("|51;");
    const std::size_t cells = run == std::string::npos ? run : text.find(',', run);
    return cells != std::string::npos && text.find_first_not_of('{', cells + 1) != std::string::npos;
}

}  // namespace

const LevelMap* asLevels(const values::ValueBase* value)
{
    return value != nullptr && value->GetType() == values::ValueType::LevelMap ? static_cast<const LevelMap*>(value)
                                                                               : nullptr;
}

std::optional<std::vector<Spectrum>> wantedSpectra(const SpectrumChoice& choice, const PlotSource& source)
{
    const auto named = source.takeTypes(choice.types);
    if (!named) {
        return std::nullopt;
    }
    std::vector<PlotSource::TypeInTrack> types;
    const auto take = [&types](const PlotSource::TypeInTrack& type) {
        if (std::find(types.begin(), types.end(), type) == types.end()) {
            types.push_back(type);
        }
    };
    const bool both = choice.types.empty() && !choice.onlyRf && !choice.onlyIf;
    for (std::size_t track = 0; track < source.tracks().size(); ++track) {
        for (const char* keyword : {RfKeyword, IfKeyword}) {
            const bool isWanted = both || (keyword == RfKeyword ? choice.onlyRf : choice.onlyIf);
            const auto code = spectrumNumber(keyword, source.tracks()[track].names);
            if (isWanted && code) {
                take({track, *code});
            }
        }
    }
    std::for_each(named->begin(), named->end(), take);
    std::vector<Spectrum> spectra;
    std::transform(types.begin(), types.end(), std::back_inserter(spectra),
                   [&source](const PlotSource::TypeInTrack& type) { return makeSpectrum(type, source); });
    return spectra;
}

void SpectrumSurvey::visit(const PlottedRecord& plotted)
{
    const auto spectrum =
        std::find_if(m_spectra.begin(), m_spectra.end(), [&](const Spectrum& other) { return other.is(plotted); });
    if (spectrum == m_spectra.end()) {
        return;
    }
    spectrum->records += m_source.isBefore(plotted.momentMs) ? 0U : 1U;
    if (carriesLevel(plotted.record.data)) {
        const double before = spectrum->lastMs.value_or(plotted.momentMs);
        spectrum->firstMs = spectrum->firstMs.value_or(plotted.momentMs);
        spectrum->lastMs = std::max(before, plotted.momentMs);
        spectrum->lastedMs = plotted.momentMs > before ? plotted.momentMs - before : spectrum->lastedMs;
    }
    if (!values::CarriesChannelRange(plotted.record.data)) {
        return;
    }
    m_recorded.resize(m_source.tracks().size());
    const LevelMap* map = asLevels(m_recorded[plotted.track].apply(plotted.record));
    if (map != nullptr && !(map->GetChannelRange() == spectrum->range)) {
        newRange(*spectrum, map->GetChannelRange(), plotted.momentMs);
    }
}

void SpectrumSurvey::newRange(Spectrum& spectrum, const values::ChannelRange& range, double momentMs) const
{
    const bool isFirst = !spectrum.inForce;
    if (m_source.isBefore(momentMs) || momentMs == m_source.span().fromMs) {
        spectrum.covered.clear();
        spectrum.joined = 0;
    } else if (!isFirst) {
        spectrum.rangeTimes.push_back(momentMs);
    }
    spectrum.inForce = true;
    spectrum.range = range;
    const std::vector<FrequencySpan> covered = coveredBy(range);
    spectrum.covered.insert(spectrum.covered.end(), covered.begin(), covered.end());
    constexpr std::size_t Few = 1000;
    if (spectrum.covered.size() > 2 * spectrum.joined + Few) {  // now and then, as every range may be another
        spectrum.covered = joined(std::move(spectrum.covered));
        spectrum.joined = spectrum.covered.size();
    }
}

std::vector<Spectrum> SpectrumSurvey::finish(PlotSource& source)
{
    constexpr double AloneMs = 1000;  // nobody knows how long the only one lasted
    std::vector<Spectrum> recorded;
    for (Spectrum& spectrum : m_spectra) {
        spectrum.covered = joined(std::move(spectrum.covered));
        if (!spectrum.covered.empty()) {
            recorded.push_back(spectrum);
        }
    }
    for (const Spectrum& spectrum : recorded) {
        if (spectrum.lastMs) {
            const double lasts = spectrum.lastedMs > 0 ? spectrum.lastedMs : AloneMs;
            const bool endIsTold = source.span().toMs - *spectrum.lastMs >= lasts / 2;  // by the recording's stop
            source.reach(std::max(0.0, *spectrum.firstMs), endIsTold ? 0 : *spectrum.lastMs + lasts);
        }
    }
    for (const Spectrum& spectrum : recorded) {
        if (spectrum.lastMs) {
            source.keepVisible(*spectrum.lastMs);
        }
    }
    return recorded;
}

std::string noSpectrum(const PlotOptions& options, const std::vector<Spectrum>& spectra)
{
    std::vector<std::string> names;
    bool anyRecord = false;
    for (const Spectrum& spectrum : spectra) {
        if (std::find(names.begin(), names.end(), spectrum.keyword) == names.end()) {
            names.push_back(spectrum.keyword);
        }
        anyRecord = anyRecord || spectrum.records > 0;
    }
    std::string all;
    for (const std::string& name : names) {
        all += (all.empty() ? "" : " or ") + name;
    }
    if (anyRecord) {
        return "The records of " + all + " hold no spectrum.";
    }
    const bool isWhole = options.from.empty() && options.to.empty();
    return "There is no record of " + all + (isWhole ? " in the recording." : " in or before the span.");
}

}  // namespace RecTool
