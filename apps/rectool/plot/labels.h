// Labels beside an axis that must not cover each other.
#pragma once

#include <optional>
#include <vector>

namespace RecTool {

/// Finds places for labels along a line, each as near to what it names as the others allow.
/// @param wanted where the middles of the labels should be, ascending
/// @param size of one label along the line
/// @param low,high the ends of the line, which no label passes
/// @return the middles; none for labels for which there is no room near by: those are taken out where it is most
/// crowded
[[nodiscard]] std::vector<std::optional<double>> placeLabels(const std::vector<double>& wanted, double size, double low,
                                                             double high);

}  // namespace RecTool
