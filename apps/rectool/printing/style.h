// Colours on a terminal, and nothing anywhere else.
#pragma once

#include <string>

namespace RecTool {

/// By the codes of terminals: bold, cyan, green, red.
enum class Style : unsigned char { Heading = 1, Name = 36, Good = 32, Bad = 31 };

/// Whether styled() does anything from now on; at first it does not.
void useStyles(bool on);
/// The text between the terminal's codes for a style, or as it is.
[[nodiscard]] std::string styled(const std::string& text, Style style);

}  // namespace RecTool
