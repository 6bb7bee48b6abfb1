// What is kept of plain values and bearings beside a pyramid: columns of its store, how they are laid out, and who
// fills them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "pyramid/overview.h"
#include "recordedfile.h"
#include "rectool/replay/linesofbearing.h"

namespace RecView {

/// To be counted up whenever a column gets another meaning or layout.
constexpr std::uint32_t KeptColumnsVersion = 1;

enum class Kept : std::uint32_t {
    Kinds = FirstForeignKind,  ///< KeptKind, of all types in the order of their first records
    Numbers,                   ///< KeptNumber, of a type
    NumbersEnd,                ///< double: when Numbers ends, as they became too many; empty while it does not
    NumberBlocks,              ///< KeptBlock, of a type and a level
    Changes,                   ///< KeptChange, of a type
    Texts,                     ///< of all changes: bytes
    Bearings,                  ///< KeptBearing
    Positions,                 ///< KeptPosition
};

[[nodiscard]] inline ColumnKey keyOf(Kept kept, std::int32_t code = 0, std::uint32_t level = 0)
{
    return {static_cast<std::uint32_t>(kept), code, 0, level};
}

// Times are milliseconds since 1970 UTC. What was left out for want of room is counted in the entry that follows it.

struct KeptKind {
    std::int32_t code = 0;
    std::uint32_t kind = 0;
};

struct KeptNumber {
    double ms = 0;
    double value = 0;  ///< NaN: none
};

/// Numbers that follow each other: as many as blockSize says for its level, fewer in the last one.
struct KeptBlock {
    double ms = 0;  ///< of the first one
    double min = 0;
    double max = 0;
    double last = 0;
    std::int64_t position = 0;  ///< of the first one's record
};
constexpr std::uint32_t NumbersPerBlock = 32;
constexpr std::uint32_t BlocksPerBlock = 8;  ///< of the next level
constexpr std::uint32_t BlockLevels = 7;     ///< the last one has blocks of 8 million

struct KeptChange {
    double ms = 0;
    std::uint32_t text = 0;  ///< where it begins in Texts: its length in four bytes, then UTF-8
    std::uint32_t leftOut = 0;
};

struct KeptBearing {
    double ms = 0;  ///< when it was measured
    std::uint64_t timeMs = 0;
    std::int64_t position = 0;  ///< of its record
    std::int32_t code = 0;
    std::uint32_t leftOut = 0;
    std::uint64_t channel = 0;
    std::uint64_t measuredUs = 0;
    double hz = 0;
    double azimuthDeg = 0;  ///< relative to the antenna
    double elevationDeg = 0;
    double levelDb = 0;
    double quality = 0;
    double headingDeg = 0;   ///< NaN: not known
    double latitudeDeg = 0;  ///< NaN: not known
    double longitudeDeg = 0;
};

struct KeptPosition {
    double ms = 0;
    double latitudeDeg = 0;
    double longitudeDeg = 0;
};

/// A bearing as it is kept. @param ms when it was measured @param record that tells it
[[nodiscard]] KeptBearing keptBearing(const RecTool::BearingTaker::Taken& taken, double ms, std::int32_t code,
                                      std::int64_t position);

/// For the maker of overviews.
[[nodiscard]] std::unique_ptr<OverviewPart> makeValuePart(Store& store, const Summary& summary);

/// NaN where the value is no number.
[[nodiscard]] double numberOf(const values::ValueBase* value);

// Any thread. A stretch includes its ends; what is in force at its beginning belongs to it, under its own time. Times
// ascend.

struct NumberCurve {
    std::vector<double> ms;  ///< where each point begins
    std::vector<double> min;
    std::vector<double> max;
    std::vector<double> last;
    bool exact = true;  ///< every point is one record
};
/// @param points about as many are given at most, or every record where there are few
void appendNumbers(const Overview& overview, std::int32_t code, const Stretch& time, std::size_t points,
                   NumberCurve& curve);

struct TextChange {
    double ms = 0;
    std::string text;
};
/// @return how many there are besides, which are not kept
std::uint64_t appendChanges(const Overview& overview, std::int32_t code, const Stretch& time, std::size_t most,
                            std::vector<TextChange>& changes);

/// @param most of more than that so many, evenly
/// @return how many there are
double appendBearings(const Overview& overview, const std::vector<Recording2::Inspection::TypeEntry>& types,
                      const Stretch& time, std::size_t most, std::vector<KeptBearing>& bearings);
/// Where the station was.
void appendPositions(const Overview& overview, const Stretch& time, std::size_t most,
                     std::vector<KeptPosition>& positions);

/// What has records so far.
[[nodiscard]] std::vector<KeptKind> kindsOf(const Overview& overview);

/// Takes out items of which there are too many, evenly. @return how many
template <typename Item>
std::size_t thin(std::vector<Item>& items, std::size_t most)
{
    const std::size_t all = items.size();
    if (all <= most) {
        return 0;
    }
    for (std::size_t i = 0; i < most; ++i) {
        items[i] = std::move(items[i * all / most]);
    }
    items.erase(items.begin() + static_cast<std::ptrdiff_t>(most), items.end());
    return all - most;
}

}  // namespace RecView
