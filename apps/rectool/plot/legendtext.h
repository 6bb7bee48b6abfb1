// Texts of one legend, which are alike.
#pragma once

#include <string>
#include <vector>

namespace RecTool {

/// Frequencies in Hz, all in the unit of the lowest and with as many decimals as one of them needs: "431.70 MHz".
[[nodiscard]] std::vector<std::string> frequenciesAlike(const std::vector<double>& hz);

}  // namespace RecTool
