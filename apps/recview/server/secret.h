// Random texts that only those know who were told, and their comparison.
#pragma once

#include <string>
#include <string_view>

namespace RecView {

/// 192 bits of the system's randomness, as letters, digits, "-" and "_".
[[nodiscard]] std::string newSecret();
/// Takes as long wherever the texts differ.
[[nodiscard]] bool isSameSecret(std::string_view a, std::string_view b);

}  // namespace RecView
