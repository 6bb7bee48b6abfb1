// How the channels of a map stand in recording texts (doc/recording-text.md), and in those for people.
#pragma once

#include <string>

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

}  // namespace values
