// Series of spectra, numbers and texts in an HDF5 file, collected until they fill a chunk.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include <values/maps.h>

#include "hdf5file.h"

namespace RecTool {

/// What of a series is told beside it.
struct SeriesName {
    std::string path;  ///< of its group
    std::string keyword;
    std::string device;
    std::int32_t code = 0;
    std::string unit;  ///< empty where there is none
};

class Hdf5Series {
public:
    Hdf5Series(const Hdf5Group& root, const SeriesName& name);
    Hdf5Series(const Hdf5Series&) = delete;
    Hdf5Series& operator=(const Hdf5Series&) = delete;
    virtual ~Hdf5Series() = default;

    /// Writes what was collected.
    void flush();
    /// That wait to be written, about.
    [[nodiscard]] std::size_t bytes() const { return m_bytes; }

protected:
    /// Notes the time of a row, which was collected before.
    void collected(std::int64_t us, std::size_t bytes, bool isFull);
    virtual void write() = 0;  ///< and forget
    [[nodiscard]] std::size_t rows() const { return m_us.size(); }

    Hdf5Group m_group;
    Hdf5Column m_times;

private:
    std::vector<std::int64_t> m_us;
    std::size_t m_bytes = 0;
};

class Hdf5Spectra final : public Hdf5Series {
public:
    Hdf5Spectra(const Hdf5Group& root, const SeriesName& name, const values::ChannelRange& range);
    void add(std::int64_t us, std::span<const float> levels);

private:
    void write() override;
    Hdf5Column m_levels;
    std::vector<float> m_collected;
};

/// Single numbers or texts over time.
template <typename Item>
class Hdf5Plain final : public Hdf5Series {
public:
    Hdf5Plain(const Hdf5Group& root, const SeriesName& name);
    void add(std::int64_t us, Item item);

private:
    static constexpr bool IsText = std::is_same_v<Item, std::string>;

    void write() override;
    Hdf5Column m_column;
    std::vector<Item> m_collected;
};
using Hdf5Numbers = Hdf5Plain<double>;
using Hdf5Texts = Hdf5Plain<std::string>;

/// Bearings with where they were taken; each figure is a column over time.
class Hdf5Bearings final : public Hdf5Series {
public:
    /// Frequency, azimuth, heading, elevation, level, quality, latitude, longitude.
    using Row = std::array<double, 8>;

    Hdf5Bearings(const Hdf5Group& root, const SeriesName& name);
    void add(std::int64_t us, const Row& row);

private:
    void write() override;
    std::vector<Hdf5Column> m_columns;
    std::array<std::vector<double>, std::tuple_size_v<Row>> m_collected;
};

}  // namespace RecTool
