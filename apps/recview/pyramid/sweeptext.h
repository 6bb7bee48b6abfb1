// The texts that sweeps are mostly recorded as, taken apart faster than into values.
#pragma once

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace RecView {

/// Reads the levels of a text that carries all cells and no channel range, each in three characters.
/// @param channels of the range in force; as many levels are given
/// @param allMeasured whether no level is NaN
/// @return false for every other text: the library's values understand more
[[nodiscard]] bool readWholeSweep(std::string_view text, std::size_t channels, std::vector<float>& levels,
                                  bool& allMeasured);

/// Cells from a channel on: first and one past the last.
using CellRun = std::pair<std::size_t, std::size_t>;

/// Which cells a text writes that carries some cells, one run behind the other, and no channel range. The cells
/// themselves are not looked at. A text without cells gives no runs.
/// @return false for every other text
[[nodiscard]] bool readWrittenCells(std::string_view text, std::size_t channels, std::vector<CellRun>& runs);

}  // namespace RecView
