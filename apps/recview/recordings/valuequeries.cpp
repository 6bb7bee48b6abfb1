// Searching columns by time, and reading records where these are few enough.
#include "keptcolumns.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "rectool/replay/inforce.h"

namespace RecView {

namespace {

constexpr std::int64_t MostReadBytes = std::int64_t{8} << 20;  // some 50 ms

/// The number of the first entry after a time.
template <typename Entry>
std::uint64_t firstAfter(const Column& column, double ms)
{
    return column.partitionPoint<Entry>([ms](const Entry& entry) { return entry.ms <= ms; });
}

/// Entries of a column, from the one in force at the beginning to the last one of a stretch.
struct Entries {
    std::uint64_t first = 0;
    std::uint64_t end = 0;

    [[nodiscard]] std::uint64_t size() const { return end - first; }
};

template <typename Entry>
Entries entriesIn(const Column* column, const Stretch& time)
{
    if (column == nullptr) {
        return {};
    }
    const std::uint64_t after = firstAfter<Entry>(*column, time.fromMs);
    return {after == 0 ? 0 : after - 1, firstAfter<Entry>(*column, time.toMs)};
}

template <typename Entry>
std::vector<Entry> readEntries(const Column& column, const Entries& entries)
{
    std::vector<Entry> read(entries.size());
    const bool isRead = column.read(entries.first, std::span(read));
    return isRead ? read : std::vector<Entry>();
}

/// Evenly a few of them; of a stretch with millions not all are read.
template <typename Entry>
std::vector<Entry> readSome(const Column& column, const Entries& entries, std::size_t most)
{
    if (entries.size() <= 4 * most) {
        std::vector<Entry> all = readEntries<Entry>(column, entries);
        thin(all, most);
        return all;
    }
    std::vector<Entry> some;
    for (std::size_t i = 0; i < most; ++i) {
        some.push_back(column.at<Entry>(entries.first + i * entries.size() / most));
    }
    return some;
}

void push(NumberCurve& curve, double ms, double min, double max, double last)
{
    curve.ms.push_back(ms);
    curve.min.push_back(min);
    curve.max.push_back(max);
    curve.last.push_back(last);
}

/// What the numbers of a stretch are made of.
struct NumberPlan {
    std::vector<KeptNumber> numbers;
    std::vector<KeptBlock> blocks;
    bool isExact = false;
    bool areRead = false;  ///< from the records
};

/// As many numbers as make about so many points become one.
void pushTogether(NumberCurve& curve, const std::vector<KeptNumber>& numbers, std::size_t points)
{
    const std::size_t together = (numbers.size() + points - 1) / points;
    for (std::size_t i = 0; i < numbers.size(); i += together) {
        const std::span group = std::span(numbers).subspan(i, std::min(together, numbers.size() - i));
        double min = group.front().value;
        double max = min;
        for (const KeptNumber& number : group) {
            min = std::fmin(min, number.value);
            max = std::fmax(max, number.value);
        }
        push(curve, group.front().ms, min, max, group.back().value);
    }
}

/// Every number of the stretch is kept, and these are not too many to be looked at.
bool planNumbers(const Store& store, std::int32_t code, const Stretch& time, std::size_t points, NumberPlan& plan)
{
    const Column* all = store.find(keyOf(Kept::Numbers, code));
    const Column* end = store.find(keyOf(Kept::NumbersEnd, code));
    constexpr std::uint64_t MostRead = 200'000;
    const Entries entries = entriesIn<KeptNumber>(all, time);
    if (entries.size() > MostRead || (end != nullptr && end->at<double>(0) <= time.toMs)) {
        return false;
    }
    plan.isExact = entries.size() <= 4 * points;
    plan.numbers = entries.size() > 0 ? readEntries<KeptNumber>(*all, entries) : plan.numbers;
    return true;
}

void planBlocks(const Store& store, std::int32_t code, const Stretch& time, std::size_t points, std::int64_t bytes,
                NumberPlan& plan)
{
    for (std::uint32_t level = 0; level < BlockLevels; ++level) {
        const Column* column = store.find(keyOf(Kept::NumberBlocks, code, level));
        const Entries entries = entriesIn<KeptBlock>(column, time);
        const bool isLast =
            level + 1 == BlockLevels || store.find(keyOf(Kept::NumberBlocks, code, level + 1)) == nullptr;
        if (entries.size() > 2 * points && !isLast) {
            continue;
        }
        plan.blocks = entries.size() > 0 ? readEntries<KeptBlock>(*column, entries) : plan.blocks;
        const bool hasNext = column != nullptr && entries.end < column->count<KeptBlock>();
        const std::int64_t end = hasNext ? column->at<KeptBlock>(entries.end).position : bytes;
        const std::int64_t begin = plan.blocks.empty() ? 0 : plan.blocks.front().position;
        const bool areFew = entries.size() * NumbersPerBlock <= 4 * points;
        plan.areRead = level == 0 && areFew && end - begin <= MostReadBytes;
        return;
    }
}

void readNumbers(const Overview& overview, std::int32_t code, const Stretch& time, NumberCurve& curve)
{
    const auto pushRecord = [&](const RecTool::LastRecord& last) {
        const double number = numberOf(last.value);
        push(curve, overview.head().startMs + static_cast<double>(last.record.timeMs), number, number, number);
    };
    const RecTool::InForce state = overview.stateAt(time.fromMs);
    const RecTool::LastRecord* inForce = state.find(code);
    const std::int64_t position = inForce != nullptr ? inForce->record.position : 0;
    if (inForce != nullptr) {
        pushRecord(*inForce);
    }
    overview.walk(time, [&](const Record& record, const RecTool::InForce& now) {
        if (record.code == code && record.position > position) {
            pushRecord(*now.find(code));
        }
        return true;
    });
}

std::string textAt(const Store& store, std::uint32_t begin)
{
    const Column* texts = store.find(keyOf(Kept::Texts));
    std::uint32_t size = 0;
    if (texts == nullptr || !texts->readBytes(begin, std::as_writable_bytes(std::span(&size, 1))) ||
        size > texts->bytes()) {
        return "";
    }
    std::string text(size, '\0');
    const bool isRead = texts->readBytes(begin + sizeof(size), std::as_writable_bytes(std::span(text)));
    return isRead ? text : "";
}

/// The bearings of a stretch, with what each of them stands for besides.
struct BearingPlan {
    std::vector<KeptBearing> kept;
    double all = 0;  ///< how many there are
    bool isExact = true;
    std::int64_t bytes = 0;  ///< of the records of the stretch
};

BearingPlan planBearings(const Overview& overview, const Stretch& time, std::size_t most)
{
    const std::int64_t bytesInAll = overview.head().bytes;
    const bool isComplete = overview.isComplete();
    const auto lock = overview.lock();
    BearingPlan plan;
    const Column* column = overview.store().find(keyOf(Kept::Bearings));
    if (column == nullptr) {
        return plan;
    }
    Entries entries = entriesIn<KeptBearing>(column, time);
    if (entries.size() > 0 && column->at<KeptBearing>(entries.first).ms < time.fromMs) {
        ++entries.first;  // a bearing is a moment and is not in force
    }
    const bool hasNext = entries.end < column->count<KeptBearing>();
    const KeptBearing next = column->at<KeptBearing>(entries.end);
    const KeptBearing before = entries.first > 0 ? column->at<KeptBearing>(entries.first - 1) : KeptBearing();
    plan.kept = readSome<KeptBearing>(*column, entries, 4 * most);
    plan.isExact = hasNext ? next.leftOut == 0 : isComplete;
    for (const KeptBearing& bearing : plan.kept) {
        plan.all += 1.0 + bearing.leftOut;
        plan.isExact = plan.isExact && bearing.leftOut == 0;
    }
    plan.all *= static_cast<double>(entries.size()) / static_cast<double>(std::max<std::size_t>(1, plan.kept.size()));
    plan.bytes = (hasNext ? next.position : bytesInAll) - before.position;
    thin(plan.kept, most);
    return plan;
}

/// Takes all bearings of a stretch out of its records, which begin with the state at its beginning.
class BearingReading {
public:
    BearingReading(const Overview& overview, const std::vector<Recording2::Inspection::TypeEntry>& types,
                   const Stretch& time, std::vector<KeptBearing>& bearings)
        : m_overview(overview),
          m_time(time),
          m_bearings(bearings),
          m_startMs(overview.head().startMs),
          m_taker(RecTool::TypeNames(types), static_cast<std::uint64_t>(m_startMs),
                  [this](const auto& taken) { take(taken); })
    {
    }

    void read()
    {
        constexpr double FiledLater = 10'000;  // what was measured in the stretch may be filed after it
        const std::int64_t last = restore();
        m_tells = true;
        m_overview.walk({m_time.fromMs, m_time.toMs + FiledLater}, [&](const Record& record, const RecTool::InForce&) {
            m_record = &record;
            if (record.position > last) {
                m_taker.apply(record);
            }
            return true;
        });
    }

private:
    /// @return the position of the last record of the state
    std::int64_t restore()
    {
        const RecTool::InForce state = m_overview.stateAt(m_time.fromMs);
        std::int64_t position = 0;
        for (const auto& [code, last] : state.inOrder()) {
            position = std::max(position, last->record.position);
            for (const std::string& text : state.completeTexts(code)) {
                m_taker.apply({last->record.position, last->record.timeMs, code, text});
            }
        }
        return position;
    }
    void take(const RecTool::BearingTaker::Taken& taken)
    {
        m_ms = std::max(m_ms, m_startMs + taken.momentMs);
        if (m_tells && m_ms >= m_time.fromMs && m_ms <= m_time.toMs) {
            m_bearings.push_back(keptBearing(taken, m_ms, m_record->code, m_record->position));
        }
    }

    const Overview& m_overview;
    Stretch m_time;
    std::vector<KeptBearing>& m_bearings;
    double m_startMs;
    RecTool::BearingTaker m_taker;
    const Record* m_record = nullptr;
    double m_ms = 0;
    bool m_tells = false;
};

}  // namespace

void appendNumbers(const Overview& overview, std::int32_t code, const Stretch& time, std::size_t points,
                   NumberCurve& curve)
{
    const std::int64_t bytes = overview.head().bytes;
    NumberPlan plan;
    {
        const auto lock = overview.lock();
        if (!planNumbers(overview.store(), code, time, points, plan)) {
            planBlocks(overview.store(), code, time, points, bytes, plan);
        }
    }
    if (!plan.numbers.empty()) {
        pushTogether(curve, plan.numbers, plan.isExact ? plan.numbers.size() : points);
    }
    if (plan.isExact) {
        return;
    }
    if (plan.areRead) {
        return readNumbers(overview, code, time, curve);
    }
    curve.exact = false;
    for (const KeptBlock& block : plan.blocks) {
        push(curve, block.ms, block.min, block.max, block.last);
    }
}

std::uint64_t appendChanges(const Overview& overview, std::int32_t code, const Stretch& time, std::size_t most,
                            std::vector<TextChange>& changes)
{
    const auto lock = overview.lock();
    const Column* column = overview.store().find(keyOf(Kept::Changes, code));
    if (column == nullptr) {
        return 0;
    }
    const Entries entries = entriesIn<KeptChange>(column, time);
    const std::vector<KeptChange> kept = readSome<KeptChange>(*column, entries, most);
    std::uint64_t leftOut = entries.size() - kept.size();
    for (const KeptChange& change : kept) {
        changes.push_back({change.ms, textAt(overview.store(), change.text)});
        leftOut += change.leftOut;
    }
    return leftOut;
}

double appendBearings(const Overview& overview, const std::vector<Recording2::Inspection::TypeEntry>& types,
                      const Stretch& time, std::size_t most, std::vector<KeptBearing>& bearings)
{
    BearingPlan plan = planBearings(overview, time, most);
    if (!plan.isExact && plan.bytes <= MostReadBytes) {
        plan.kept.clear();
        BearingReading(overview, types, time, plan.kept).read();
        plan.all = static_cast<double>(plan.kept.size());
        thin(plan.kept, most);
    }
    bearings.insert(bearings.end(), plan.kept.begin(), plan.kept.end());
    return plan.all;
}

void appendPositions(const Overview& overview, const Stretch& time, std::size_t most,
                     std::vector<KeptPosition>& positions)
{
    const auto lock = overview.lock();
    if (const Column* column = overview.store().find(keyOf(Kept::Positions))) {
        const auto read = readSome<KeptPosition>(*column, entriesIn<KeptPosition>(column, time), most);
        positions.insert(positions.end(), read.begin(), read.end());
    }
}

std::vector<KeptKind> kindsOf(const Overview& overview)
{
    const auto lock = overview.lock();
    const Column* column = overview.store().find(keyOf(Kept::Kinds));
    return column == nullptr ? std::vector<KeptKind>() : readEntries<KeptKind>(*column, {0, column->count<KeptKind>()});
}

}  // namespace RecView
