// How the cells of maps stand in recording texts (doc/recording-text.md).
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <values/maps.h>

namespace values {

/// Levels: three characters a cell, anything that does not fit in parentheses.
void appendCells(std::string& text, std::span<const float> levels);
/// Bearings: four fields, empty where not measured, trailing empty ones left out.
void appendCells(std::string& text, std::span<const Bearing> bearings);

/// Appends the cells of a payload, at most the given number of them.
/// @return false when it is malformed or has more
bool readCells(std::string_view payload, std::size_t most, std::vector<float>& levels);
bool readCells(std::string_view payload, std::size_t most, std::vector<Bearing>& bearings);

}  // namespace values
