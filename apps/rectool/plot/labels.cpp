// Moving crowded labels apart, and leaving out those that find no place near by.
#include "labels.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace RecTool {

namespace {

/// Labels that touch; together they stand around the mean of what they want.
struct Block {
    std::size_t count;
    double sum;  // of the wanted middles, each less its offset in the block

    [[nodiscard]] double begin(double size, double low, double high) const
    {
        const double length = size * static_cast<double>(count);
        return std::clamp(sum / static_cast<double>(count) - size / 2, low, std::max(low, high - length));
    }
};

std::vector<double> spread(const std::vector<double>& wanted, const std::vector<std::size_t>& left, double size,
                           double low, double high)
{
    std::vector<Block> blocks;
    for (const std::size_t label : left) {
        blocks.push_back({1, wanted[label]});
        while (blocks.size() > 1) {
            const Block& last = blocks.back();
            Block& before = blocks[blocks.size() - 2];
            const double end = before.begin(size, low, high) + size * static_cast<double>(before.count);
            if (last.begin(size, low, high) >= end) {
                break;
            }
            const double shift = size * static_cast<double>(before.count) * static_cast<double>(last.count);
            before = {before.count + last.count, before.sum + last.sum - shift};
            blocks.pop_back();
        }
    }
    std::vector<double> middles;
    for (const Block& block : blocks) {
        for (std::size_t i = 0; i < block.count; ++i) {
            middles.push_back(block.begin(size, low, high) + size * (static_cast<double>(i) + 1.0 / 2));
        }
    }
    return middles;
}

/// The label whose neighbours are nearest to each other.
std::size_t mostCrowded(const std::vector<double>& wanted, const std::vector<std::size_t>& left)
{
    std::size_t best = 0;
    double smallest = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < left.size(); ++i) {
        const double before = wanted[left[i == 0 ? 0 : i - 1]];
        const double behind = wanted[left[std::min(i + 1, left.size() - 1)]];
        const bool atEnd = i == 0 || i + 1 == left.size();
        const double room = (behind - before) * (atEnd ? 2 : 1);
        if (room < smallest) {
            smallest = room;
            best = i;
        }
    }
    return best;
}

}  // namespace

std::vector<std::optional<double>> placeLabels(const std::vector<double>& wanted, double size, double low, double high)
{
    const double room = std::max(0.0, std::floor((high - low) / size));
    // Of very many, first every so manieth: looking for the most crowded one again and again would take too long.
    constexpr std::size_t Many = 1000;
    const double step = std::max(1.0, static_cast<double>(wanted.size()) / static_cast<double>(Many));
    std::vector<std::size_t> left(std::min(wanted.size(), Many));
    for (std::size_t i = 0; i < left.size(); ++i) {
        left[i] = static_cast<std::size_t>(static_cast<double>(i) * step);
    }
    std::vector<double> middles;
    const auto findsPlaces = [&] {
        constexpr double Farthest = 4;  // labels; farther away nobody sees what a label belongs to
        if (static_cast<double>(left.size()) > room) {
            return false;
        }
        middles = spread(wanted, left, size, low, high);
        return std::equal(left.begin(), left.end(), middles.begin(), [&](std::size_t label, double middle) {
            return std::abs(wanted[label] - middle) <= Farthest * size;
        });
    };
    while (!findsPlaces()) {
        left.erase(left.begin() + static_cast<std::ptrdiff_t>(mostCrowded(wanted, left)));
    }
    std::vector<std::optional<double>> places(wanted.size());
    for (std::size_t i = 0; i < left.size(); ++i) {
        places[left[i]] = middles[i];
    }
    return places;
}

}  // namespace RecTool
