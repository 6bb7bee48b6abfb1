// Colours on a terminal, and nothing anywhere else.
#pragma once

#include <string>

namespace RecTool {

enum class Style : unsigned char { Heading, Name, Good, Bad };

/// Whether styled() does anything from now on; at first it does not.
void useStyles(bool on);
/// The text between the terminal's codes for a style, or as it is.
[[nodiscard]] std::string styled(const std::string& text, Style style);

}  // namespace RecTool
