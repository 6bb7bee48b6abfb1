#include <cmath>
#include <iostream>
#include <limits>
#include <vector>

#include <values/maps.h>

#include "commands.h"
#include "json.h"
#include "output.h"
#include "progress.h"
#include "recordedvalues.h"
#include "recordingtime.h"
#include "table.h"
#include "text.h"
#include "typenames.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;
using values::Bearing;
using values::BearingHandler;
using values::CellMap;
using values::ValueType;

namespace {

bool same(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

bool same(const Bearing& a, const Bearing& b)
{
    return same(a.azimuthDeg, b.azimuthDeg) && same(a.elevationDeg, b.elevationDeg) && same(a.levelDb, b.levelDb) &&
           same(a.quality, b.quality);
}

struct Channel {
    Bearing bearing;
    std::uint64_t changedMs = 0;        // when it became what it is
    unsigned long long measuredUs = 0;  // what the map said then
};

/// The bearing map of a recording as its records build it up.
class BearingReplay {
public:
    void apply(const Inspection::Record& record)
    {
        const values::ValueBase* value = m_recorded.apply(record);
        const bool isMap = value != nullptr &&
                           (value->GetType() == ValueType::BearingMap || value->GetType() == ValueType::FastBearingMap);
        if (isMap) {
            update(static_cast<const CellMap<Bearing, BearingHandler>&>(*value), record.timeMs);
        } else {
            ++m_passedOver;
        }
    }
    [[nodiscard]] const values::ChannelRange& range() const { return m_range; }
    [[nodiscard]] const std::vector<Channel>& channels() const { return m_channels; }
    /// Records that are no bearings.
    [[nodiscard]] std::uint64_t passedOver() const { return m_passedOver; }

private:
    void update(const CellMap<Bearing, BearingHandler>& map, std::uint64_t timeMs)
    {
        if (!(map.GetChannelRange() == m_range)) {
            m_range = map.GetChannelRange();
            m_channels.assign(m_range.size(), {});
        }
        for (std::size_t i = 0; i < m_channels.size(); ++i) {
            if (!same(m_channels[i].bearing, map.GetCells()[i])) {
                m_channels[i] = {map.GetCells()[i], timeMs, map.GetTimeStamp()};
            }
        }
    }

    RecordedValues m_recorded;
    values::ChannelRange m_range;
    std::vector<Channel> m_channels;
    std::uint64_t m_passedOver = 0;
};

struct Span {
    std::uint64_t from = 0;
    std::uint64_t to = std::numeric_limits<std::uint64_t>::max();
};

/// The numbers of the channels that have a bearing and got it in the span.
std::vector<std::size_t> shownChannels(const BearingReplay& replay, const Span& span)
{
    std::vector<std::size_t> shown;
    for (std::size_t i = 0; i < replay.channels().size(); ++i) {
        const Channel& channel = replay.channels()[i];
        if (!isEmpty(channel.bearing) && channel.changedMs >= span.from) {
            shown.push_back(i);
        }
    }
    return shown;
}

std::string cell(double value)
{
    return std::isnan(value) ? "-" : number(value);
}

void printTable(const BearingReplay& replay, const std::vector<std::size_t>& shown)
{
    constexpr unsigned long long UsPerMs = 1000;
    if (shown.empty()) {
        std::cout << "There is no bearing.\n";
        return;
    }
    Table table({Table::Align::Right, Table::Align::Right, Table::Align::Right, Table::Align::Right,
                 Table::Align::Right, Table::Align::Right, Table::Align::Right, Table::Align::Left});
    table.add({"Channel", "Frequency", "Azimuth", "Elevation", "Level", "Quality", "Time", "Measured"});
    for (const std::size_t i : shown) {
        const Channel& channel = replay.channels()[i];
        const Bearing& bearing = channel.bearing;
        table.add({std::to_string(i), frequency(replay.range().frequencyHz(i)), cell(bearing.azimuthDeg),
                   cell(bearing.elevationDeg), cell(bearing.levelDb), cell(bearing.quality),
                   std::to_string(channel.changedMs), utc(channel.measuredUs / UsPerMs)});
    }
    table.print(std::cout, "");
}

void printJson(const MapOptions& options, const Span& span, const BearingReplay& replay,
               const std::vector<std::size_t>& shown)
{
    Json bearings = Json::array();
    for (const std::size_t i : shown) {
        const Channel& channel = replay.channels()[i];
        Json bearing = {{"channel", i}, {"frequencyHz", replay.range().frequencyHz(i)}};
        bearing.update(toJson(channel.bearing));
        bearing["timeMs"] = channel.changedMs;
        bearing["timeStampUs"] = channel.measuredUs;
        bearings.push_back(std::move(bearing));
    }
    std::cout << dump({{"file", options.file},
                       {"fromMs", options.from.empty() ? Json() : Json(span.from)},
                       {"toMs", options.to.empty() ? Json() : Json(span.to)},
                       {"range", toJson(replay.range())},
                       {"bearings", std::move(bearings)}},
                      2)
              << '\n';
}

/// Applies every record of the direction finder up to the end of the span.
std::vector<Inspection::Finding> replayRecords(const MapOptions& options, const Inspection::Summary& summary,
                                               std::uint64_t to, BearingReplay& replay)
{
    const std::optional<std::int32_t> wanted = TypeNames(summary.types).numberOf(DirectionFindingKeyword);
    Progress progress(options.file);
    std::vector<Inspection::Finding> findings = summary.findings;
    const auto inRecords = Inspection::walkRecords(
        options.file, summary,
        [&](const Inspection::Record& record) {
            const bool timeIsKnown = record.timeMs != 0;
            if (wanted == record.code && timeIsKnown && record.timeMs <= to) {
                replay.apply(record);
            }
            return record.timeMs <= to;
        },
        progress.callback());
    findings.insert(findings.end(), inRecords.begin(), inRecords.end());
    return findings;
}

}  // namespace

ExitCode map(const MapOptions& options)
{
    const Inspection::Summary summary = Inspection::inspect(options.file);
    if (summary.readability != Inspection::Readability::Ok) {
        complain(options.file, summary.problem);
        return ExitCode::CannotRead;
    }
    Span span;
    if (!takeTime("--from", options.from, summary, span.from) || !takeTime("--to", options.to, summary, span.to)) {
        return ExitCode::Usage;
    }
    if (span.from > span.to) {
        complain(options.file, "--from lies behind --to.");
        return ExitCode::Usage;
    }
    BearingReplay replay;
    const std::vector<Inspection::Finding> findings = replayRecords(options, summary, span.to, replay);
    const std::vector<std::size_t> shown = shownChannels(replay, span);
    options.json ? printJson(options, span, replay, shown) : printTable(replay, shown);
    complain(options.file, findings);
    if (replay.passedOver() > 0) {
        complain(options.file, std::to_string(replay.passedOver()) + " " + DirectionFindingKeyword +
                                   " records are no bearings and were passed over.");
    }
    return finish(replay.passedOver() > 0 ? ExitCode::Damaged : soundness(findings));
}

}  // namespace RecTool
