// Collecting rows of series, and writing them by the chunk.
#include "hdf5series.h"

#include <algorithm>
#include <utility>

namespace RecTool {

namespace {

constexpr std::size_t RowsOfPlain = 4096;

std::size_t rowsOfSpectra(std::size_t channels)
{
    constexpr std::size_t MostRows = 1024;
    constexpr std::size_t Cells = 262'144;  // a megabyte
    return std::clamp<std::size_t>(Cells / std::max<std::size_t>(channels, 1), 1, MostRows);
}

/// The axis of a range's frequencies.
Hdf5Column makeFrequencies(const Hdf5Group& group, const values::ChannelRange& range)
{
    constexpr std::size_t Rows = 65'536;
    Hdf5Column frequencies(group, "frequency", Hdf5Kind::Double, 0, std::clamp<std::size_t>(range.size(), 1, Rows));
    if (!frequencies.isNew()) {
        return frequencies;
    }
    std::vector<double> hz(range.size());
    for (std::size_t i = 0; i < hz.size(); ++i) {
        hz[i] = range.frequencyHz(i);
    }
    frequencies.append(hz.data(), hz.size());
    frequencies.makeScale("frequency");
    frequencies.describe("long_name", "centre of the channel");
    frequencies.describe("units", "Hz");
    return frequencies;
}

}  // namespace

Hdf5Series::Hdf5Series(const Hdf5Group& root, const SeriesName& name)
    : m_group(root, name.path), m_times(makeHdf5Times(m_group))
{
    if (m_times.isNew()) {
        m_group.describe("keyword", name.keyword);
        m_group.describe("type", std::int64_t{name.code});
        m_group.describe("device", name.device);
    }
}

void Hdf5Series::collected(std::int64_t us, std::size_t bytes, bool isFull)
{
    m_us.push_back(us);
    m_bytes += bytes + sizeof us;
    if (isFull) {
        flush();
    }
}

void Hdf5Series::flush()
{
    m_times.append(m_us.data(), m_us.size());
    write();
    m_us.clear();
    m_bytes = 0;
}

Hdf5Spectra::Hdf5Spectra(const Hdf5Group& root, const SeriesName& name, const values::ChannelRange& range)
    : Hdf5Series(root, name), m_levels(m_group, "level", Hdf5Kind::Float, range.size(), rowsOfSpectra(range.size()))
{
    if (m_levels.isNew()) {
        m_levels.attach(m_times, 0, "time");
        m_levels.attach(makeFrequencies(m_group, range), 1, "frequency");
        m_levels.describe("long_name", "level; not a number where nothing was measured");
        m_levels.describe("units", name.unit);
    }
}

void Hdf5Spectra::add(std::int64_t us, std::span<const float> levels)
{
    m_collected.insert(m_collected.end(), levels.begin(), levels.end());
    collected(us, levels.size_bytes(), rows() + 1 >= m_levels.rowsOfChunk());
}

void Hdf5Spectra::write()
{
    m_levels.append(m_collected.data(), rows());
    m_collected.clear();
}

template <typename Item>
Hdf5Plain<Item>::Hdf5Plain(const Hdf5Group& root, const SeriesName& name)
    : Hdf5Series(root, name), m_column(m_group, "value", IsText ? Hdf5Kind::Text : Hdf5Kind::Double, 0, RowsOfPlain)
{
    if (m_column.isNew()) {
        m_column.attach(m_times, 0, "time");
        m_column.describe("long_name", name.keyword);
        if (!name.unit.empty()) {
            m_column.describe("units", name.unit);
        }
    }
}

template <typename Item>
void Hdf5Plain<Item>::add(std::int64_t us, Item item)
{
    std::size_t bytes = sizeof item;
    if constexpr (IsText) {
        bytes = item.size();
    }
    m_collected.push_back(std::move(item));
    collected(us, bytes, rows() + 1 >= RowsOfPlain);
}

template <typename Item>
void Hdf5Plain<Item>::write()
{
    if constexpr (IsText) {
        std::vector<const char*> texts;
        std::transform(m_collected.begin(), m_collected.end(), std::back_inserter(texts),
                       [](const std::string& text) { return text.c_str(); });
        m_column.append(static_cast<const void*>(texts.data()), rows());
    } else {
        m_column.append(m_collected.data(), rows());
    }
    m_collected.clear();
}

template class Hdf5Plain<double>;
template class Hdf5Plain<std::string>;

Hdf5Bearings::Hdf5Bearings(const Hdf5Group& root, const SeriesName& name) : Hdf5Series(root, name)
{
    struct Figure {
        const char* name;
        const char* meaning;
        const char* unit;
    };
    constexpr std::array<Figure, std::tuple_size_v<Row>> Figures{
        {{"frequency", "centre of the channel", "Hz"},
         {"azimuth", "azimuth, clockwise from the antenna's zero", "degrees"},
         {"heading", "direction of the antenna's zero, clockwise from true north", "degrees"},
         {"elevation", "elevation", "degrees"},
         {"level", "level", ""},
         {"quality", "quality", "percent"},
         {"latitude", "latitude of the direction finder", "degrees_north"},
         {"longitude", "longitude of the direction finder", "degrees_east"}}};
    for (const Figure& figure : Figures) {
        Hdf5Column column(m_group, figure.name, Hdf5Kind::Double, 0, RowsOfPlain);
        if (column.isNew()) {
            column.attach(m_times, 0, "time");
            column.describe("long_name", figure.meaning);
            column.describe("units", *figure.unit == 0 ? name.unit : figure.unit);
        }
        m_columns.push_back(std::move(column));
    }
}

void Hdf5Bearings::add(std::int64_t us, const Row& row)
{
    for (std::size_t i = 0; i < row.size(); ++i) {
        m_collected[i].push_back(row[i]);
    }
    collected(us, sizeof row, rows() + 1 >= RowsOfPlain);
}

void Hdf5Bearings::write()
{
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        m_columns[i].append(m_collected[i].data(), rows());
        m_collected[i].clear();
    }
}

}  // namespace RecTool
