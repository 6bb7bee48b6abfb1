// How the channels and the cells of maps stand in recording texts (doc/recording-text.md); channels also in those for
// people.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <QString>

#include <values/maps.h>

#include "textformat.h"

namespace values {

/// As ChannelRange::List or Even would make it.
[[nodiscard]] ChannelRange normalized(const ChannelRange& range);
/// Finite frequencies, and no more channels than a map can have.
[[nodiscard]] bool isAllowed(const ChannelRange& range);
void appendRange(std::string& text, const ChannelRange& range);
/// @param command of an even range or a list @return false when it is malformed or not allowed
bool readRange(const Text::Command& command, ChannelRange& range);
/// How many channels, from where to where.
[[nodiscard]] QString rangeText(const ChannelRange& range);

/// Levels: three characters a cell, anything that does not fit in parentheses.
void appendCells(std::string& text, std::span<const float> levels);
/// Bearings: four fields, empty where not measured, trailing empty ones left out.
void appendCells(std::string& text, std::span<const Bearing> bearings);

/// Appends the cells of a payload, at most the given number of them.
/// @return false when it is malformed or has more
bool readCells(std::string_view payload, std::size_t most, std::vector<float>& levels);
bool readCells(std::string_view payload, std::size_t most, std::vector<Bearing>& bearings);

}  // namespace values
