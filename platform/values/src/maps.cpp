// Cells of maps, which cells a change carries, and applying recorded ones.
#include <values/maps.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

#include <vkbase/vkexception.h>

#include "maptexts.h"

namespace values {

namespace {

/// Past this many separate runs of written cells, keeping them apart costs more than sending every cell.
constexpr std::size_t MostRuns = 64;
/// What the head of a run costs, in cells.
constexpr std::size_t RunHeadCells = 2;

const char* const MapsSource = "platform\\values\\maps";

bool compressMode = true;

template <typename Entry>
const Entry NoEntry{};

template <>
const float NoEntry<float> = std::numeric_limits<float>::quiet_NaN();

template <typename Entry>
constexpr ValueType KindTag = std::is_same_v<Entry, float> ? ValueType::LevelMap : ValueType::BearingMap;

/// A piece of the recorded cells: as many as follow in the list of cells, to be written from a channel on.
struct Piece {
    std::size_t first;
    std::size_t count;
};

template <typename Entry>
struct RecordedCells {
    std::vector<Piece> pieces;
    std::vector<Entry> cells;
};

template <typename Entry>
bool readPiece(const Text::Command& command, std::size_t channels, RecordedCells<Entry>& recorded)
{
    std::string_view payload = command.payload;
    std::uint64_t first = 0;
    const bool all = command.number == Text::AllCells;
    if (!all && (!Text::readNumber(Text::takeField(payload), first) || first >= channels)) {
        return false;
    }
    const std::size_t before = recorded.cells.size();
    const std::size_t most = channels - static_cast<std::size_t>(first);
    if (!readCells(payload, most, recorded.cells)) {
        return false;
    }
    const std::size_t count = recorded.cells.size() - before;
    recorded.pieces.push_back({static_cast<std::size_t>(first), count});
    return all ? count == channels : count > 0;
}

template <typename Entry>
bool readPieces(std::string_view text, std::size_t channels, RecordedCells<Entry>& recorded)
{
    Text::Command command;
    while (!text.empty()) {
        if (!Text::takeCommand(text, command) || !readPiece(command, channels, recorded)) {
            return false;
        }
    }
    return true;
}

QString cellsText(std::span<const float> levels)
{
    float least = std::numeric_limits<float>::infinity();
    float greatest = -least;
    bool measured = false;
    for (const float level : levels) {
        measured = measured || !std::isnan(level);
        least = level < least ? level : least;
        greatest = level > greatest ? level : greatest;
    }
    if (!measured) {
        return QStringLiteral("no measurement");
    }
    return QStringLiteral("%1 to %2 dB")
        .arg(static_cast<double>(least), 0, 'f', 2)
        .arg(static_cast<double>(greatest), 0, 'f', 2);
}

QString cellsText(std::span<const Bearing> bearings)
{
    const auto present = std::count_if(bearings.begin(), bearings.end(),
                                       [](const Bearing& bearing) { return !std::isnan(bearing.azimuthDeg); });
    return present == 1 ? QStringLiteral("1 bearing") : QStringLiteral("%1 bearings").arg(present);
}

}  // namespace

bool HandlerBase::GetDataCompressMode()
{
    return compressMode;
}

void HandlerBase::SetDataCompressMode(bool on)
{
    compressMode = on;
}

MappingBase::~MappingBase() = default;

void MappingBase::SetChannelRange(const ChannelRange& range, IObserver* originator)
{
    if (!isAllowed(range)) {
        throw VKException("A channel range is too large or has a frequency that is no number", MapsSource,
                          "MappingBase::SetChannelRange", __LINE__);
    }
    if (ReplaceRange(normalized(range))) {
        NotifyMapChange(originator);
    }
}

bool MappingBase::ReplaceRange(ChannelRange range)
{
    if (range == m_range) {
        return false;
    }
    ResizeCells(range.size());
    m_range = std::move(range);
    m_timeStamp = 0;
    m_written.clear();
    m_allPending = IsCommandRecording();
    return true;
}

void MappingBase::CollectCells(std::size_t first, std::size_t count)
{
    if (!IsCommandRecording() || m_allPending || count == 0) {
        return;
    }
    CellRun run{first, first + count};
    const auto begin = std::lower_bound(m_written.begin(), m_written.end(), run.first,
                                        [](const CellRun& other, std::size_t cell) { return other.end < cell; });
    auto end = begin;
    for (; end != m_written.end() && end->first <= run.end; ++end) {
        run.first = std::min(run.first, end->first);
        run.end = std::max(run.end, end->end);
    }
    m_written.insert(m_written.erase(begin, end), run);
    if (m_written.size() > MostRuns) {
        m_written.assign(1, {0, size()});
    }
}

void MappingBase::NotifyMapChange(const IObserver* originator)
{
    NotifyChange(IsCommandRecording() ? TChangeCode::CommandsPending : TChangeCode::ValueChanged, originator);
}

void MappingBase::EndApplied(bool changed, bool notify)
{
    if (!changed) {
        return;
    }
    if (notify) {
        NotifyMapChange(nullptr);
    } else {
        ChangeSilently();
    }
}

void MappingBase::ClearCollectedChange(bool wasGiven)
{
    m_written.clear();
    m_allPending = m_allPending && !wasGiven;
}

void MappingBase::CommandRecordingStarted()
{
    m_allPending = true;
}

bool MappingBase::SendsEveryCell() const
{
    if (m_allPending || !HandlerBase::GetDataCompressMode()) {
        return true;
    }
    std::size_t cost = 0;
    for (const CellRun& run : m_written) {
        cost += run.end - run.first + RunHeadCells;
    }
    return cost > 0 && cost >= size();
}

template <typename Entry, typename Handler>
CellMap<Entry, Handler>::CellMap() = default;

template <typename Entry, typename Handler>
CellMap<Entry, Handler>::~CellMap() = default;

template <typename Entry, typename Handler>
void CellMap<Entry, Handler>::SetCells(std::size_t first, std::span<const Entry> cells, unsigned long long timeStamp,
                                       IObserver* originator)
{
    if (first > m_cells.size() || cells.size() > m_cells.size() - first) {
        throw VKException("Cells past the end of the channel range", MapsSource, "CellMap::SetCells", __LINE__);
    }
    WriteCells(first, cells);
    this->m_timeStamp = timeStamp;
    this->NotifyMapChange(originator);
}

template <typename Entry, typename Handler>
void CellMap<Entry, Handler>::SetCell(std::size_t channel, const Entry& cell, unsigned long long timeStamp,
                                      IObserver* originator)
{
    SetCells(channel, std::span<const Entry>(&cell, 1), timeStamp, originator);
}

template <typename Entry, typename Handler>
void CellMap<Entry, Handler>::WriteCells(std::size_t first, std::span<const Entry> cells)
{
    std::copy(cells.begin(), cells.end(), m_cells.begin() + static_cast<std::ptrdiff_t>(first));
    this->CollectCells(first, cells.size());
}

template <typename Entry, typename Handler>
QString CellMap<Entry, Handler>::GetText() const
{
    const QString range = rangeText(this->m_range);
    return m_cells.empty() ? range : range + QStringLiteral(", ") + cellsText(GetCells());
}

template <typename Entry, typename Handler>
std::string CellMap<Entry, Handler>::GetObjectStateStringForRecording() const
{
    std::string text;
    AppendHead(text);
    appendRange(text, this->m_range);
    AppendEveryCell(text);
    return text;
}

template <typename Entry, typename Handler>
void CellMap<Entry, Handler>::AppendChangeText(std::string& text) const
{
    AppendHead(text);
    if (this->SendsRange()) {
        appendRange(text, this->m_range);
    }
    if (this->SendsEveryCell()) {
        AppendEveryCell(text);
        return;
    }
    for (const auto& run : this->WrittenCells()) {
        Text::appendCommand(text, Text::CellRun);
        Text::appendNumber(text, run.first);
        text += Text::FieldEnd;
        appendCells(text, GetCells().subspan(run.first, run.end - run.first));
    }
}

template <typename Entry, typename Handler>
void CellMap<Entry, Handler>::AppendHead(std::string& text) const
{
    Text::appendCommand(text, static_cast<std::int32_t>(KindTag<Entry>));
    Text::appendNumber(text, this->m_timeStamp);
}

template <typename Entry, typename Handler>
void CellMap<Entry, Handler>::AppendEveryCell(std::string& text) const
{
    Text::appendCommand(text, Text::AllCells);
    appendCells(text, GetCells());
}

template <typename Entry, typename Handler>
bool CellMap<Entry, Handler>::ApplyRecordedState(const std::string& text, std::int32_t /*originatorKey*/, bool notify)
{
    if (text.empty()) {
        return true;
    }
    // Everything is read before anything is changed.
    const std::optional<Text::Parts> parts = Text::parse(text);
    ChannelRange range;
    if (!parts || (parts->range && !readRange(*parts->range, range))) {
        return false;
    }
    const std::size_t channels = parts->range ? range.size() : this->size();
    const bool sameKind = parts->kind == KindTag<Entry>;
    std::uint64_t timeStamp = 0;
    RecordedCells<Entry> recorded;
    if (sameKind && (!Text::readNumber(parts->value, timeStamp) || !readPieces(parts->cells, channels, recorded))) {
        return false;
    }
    bool changed = parts->range && this->ReplaceRange(std::move(range));
    if (sameKind) {
        std::span<const Entry> cells = recorded.cells;
        for (const Piece& piece : recorded.pieces) {
            WriteCells(piece.first, cells.first(piece.count));
            cells = cells.subspan(piece.count);
        }
        changed = changed || !recorded.pieces.empty() || this->m_timeStamp != timeStamp;
        this->m_timeStamp = timeStamp;
    }
    this->EndApplied(changed, notify);
    return true;
}

template <typename Entry, typename Handler>
void CellMap<Entry, Handler>::ResizeCells(std::size_t count)
{
    m_cells = std::vector<Entry>(count, NoEntry<Entry>);
}

template <typename Entry, typename Handler>
ValueType ValueMap<Entry, Handler>::GetType() const
{
    return KindTag<Entry>;
}

template <typename Entry, typename Handler>
ValueType FastValueMap<Entry, Handler>::GetType() const
{
    return std::is_same_v<Entry, Bearing> ? ValueType::FastBearingMap : KindTag<Entry>;
}

template class CellMap<float, levelHandler>;
template class CellMap<Bearing, BearingHandler>;
template class ValueMap<Bearing, BearingHandler>;
template class FastValueMap<float, levelHandler>;
template class FastValueMap<Bearing, BearingHandler>;

}  // namespace values
