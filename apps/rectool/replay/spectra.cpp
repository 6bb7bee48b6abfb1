// Choosing RF and IF spectra, and surveying their ranges, times and records.
#include "spectra.h"

#include <algorithm>
#include <utility>

#include <values/recordingtext.h>
#include <QStringList>

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

Spectrum makeSpectrum(const TrackType& type, const Recordings& source)
{
    const TypeNames& names = source.tracks()[type.track].names;
    Spectrum spectrum;
    spectrum.type = type;
    spectrum.keyword = keywordOf(names, type.code);
    std::string title = spectrum.keyword;
    for (const auto& [keyword, kind] : {std::pair(RfKeyword, "RF"), std::pair(IfKeyword, "IF")}) {
        if (spectrum.keyword == keyword) {
            title = std::string(kind) + " spectrum (" + keyword + ")";
        }
    }
    spectrum.title = source.labelled(type.track, title);
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

/// Their keywords, each once: "RFSPECTRUM or IFSPECTRUM".
std::string keywordsOf(const std::vector<Spectrum>& spectra)
{
    QStringList names;
    for (const Spectrum& spectrum : spectra) {
        names << QString::fromStdString(spectrum.keyword);
    }
    names.removeDuplicates();
    return names.join(QStringLiteral(" or ")).toStdString();
}

}  // namespace

std::string keywordOf(const TypeNames& names, std::int32_t code)
{
    for (const char* keyword : {RfKeyword, IfKeyword}) {
        if (spectrumNumber(keyword, names) == code) {
            return keyword;
        }
    }
    return names.label(code);
}

std::optional<std::vector<Spectrum>> wantedSpectra(const Recordings& source, const std::vector<std::string>& types,
                                                   bool onlyRf, bool onlyIf)
{
    const auto named = source.takeTypes(types);
    if (!named) {
        return std::nullopt;
    }
    std::vector<Spectrum> spectra;
    const auto take = [&](const TrackType& type) {
        if (std::none_of(spectra.begin(), spectra.end(), [&](const Spectrum& other) { return other.type == type; })) {
            spectra.push_back(makeSpectrum(type, source));
        }
    };
    const bool both = types.empty() && !onlyRf && !onlyIf;
    for (std::size_t track = 0; track < source.tracks().size(); ++track) {
        for (const char* keyword : {RfKeyword, IfKeyword}) {
            const auto code = spectrumNumber(keyword, source.tracks()[track].names);
            if (code && (both || (keyword == RfKeyword ? onlyRf : onlyIf))) {
                take({track, *code});
            }
        }
    }
    std::for_each(named->begin(), named->end(), take);
    return spectra;
}

void Spectrum::survey(const PlacedRecord& plotted, const Recordings& source)
{
    if (!(plotted.type == type)) {
        return;
    }
    records += source.isBefore(plotted.momentMs) ? 0U : 1U;
    if (carriesLevel(plotted.record.data)) {
        const double before = lastMs.value_or(plotted.momentMs);
        firstMs = firstMs.value_or(plotted.momentMs);
        lastMs = std::max(before, plotted.momentMs);
        lastedMs = plotted.momentMs > before ? plotted.momentMs - before : lastedMs;
    }
    if (values::CarriesChannelRange(plotted.record.data)) {
        const LevelMap* map = plotted.levels();
        if (map != nullptr && !(map->GetChannelRange() == range)) {
            takeRange(map->GetChannelRange(), plotted.momentMs, source);
        }
    }
}

void Spectrum::takeRange(const values::ChannelRange& newRange, double momentMs, const Recordings& source)
{
    if (source.isBefore(momentMs) || momentMs == source.span().fromMs) {
        covered.clear();
        joinedSpans = 0;
    } else if (isInForce) {
        rangeTimes.push_back(momentMs);
    }
    isInForce = true;
    range = newRange;
    const std::vector<FrequencySpan> added = coveredBy(range);
    covered.insert(covered.end(), added.begin(), added.end());
    constexpr std::size_t Few = 1000;
    if (covered.size() > 2 * joinedSpans + Few) {  // now and then, as every range may be another
        covered = joined(std::move(covered));
        joinedSpans = covered.size();
    }
}

std::vector<Spectrum> endSurvey(std::vector<Spectrum>& spectra, Recordings& source)
{
    constexpr double AloneMs = 1000;  // nobody knows how long the only one lasted
    std::vector<Spectrum> recorded;
    for (Spectrum& spectrum : spectra) {
        spectrum.covered = joined(std::move(spectrum.covered));
        if (spectrum.covered.empty()) {
            continue;
        }
        recorded.push_back(spectrum);
        if (spectrum.lastMs) {
            const double lasts = spectrum.lastedMs > 0 ? spectrum.lastedMs : AloneMs;
            const bool endIsTold = source.span().toMs - *spectrum.lastMs >= lasts / 2;  // by the recording's stop
            source.reach(std::max(0.0, *spectrum.firstMs), endIsTold ? 0 : *spectrum.lastMs + lasts);
        }
    }
    for (const Spectrum& spectrum : recorded) {
        source.keepVisible(spectrum.lastMs.value_or(source.span().fromMs));
    }
    return recorded;
}

bool walkSweeps(Recordings& source, const std::vector<Spectrum>& spectra,
                const std::function<bool(std::size_t spectrum, const LevelMap& map, double momentMs)>& visit)
{
    bool goesOn = true;
    source.walk([&](const PlacedRecord& placed) {
        for (std::size_t i = 0; i < spectra.size() && goesOn; ++i) {
            // Also before the span: ranges are told once.
            const LevelMap* map = placed.type == spectra[i].type ? placed.carriedLevels() : nullptr;
            if (map != nullptr && !source.isBefore(placed.momentMs)) {
                goesOn = visit(i, *map, placed.momentMs);
            }
        }
    });
    return goesOn;
}

std::string noSweep(const RecordingsOptions& options, const std::vector<Spectrum>& spectra, double lowHz, double highHz)
{
    return wantedSpan(lowHz, highHz) ? "No sweep has a channel between these frequencies with a level."
                                     : noRecord(options, keywordsOf(spectra) + " with a level");
}

std::string noSpectrum(const RecordingsOptions& options, const std::vector<Spectrum>& spectra)
{
    const bool areThere =
        std::any_of(spectra.begin(), spectra.end(), [](const Spectrum& spectrum) { return spectrum.records > 0; });
    const std::string all = keywordsOf(spectra);
    return areThere ? "The records of " + all + " hold no spectrum." : noRecord(options, all);
}

}  // namespace RecTool
