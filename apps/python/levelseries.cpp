// Walking the records of a spectrum into arrays, one for each of its channel ranges.
#include "calls.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include <values/maps.h>
#include <values/recordingtext.h>

#include "pythonvalues.h"
#include "reading.h"
#include "rectool/printing/text.h"

namespace RecPython {

namespace py = pybind11;

namespace {

/// Levels that are appended row by row. Where it grows, the system moves pages instead of copying them.
class LevelRows {
public:
    /// @throws std::bad_alloc
    void append(std::span<const float> levels);
    void append(std::span<const float> levels, const std::vector<std::size_t>& channels);
    [[nodiscard]] std::size_t size() const { return m_size; }
    /// The memory is the caller's from now on, to be given to free().
    [[nodiscard]] float* release();

private:
    struct Free {
        void operator()(float* memory) const { std::free(memory); }
    };
    [[nodiscard]] std::span<float> more(std::size_t cells);

    std::unique_ptr<float, Free> m_levels;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

struct LevelSeries {
    values::ChannelRange range;
    std::vector<std::size_t> channels;  ///< that were asked for
    bool isAll = false;                 ///< they are all of the range
    std::vector<double> frequenciesHz;  ///< of the channels
    std::vector<std::int64_t> sinceStartUs;
    LevelRows levels;
    std::uint64_t seen = 0;  ///< also those between, where only some are wanted
};

/// Which spectra are wanted.
struct LevelRequest : Request {
    std::optional<double> lowHz;
    std::optional<double> highHz;
    std::uint64_t every = 1;
    bool complete = false;  ///< levels in force after each record instead of those that it brought
    bool byRange = false;   ///< otherwise more than one range is refused
};

struct FoundSpectra : FoundType {
    std::vector<std::unique_ptr<LevelSeries>> series;
};

std::span<float> LevelRows::more(std::size_t cells)
{
    constexpr std::size_t Least = 65'536;
    if (m_capacity - m_size < cells) {
        const std::size_t capacity = std::max({Least, m_size + cells, m_capacity + m_capacity / 2});
        void* const moved = std::realloc(m_levels.get(), capacity * sizeof(float));
        if (moved == nullptr) {
            throw std::bad_alloc();
        }
        static_cast<void>(m_levels.release());  // realloc has taken it
        m_levels.reset(static_cast<float*>(moved));
        m_capacity = capacity;
    }
    const std::span<float> added(m_levels.get() + m_size, cells);
    m_size += cells;
    return added;
}

void LevelRows::append(std::span<const float> levels)
{
    std::copy(levels.begin(), levels.end(), more(levels.size()).begin());
}

void LevelRows::append(std::span<const float> levels, const std::vector<std::size_t>& channels)
{
    std::transform(channels.begin(), channels.end(), more(channels.size()).begin(),
                   [levels](std::size_t channel) { return levels[channel]; });
}

float* LevelRows::release()
{
    void* const fitted = m_size == 0 ? nullptr : std::realloc(m_levels.get(), m_size * sizeof(float));
    if (fitted != nullptr) {
        static_cast<void>(m_levels.release());
        m_levels.reset(static_cast<float*>(fitted));
    }
    return m_levels.release();
}

class SpectraReader {
public:
    explicit SpectraReader(const LevelRequest& request) : m_request(request), m_reading(request) {}

    [[nodiscard]] FoundSpectra read()
    {
        m_reading.walk([this](const RecTool::PlacedRecord& placed, bool isOfType) {
            if (isOfType) {
                visit(placed);
            }
        });
        const bool isChosen =
            std::any_of(m_series.begin(), m_series.end(), [](const auto& series) { return !series->channels.empty(); });
        if (!m_request.byRange && !isChosen) {
            refuseNothing();
        }
        std::erase_if(m_series, [](const auto& series) { return series->channels.empty(); });
        return {m_reading.found(m_notUnderstood), std::move(m_series)};
    }

private:
    void visit(const RecTool::PlacedRecord& placed)
    {
        const bool isBefore = m_reading.recordings().isBefore(placed.momentMs);
        if (isBefore && !m_request.complete && !values::CarriesChannelRange(placed.record.data)) {
            return;
        }
        const RecTool::LevelMap* map = levelsOf(placed);
        if (isBefore || map == nullptr) {
            return;
        }
        const std::span<const float> levels = map->GetCells();
        const auto isNothing = [](float level) { return std::isnan(level); };
        if (!m_request.complete && std::all_of(levels.begin(), levels.end(), isNothing)) {
            return;  // the state at a recording's start, say
        }
        m_anyInSpan = true;
        LevelSeries* const series = seriesOf(map->GetChannelRange());
        if (series == nullptr || series->channels.empty() || series->seen++ % m_request.every != 0) {
            return;
        }
        series->isAll ? series->levels.append(levels) : series->levels.append(levels, series->channels);
        series->sinceStartUs.push_back(m_reading.sinceStartUs(placed));
    }
    [[nodiscard]] const RecTool::LevelMap* levelsOf(const RecTool::PlacedRecord& placed)
    {
        const values::ValueBase* const value =
            m_request.complete ? placed.recorded.apply(placed.record) : placed.recorded.applyAlone(placed.record);
        if (value == nullptr) {
            ++m_notUnderstood;
            return nullptr;
        }
        if (value->GetType() != values::ValueType::LevelMap) {
            ++m_noMaps;
            return nullptr;
        }
        return static_cast<const RecTool::LevelMap*>(value);
    }
    [[nodiscard]] LevelSeries* seriesOf(const values::ChannelRange& range)
    {
        if (m_last != nullptr && m_last->range == range) {
            return m_last;
        }
        const auto found =
            std::find_if(m_series.begin(), m_series.end(), [&](const auto& series) { return series->range == range; });
        m_last = found == m_series.end() ? startSeries(range) : found->get();
        return m_last;
    }
    [[nodiscard]] LevelSeries* startSeries(const values::ChannelRange& range)
    {
        if (range.size() == 0) {
            return nullptr;
        }
        auto series = std::make_unique<LevelSeries>();
        series->range = range;
        chooseChannels(*series);
        const auto hasChannels = [](const auto& other) { return !other->channels.empty(); };
        if (!m_request.byRange && !series->channels.empty() &&
            std::any_of(m_series.begin(), m_series.end(), hasChannels)) {
            throw Refusal(RecTool::ExitCode::Usage, m_reading.recordings().file(),
                          RecTool::oneLine(m_request.keyword) +
                              " has more than one channel range in the span, so its spectra do not fit into one array: "
                              "spectra_by_range() gives one array for each range, and start, stop, low_hz and high_hz "
                              "choose what has one range.");
        }
        m_series.push_back(std::move(series));
        return m_series.back().get();
    }
    void chooseChannels(LevelSeries& series) const
    {
        for (std::size_t channel = 0; channel < series.range.size(); ++channel) {
            const double hz = series.range.frequencyHz(channel);
            if (hz >= m_request.lowHz.value_or(hz) && hz <= m_request.highHz.value_or(hz)) {
                series.channels.push_back(channel);
                series.frequenciesHz.push_back(hz);
            }
        }
        series.isAll = series.channels.size() == series.range.size();
    }
    [[noreturn]] void refuseNothing() const
    {
        const std::string keyword = RecTool::oneLine(m_request.keyword);
        std::string why = "There is no record of " + keyword + " with a level in the span.";
        if (m_anyInSpan) {
            why = keyword + " has no channel from low_hz to high_hz: its channels lie elsewhere.";
        } else if (m_noMaps > 0) {
            why = "The records of " + keyword + " hold no spectrum: values() and records() give what they hold.";
        }
        throw Refusal(RecTool::ExitCode::Usage, m_reading.recordings().file(), why);
    }

    const LevelRequest& m_request;
    TypeReading m_reading;
    std::vector<std::unique_ptr<LevelSeries>> m_series;
    LevelSeries* m_last = nullptr;
    std::uint64_t m_notUnderstood = 0;
    std::uint64_t m_noMaps = 0;
    bool m_anyInSpan = false;
};

/// Rows by channels. The rows are empty then.
py::array_t<float> takenLevels(LevelSeries& series)
{
    const auto rows = static_cast<py::ssize_t>(series.sinceStartUs.size());
    const auto columns = static_cast<py::ssize_t>(series.channels.size());
    float* const levels = series.levels.release();
    if (levels == nullptr) {
        return py::array_t<float>(std::vector<py::ssize_t>{rows, columns});
    }
    const py::capsule owner(levels, [](void* memory) { std::free(memory); });
    return py::array_t<float>({rows, columns}, levels, owner);
}

}  // namespace

py::dict spectraOf(const std::vector<std::string>& files, const std::string& keyword, const std::string& device,
                   const std::string& from, const std::string& to, std::optional<double> lowHz,
                   std::optional<double> highHz, std::uint64_t every, bool complete, bool byRange)
{
    const LevelRequest request{{files, keyword, device, from, to}, lowHz, highHz, every, complete, byRange};
    FoundSpectra found = readUnlocked<SpectraReader>(request);
    py::list series;
    for (const auto& one : found.series) {
        const py::array levels = takenLevels(*one);
        series.append(py::make_tuple(takenArray(std::move(one->sinceStartUs)),
                                     takenArray(std::move(one->frequenciesHz)), levels));
    }
    py::dict all = aboutType(found);
    all["series"] = series;
    return all;
}

}  // namespace RecPython
