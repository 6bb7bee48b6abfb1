// Finds out, in the one pass in which a pyramid is made, what numbers, texts and bearings there are and when they
// changed: keeps numbers singly and in blocks, changes with their texts, and bearings, within what room there is.
#include "keptcolumns.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <QString>

#include <values/value.h>

#include "pyramid/overview.h"
#include "rectool/printing/valuetext.h"
#include "rectool/replay/linesofbearing.h"

namespace RecView {

namespace {

constexpr double NoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t RecordBytes = 30;  // of a record besides its data
constexpr double ShareOfNumbers = 0.5;   // blocks show the others
constexpr double ShareOfBearings = 0.8;  // records give the others where they are few

/// How much may be kept: a share of what was read. What matters least is left out first.
class KeptBudget {
public:
    /// @param part of what was read: 16 for a sixteenth
    explicit KeptBudget(std::uint64_t part) : m_part(part) {}

    void read(std::size_t bytes) { m_read += bytes; }
    /// @param share of all that may be kept, 0 to 1
    [[nodiscard]] bool allows(std::size_t bytes, double share) const
    {
        constexpr std::uint64_t Least = std::uint64_t{768} << 10;  // nothing is kept of recordings that are that small
        const std::uint64_t all = std::max(Least, m_read) / m_part;
        return static_cast<double>(m_kept + bytes) <= static_cast<double>(all) * share;
    }
    void keep(std::size_t bytes) { m_kept += bytes; }

private:
    std::uint64_t m_part;
    std::uint64_t m_read = 0;
    std::uint64_t m_kept = 0;
};

/// A plain value on one line, cut where it is long.
std::string changeText(const Record& record, const values::ValueBase* value)
{
    constexpr int Longest = 200;
    const QString text = QString::fromStdString(RecTool::describe(record, value));
    return (text.size() <= Longest ? text : text.left(Longest) + QStringLiteral("\u2026")).toStdString();
}

class ValuePart final : public OverviewPart {
public:
    ValuePart(Store& store, const Summary& summary)
        : m_store(store),
          m_types(summary.types),
          m_taker(RecTool::TypeNames(m_types), plausibleStart(summary.header.startMs),
                  [this](const auto& taken) { addBearing(taken); })
    {
    }

    void add(const PassedRecord& passed) override
    {
        m_budget.read(passed.record.data.size() + RecordBytes);
        m_positionBudget.read(passed.record.data.size() + RecordBytes);
        noteKind(passed);
        m_position = passed.record.position;
        m_code = passed.record.code;
        m_momentMs = passed.momentMs;
        m_taker.apply(passed.record);
        const auto kind = m_kinds.find(m_code);
        if (passed.isSweep || kind == m_kinds.end() || kind->second == Kind::Levels || kind->second == Kind::Bearings) {
            return;
        }
        addPosition(passed.timeMs);
        if (kind->second == Kind::Number) {
            addNumber(passed, numberOf(passed.value));
        } else {
            addChange(passed);
        }
    }

    /// What was left out last would not be counted in any entry.
    void finish() override
    {
        for (auto& [code, numbers] : m_numbers) {
            for (std::uint32_t level = 0; level < BlockLevels; ++level) {
                pushBlock(code, numbers, level);
            }
        }
        for (auto& [code, changes] : m_changes) {
            if (changes.leftOut > 0) {
                changes.column->append(KeptChange{changes.ms, keepText(changes.text), changes.leftOut - 1});
            }
        }
        keepPosition();
        if (m_bearingsLeftOut > 0) {
            m_lastBearing.leftOut = m_bearingsLeftOut - 1;
            m_store.column(keyOf(Kept::Bearings)).append(m_lastBearing);
        }
    }

private:
    struct Numbers {
        Column* all = nullptr;
        bool isOpen = true;             // every one is still kept
        std::vector<KeptBlock> blocks;  // of each level, not yet full
        std::vector<std::uint32_t> counts;
    };
    struct Changes {
        Column* column = nullptr;
        std::string text;  // of the last one, which was at
        double ms = 0;
        bool isFirst = true;
        std::uint32_t leftOut = 0;
    };

    void noteKind(const PassedRecord& passed)
    {
        const std::int32_t code = passed.record.code;
        const std::optional<Kind> kind = m_kinds.contains(code) ? std::nullopt : kindOf(passed.record);
        if (kind) {
            m_kinds.emplace(code, *kind);
            m_store.column(keyOf(Kept::Kinds)).append(KeptKind{code, static_cast<std::uint32_t>(*kind)});
        }
    }
    void addNumber(const PassedRecord& passed, double value)
    {
        Numbers& numbers = m_numbers[m_code];
        if (numbers.all == nullptr) {
            numbers.all = &m_store.column(keyOf(Kept::Numbers, m_code));
            numbers.blocks.resize(BlockLevels);
            numbers.counts.resize(BlockLevels);
        }
        if (numbers.isOpen && m_budget.allows(sizeof(KeptNumber), ShareOfNumbers)) {
            numbers.all->append(KeptNumber{passed.timeMs, value});
            m_budget.keep(sizeof(KeptNumber));
        } else if (std::exchange(numbers.isOpen, false)) {
            m_store.column(keyOf(Kept::NumbersEnd, m_code)).append(passed.timeMs);
        }
        addToBlocks(m_code, numbers, {passed.timeMs, value, value, value, passed.record.position});
    }
    void addToBlocks(std::int32_t code, Numbers& numbers, const KeptBlock& one)
    {
        for (std::uint32_t level = 0; level < BlockLevels; ++level) {
            KeptBlock& block = numbers.blocks[level];
            if (numbers.counts[level]++ == 0) {
                block = one;
            } else {
                block.min = std::fmin(block.min, one.min);
                block.max = std::fmax(block.max, one.max);
                block.last = one.last;
            }
        }
        std::uint32_t full = NumbersPerBlock;
        for (std::uint32_t level = 0; level < BlockLevels && numbers.counts[level] == full; ++level) {
            pushBlock(code, numbers, level);
            full *= BlocksPerBlock;
        }
    }
    void pushBlock(std::int32_t code, Numbers& numbers, std::uint32_t level)
    {
        if (numbers.counts[level] > 0) {
            m_store.column(keyOf(Kept::NumberBlocks, code, level)).append(numbers.blocks[level]);
            m_budget.keep(sizeof(KeptBlock));
            numbers.counts[level] = 0;
        }
    }
    void addChange(const PassedRecord& passed)
    {
        Changes& changes = m_changes[m_code];
        std::string text = changeText(passed.record, passed.value);
        if (!changes.isFirst && text == changes.text) {
            return;  // it was recorded once more, but did not change
        }
        if (changes.column == nullptr) {
            changes.column = &m_store.column(keyOf(Kept::Changes, m_code));
        }
        const std::size_t bytes =
            sizeof(KeptChange) + (m_texts.count(text) > 0 ? 0 : text.size() + sizeof(std::uint32_t));
        if (m_budget.allows(bytes, 1)) {
            changes.column->append(KeptChange{passed.timeMs, keepText(text), changes.leftOut});
            m_budget.keep(bytes);
            changes.leftOut = 0;
        } else {
            ++changes.leftOut;
        }
        changes.text = std::move(text);
        changes.ms = passed.timeMs;
        changes.isFirst = false;
    }
    std::uint32_t keepText(const std::string& text)
    {
        constexpr std::size_t MostTexts = 4096;
        const auto known = m_texts.find(text);
        if (known != m_texts.end()) {
            return known->second;
        }
        Column& column = m_store.column(keyOf(Kept::Texts));
        const auto begin = static_cast<std::uint32_t>(column.bytes());
        column.append(static_cast<std::uint32_t>(text.size()));
        column.append(std::span(text.data(), text.size()));
        if (m_texts.size() == MostTexts) {
            m_texts.clear();
        }
        m_texts.emplace(text, begin);
        return begin;
    }
    void addBearing(const RecTool::BearingTaker::Taken& taken)
    {
        m_lastBearing = keptBearing(taken, m_momentMs, m_code, m_position);
        if (!m_budget.allows(sizeof(KeptBearing), ShareOfBearings)) {
            ++m_bearingsLeftOut;
            return;
        }
        m_lastBearing.leftOut = std::exchange(m_bearingsLeftOut, 0);
        m_store.column(keyOf(Kept::Bearings)).append(m_lastBearing);
        m_budget.keep(sizeof(KeptBearing));
    }

    /// Latitude and longitude change one after the other: what lies between the two is no position.
    void addPosition(double ms)
    {
        constexpr double Apart = 100;
        const auto position = m_taker.position();
        if (!position || (position->latitudeDeg == m_lastPosition.latitudeDeg &&
                          position->longitudeDeg == m_lastPosition.longitudeDeg)) {
            return;
        }
        if (ms - m_lastPosition.ms > Apart) {
            keepPosition();
        }
        m_lastPosition = {ms, position->latitudeDeg, position->longitudeDeg};
        m_positionIsKept = false;
    }
    void keepPosition()
    {
        if (!std::exchange(m_positionIsKept, true) && m_positionBudget.allows(sizeof(KeptPosition), 1)) {
            m_store.column(keyOf(Kept::Positions)).append(m_lastPosition);
            m_positionBudget.keep(sizeof(KeptPosition));
        }
    }

    Store& m_store;
    std::vector<Recording2::Inspection::TypeEntry> m_types;
    KeptBudget m_budget{16};
    KeptBudget m_positionBudget{48};  // a twelfth together
    std::map<std::int32_t, Kind> m_kinds;
    std::map<std::int32_t, Numbers> m_numbers;
    std::map<std::int32_t, Changes> m_changes;
    std::unordered_map<std::string, std::uint32_t> m_texts;  // those that were kept lately
    RecTool::BearingTaker m_taker;
    std::int64_t m_position = 0;  // of the record being added
    std::int32_t m_code = 0;
    double m_momentMs = 0;
    KeptBearing m_lastBearing;
    std::uint32_t m_bearingsLeftOut = 0;
    KeptPosition m_lastPosition;
    bool m_positionIsKept = true;
};

}  // namespace

double numberOf(const values::ValueBase* value)
{
    const auto* number = dynamic_cast<const values::ValueNumeric<double>*>(value);
    return number != nullptr ? number->GetValue() : NoNumber;
}

KeptBearing keptBearing(const RecTool::BearingTaker::Taken& taken, double ms, std::int32_t code, std::int64_t position)
{
    const RecTool::TakenBearing& bearing = taken.bearing;
    KeptBearing kept;
    kept.ms = ms;
    kept.timeMs = bearing.timeMs;
    kept.position = position;
    kept.code = code;
    kept.channel = bearing.channel;
    kept.measuredUs = bearing.measuredUs;
    kept.hz = bearing.frequencyHz;
    kept.azimuthDeg = bearing.bearing.azimuthDeg;
    kept.elevationDeg = bearing.bearing.elevationDeg;
    kept.levelDb = bearing.bearing.levelDb;
    kept.quality = bearing.bearing.quality;
    kept.headingDeg = bearing.headingDeg.value_or(NoNumber);
    kept.latitudeDeg = taken.hasPosition ? bearing.line.from.latitudeDeg : NoNumber;
    kept.longitudeDeg = taken.hasPosition ? bearing.line.from.longitudeDeg : NoNumber;
    return kept;
}

std::unique_ptr<OverviewPart> makeValuePart(Store& store, const Summary& summary)
{
    return std::make_unique<ValuePart>(store, summary);
}

}  // namespace RecView
