// The verb "diff": what differs between two moments of a recording.
#include <algorithm>
#include <cmath>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <values/maps.h>
#include <values/recordingtext.h>
#include <values/value.h>

#include "commandline/verb.h"
#include "commands.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"
#include "printing/valuetext.h"
#include "replay/bearingreplay.h"
#include "replay/inforce.h"
#include "replay/recordingtime.h"
#include "replay/walk.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;
using values::Bearing;
using values::BearingHandler;
using values::CellMap;
using values::MappingBase;
using values::ValueBase;

namespace {

/// How two maps differ.
struct MapDifference {
    bool rangeChanged = false;      // cells are compared only where it is not
    std::size_t channels = 0;       // that differ, among them those that were measured at one moment only
    double largest = 0;             // between two measurements: dB, or degrees of azimuth
    std::optional<std::size_t> at;  // the channel of the largest difference; nothing where there is none such
};

/// A type at the two moments.
struct Difference {
    std::int32_t code = 0;
    std::optional<LastRecord> before;  // nothing where there is no record up to then
    std::optional<LastRecord> after;
    std::optional<MapDifference> map;  // where both are maps of one kind
    bool differs = false;
    std::uint64_t records = 0;       // after the first moment, up to the second
    std::uint64_t lastChangeMs = 0;  // time of the last of them
};

/// Distance of two azimuths on the circle.
double azimuthDistance(double a, double b)
{
    constexpr double WholeTurn = 360;
    const double apart = std::fmod(std::abs(a - b), WholeTurn);
    return std::min(apart, WholeTurn - apart);
}

using RecTool::isSame;

bool isSame(float a, float b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

/// NaN where one of the two was not measured.
double distance(float a, float b)
{
    return std::abs(double{a} - double{b});
}

double distance(const Bearing& a, const Bearing& b)
{
    return azimuthDistance(a.azimuthDeg, b.azimuthDeg);
}

template <typename Cell, typename Handler>
MapDifference compareMaps(const CellMap<Cell, Handler>& before, const CellMap<Cell, Handler>& after)
{
    MapDifference result;
    result.rangeChanged = !(before.GetChannelRange() == after.GetChannelRange());
    for (std::size_t i = 0; !result.rangeChanged && i < before.GetCells().size(); ++i) {
        const Cell& a = before.GetCells()[i];
        const Cell& b = after.GetCells()[i];
        if (isSame(a, b)) {
            continue;
        }
        ++result.channels;
        const double apart = distance(a, b);
        if (apart > result.largest) {
            result.largest = apart;
            result.at = i;
        }
    }
    return result;
}

/// Nothing when the two are no maps of one kind.
std::optional<MapDifference> compareMaps(const ValueBase* before, const ValueBase* after)
{
    using Levels = CellMap<float, values::levelHandler>;
    using Bearings = CellMap<Bearing, BearingHandler>;
    const auto* levels = dynamic_cast<const Levels*>(before);
    const auto* laterLevels = dynamic_cast<const Levels*>(after);
    if (levels != nullptr && laterLevels != nullptr) {
        return compareMaps(*levels, *laterLevels);
    }
    const auto* bearings = dynamic_cast<const Bearings*>(before);
    const auto* laterBearings = dynamic_cast<const Bearings*>(after);
    if (bearings != nullptr && laterBearings != nullptr) {
        return compareMaps(*bearings, *laterBearings);
    }
    return std::nullopt;
}

/// The states at two moments of a recording, found in one walk.
class TwoStates {
public:
    explicit TwoStates(std::uint64_t from) : m_from(from) {}

    void apply(const Inspection::Record& record)
    {
        if (record.timeMs == 0) {
            return;
        }
        if (record.timeMs > m_from && !m_kept) {
            keepBefore();
        }
        if (record.timeMs > m_from) {
            Between& between = m_between[record.code];
            ++between.records;
            between.lastMs = record.timeMs;
        }
        m_state.apply(record);
    }

    /// Of every type, by number.
    std::vector<Difference> compare()
    {
        if (!m_kept) {
            keepBefore();
        }
        std::vector<Difference> differences;
        for (const auto& [code, after] : m_state.entries()) {
            Difference difference;
            difference.code = code;
            difference.after = after;
            if (const auto before = m_before.find(code); before != m_before.end()) {
                difference.before = before->second.last;
            }
            difference.records = m_between[code].records;
            difference.lastChangeMs = m_between[code].lastMs;
            judge(difference);
            differences.push_back(std::move(difference));
        }
        return differences;
    }

private:
    struct Kept {
        LastRecord last;
        std::unique_ptr<ValueBase> value;
    };
    struct Between {
        std::uint64_t records = 0;
        std::uint64_t lastMs = 0;
    };

    /// Copies the values, which the records after go on changing.
    void keepBefore()
    {
        m_kept = true;
        for (const auto& [code, last] : m_state.entries()) {
            Kept& kept = m_before[code];
            kept.last = last;
            if (last.value != nullptr) {
                kept.value = values::MakeValue(last.value->GetType());
                kept.value->ApplyRecordedState(last.value->GetObjectStateStringForRecording(), 0, false);
                kept.last.value = kept.value.get();
            }
        }
    }

    static void judge(Difference& difference)
    {
        const ValueBase* before = difference.before ? difference.before->value : nullptr;
        const ValueBase* after = difference.after->value;
        difference.map = compareMaps(before, after);
        if (!difference.before) {
            difference.differs = true;
        } else if (difference.map) {
            difference.differs = difference.map->rangeChanged || difference.map->channels > 0;
        } else if (before != nullptr && after != nullptr) {
            difference.differs =
                before->GetObjectStateStringForRecording() != after->GetObjectStateStringForRecording();
        } else {  // of data that is not understood the bytes count
            difference.differs = difference.before->record.data != difference.after->record.data;
        }
    }

    std::uint64_t m_from;
    InForce m_state;
    bool m_kept = false;
    std::map<std::int32_t, Kept> m_before;
    std::map<std::int32_t, Between> m_between;
};

std::string describeLast(const std::optional<LastRecord>& last)
{
    return last ? describe(last->record, last->value) : "-";
}

/// How much a plain number grew; nothing where it did not change or is none at one of the moments.
std::optional<double> growth(const Difference& difference)
{
    const std::optional<double> before = plainNumber(difference.before ? difference.before->value : nullptr);
    const std::optional<double> after = plainNumber(difference.after ? difference.after->value : nullptr);
    const double by = before && after ? *after - *before : 0;
    return std::isfinite(by) && by != 0 ? std::optional(by) : std::nullopt;
}

/// What "before" and "after" do not show.
std::string describeDetails(const Difference& difference)
{
    if (const std::optional<double> by = growth(difference)) {
        return (*by > 0 ? "+" : "") + number(*by);
    }
    if (!difference.map) {
        // Such as limits: two values that look alike are shown as they are recorded.
        const bool hidden = difference.differs && describeLast(difference.before) == describeLast(difference.after);
        constexpr std::size_t MostBytes = 64;
        return hidden ? "recorded as " + escaped(difference.before->record.data, MostBytes) + " and " +
                            escaped(difference.after->record.data, MostBytes)
                      : "";
    }
    const MapDifference& map = *difference.map;
    if (map.rangeChanged) {
        return "the channel range changed";
    }
    if (map.channels == 0) {
        return "";
    }
    std::string text = grouped(map.channels) + (map.channels == 1 ? " channel differs" : " channels differ");
    if (map.at) {
        constexpr int Digits = 5;
        const auto& range = static_cast<const MappingBase&>(*difference.after->value).GetChannelRange();
        const bool isLevel = difference.after->value->GetType() == values::ValueType::LevelMap;
        text += ", most by " + number(map.largest, Digits) + (isLevel ? " dB at " : " degrees at ") +
                frequency(range.frequencyHz(*map.at));
    }
    return text;
}

void printTable(const std::vector<Difference>& differences, const TypeNames& names)
{
    Table table("rlrrlll", {"Type", "Keyword", "Records", "Last", "Before", "After", "Difference"});
    for (const Difference& difference : differences) {
        table.add({std::to_string(difference.code), names.label(difference.code), grouped(difference.records),
                   difference.records > 0 ? std::to_string(difference.lastChangeMs) : "-",
                   describeLast(difference.before), describeLast(difference.after),
                   difference.differs ? describeDetails(difference) : "none"});
    }
    table.print();
}

Json lastToJson(const std::optional<LastRecord>& last, const TypeNames& names)
{
    return last ? toJson(last->record, last->value, names) : Json();
}

Json mapToJson(const Difference& difference)
{
    if (!difference.map) {
        return {};
    }
    const MapDifference& map = *difference.map;
    const auto& after = static_cast<const MappingBase&>(*difference.after->value);
    Json largest;
    if (map.at) {
        const bool isLevel = after.GetType() == values::ValueType::LevelMap;
        largest = {{"channel", *map.at},
                   {"frequencyHz", after.GetChannelRange().frequencyHz(*map.at)},
                   {isLevel ? "levelDb" : "azimuthDeg", isLevel ? hundredths(map.largest) : map.largest}};
    }
    return {{"rangeChanged", map.rangeChanged},
            {"channels", map.rangeChanged ? Json() : Json(map.channels)},
            {"largest", std::move(largest)}};
}

void printDifferencesAsJson(const DiffOptions& options, const Span& span, const std::vector<Difference>& differences,
                            const TypeNames& names)
{
    Json types = Json::array();
    for (const Difference& difference : differences) {
        const Inspection::TypeEntry* type = names.find(difference.code);
        types.push_back({{"code", difference.code},
                         {"keyword", type != nullptr ? Json(fromLatin1(type->keyword)) : Json()},
                         {"path", type != nullptr ? Json(fromLatin1(type->valuePath)) : Json()},
                         {"differs", difference.differs},
                         {"records", difference.records},
                         {"lastMs", difference.records > 0 ? Json(difference.lastChangeMs) : Json()},
                         {"before", lastToJson(difference.before, names)},
                         {"after", lastToJson(difference.after, names)},
                         {"growth", growth(difference)},
                         {"map", mapToJson(difference)}});
    }
    printJson(
        {{"file", shownName(options.file)}, {"fromMs", span.from}, {"toMs", span.to}, {"types", std::move(types)}});
}

}  // namespace

ExitCode diff(const DiffOptions& options)
{
    Inspection::Summary summary;
    if (!readSummary(options.file, summary)) {
        return ExitCode::CannotRead;
    }
    Span span;
    if (!takeSpan(options.file, options.from, options.to, summary, span)) {
        return ExitCode::Usage;
    }
    TwoStates states(span.from);
    const std::vector<Inspection::Finding> findings =
        walk(options.file, summary, [&](const Inspection::Record& record) {
            if (record.timeMs <= span.to) {
                states.apply(record);
            }
            return record.timeMs <= span.to;
        });
    const TypeNames names(summary.types);
    std::vector<Difference> shown = states.compare();
    std::erase_if(shown, [&](const Difference& difference) { return !options.all && !difference.differs; });
    if (options.json) {
        printDifferencesAsJson(options, span, shown, names);
    } else if (shown.empty()) {
        std::cout << "Nothing is different.\n";
    } else {
        printTable(shown, names);
    }
    complain(options.file, findings);
    return finish(soundness(findings));
}

void addDiff(const Syntax& program)
{
    Verb verb(program, "diff", "Show what is different between two moments", diff);
    verb.span("The first moment", "The second moment", true);
    verb.flag("--all", verb.options().all, "Show what is the same as well");
    verb.json();
    verb.paged();
    verb.examples({"diff recording.rec --from 60000 --to 65000",
                   "diff recording.rec --from bookmark:alarm-5000 --to bookmark:alarm --json"});
}

}  // namespace RecTool
