// Recordings in memory, and overviews made of them.
#pragma once

#include <random>
#include <span>

#include <pyramid/overview.h>
#include <rectool/replay/recordedvalues.h>
#include <values/maps.h>

#include "support/files.h"

namespace RecViewTests {

constexpr std::uint64_t StartMs = 1'700'000'000'000;
constexpr double Start{StartMs};
constexpr float NotMeasured = std::numeric_limits<float>::quiet_NaN();

/// The recording text of a map of levels, with its range or without.
inline std::string levelsText(const values::ChannelRange& range, std::span<const float> levels, std::uint64_t us,
                              bool withRange)
{
    values::FastValueMap<float, values::levelHandler> map;
    map.SetChannelRange(range);
    map.SetCells(0, levels, us);
    std::string text = map.GetObjectStateStringForRecording();
    if (!withRange) {
        const std::size_t rangeBegin = text.find('|');
        text.erase(rangeBegin, text.find("|50;") - rangeBegin);
    }
    return text;
}

/// The same of some cells.
inline std::string someLevelsText(std::size_t first, std::span<const float> levels, std::uint64_t us)
{
    const std::string all = levelsText(values::ChannelRange::Even(1, 1, levels.size()), levels, us, false);
    const std::size_t cells = all.find("|50;");
    return all.substr(0, cells) + "|51;" + std::to_string(first) + ',' + all.substr(cells + 4);
}

/// Records in memory.
class MemoryRecords {
public:
    void add(std::int32_t code, std::uint64_t timeMs, std::string text)
    {
        m_records.push_back({m_end, timeMs, code, std::move(text)});
        m_end += static_cast<std::int64_t>(m_records.back().data.size()) + 30;
    }
    [[nodiscard]] const std::vector<RecView::Record>& all() const { return m_records; }
    void read(const RecView::RecordPlace& place, const std::function<bool(const RecView::Record&)>& visit) const
    {
        for (std::size_t i = static_cast<std::size_t>(place.number); i < m_records.size() && visit(m_records[i]); ++i) {
        }
    }

private:
    std::vector<RecView::Record> m_records;
    std::int64_t m_end = 1000;
};

inline RecView::RecordSource sourceOf(const std::shared_ptr<const MemoryRecords>& records)
{
    return [records](const RecView::RecordPlace& place, const auto& visit) { records->read(place, visit); };
}

/// A sweep as plain replay has it.
struct PlainSweep {
    double momentMs = 0;
    values::ChannelRange range;
    std::vector<float> levels;
};

/// Replays all records of a type from the first on.
inline std::vector<PlainSweep> plainSweeps(const std::vector<RecView::Record>& records, std::int32_t code)
{
    constexpr double UsPerMs = 1000;
    RecTool::RecordedValues values;
    std::vector<PlainSweep> sweeps;
    double before = 0;
    for (const RecView::Record& record : records) {
        if (record.code != code || record.timeMs == 0) {
            continue;
        }
        const values::ValueBase* value = values.apply(record);
        const bool isMap = record.data.starts_with("6;");
        const std::uint64_t us = isMap ? std::strtoull(record.data.c_str() + 2, nullptr, 10) : 0;
        const double filed = static_cast<double>(StartMs + record.timeMs);
        before = std::max(before, us == 0 ? filed : std::min(static_cast<double>(us) / UsPerMs, filed));
        const auto* map = dynamic_cast<const values::CellMap<float, values::levelHandler>*>(value);
        if (map != nullptr && map->size() > 0) {
            sweeps.push_back({before, map->GetChannelRange(), {map->GetCells().begin(), map->GetCells().end()}});
        }
    }
    return sweeps;
}

class MadeOverview {
public:
    explicit MadeOverview(std::shared_ptr<const MemoryRecords> records)
    {
        RecView::Summary summary;
        summary.header.startMs = StartMs;
        const std::filesystem::path path = m_folder.filePath("overview").toStdString();
        m_builder =
            std::make_unique<RecView::OverviewBuilder>(RecView::Store::create(path), summary, sourceOf(records));
        for (const RecView::Record& record : records->all()) {
            m_builder->add(record);
        }
    }
    RecView::Overview& finish()
    {
        m_builder->finish();
        return *m_builder->overview();
    }
    [[nodiscard]] RecView::Overview& growing() { return *m_builder->overview(); }

protected:
    /// What is not kept.
    void add(const RecView::Record& record) { m_builder->add(record); }

private:
    QTemporaryDir m_folder;
    std::unique_ptr<RecView::OverviewBuilder> m_builder;
};

inline RecView::Grid drawn(const RecView::Overview& overview, const RecView::View& view)
{
    RecView::Grid grid(view);
    overview.draw(grid);
    grid.finish();
    return grid;
}

/// Sweeps of every kind of text over ranges that come and go, pauses, settings between them, and texts that nobody
/// understands.
class RandomRecording {
public:
    explicit RandomRecording(std::uint32_t seed) : m_random(seed) {}

    std::shared_ptr<MemoryRecords> make(std::size_t records)
    {
        auto made = std::make_shared<MemoryRecords>();
        const std::vector<values::ChannelRange> ranges{
            values::ChannelRange::Even(100e6, 25e3, 700), values::ChannelRange::Even(200e6, -10e3, 33),
            values::ChannelRange::List({90e6, 90.1e6, 89e6, 90.2e6, 95e6}), values::ChannelRange::Even(50e6, 1e3, 1)};
        std::uint64_t timeMs = 10;
        useRange(ranges[0]);
        made->add(1, timeMs, levelsText(m_range, m_levels, 0, true));
        for (std::size_t i = 0; i < records; ++i) {
            timeMs += below(100) == 0 ? 5000 + below(20'000) : 10 + below(50);
            if (below(40) == 0) {
                useRange(ranges[below(ranges.size())]);
                change(m_levels);
                made->add(1, timeMs, levelsText(m_range, m_levels, stamp(timeMs), true));
            } else {
                const bool isNumber = below(5) == 0;
                made->add(isNumber ? 7 : 1, timeMs,
                          isNumber ? "3;" + std::to_string(below(100)) + ",0,100" : sweep(timeMs));
            }
        }
        return made;
    }

private:
    std::size_t below(std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(m_random); }
    std::uint64_t stamp(std::uint64_t timeMs) { return below(3) == 0 ? 0 : (StartMs + timeMs) * 1000 - below(8000); }
    void useRange(const values::ChannelRange& range)
    {
        m_range = range;
        m_levels.assign(range.size(), NotMeasured);
    }
    void change(std::span<float> levels)
    {
        for (float& level : levels) {
            level = static_cast<float>(std::round(-12'000 + std::normal_distribution<>(0, 300)(m_random)) / 100);
        }
        if (below(4) == 0) {
            const std::vector<float> odd{NotMeasured, 2000.5F, -5000, std::numeric_limits<float>::infinity(),
                                         327.67F,     400.25F};
            levels[below(levels.size())] = odd[below(odd.size())];
        }
    }
    std::string sweep(std::uint64_t timeMs)
    {
        switch (below(12)) {
            case 0:
                return "6;" + std::to_string(stamp(timeMs));
            case 1:
                return "6;0|50;<<";  // not as many cells as the range has
            case 2:
            case 3:
            case 4:
            case 5: {
                const std::size_t first = below(m_levels.size());
                const std::span<float> some = std::span(m_levels).subspan(first, 1 + below(m_levels.size() - first));
                change(some);
                return someLevelsText(first, some, stamp(timeMs));
            }
            default:
                change(m_levels);
                return levelsText(m_range, m_levels, stamp(timeMs), below(6) == 0);
        }
    }

    std::mt19937 m_random;
    values::ChannelRange m_range;
    std::vector<float> m_levels;
};

}  // namespace RecViewTests
