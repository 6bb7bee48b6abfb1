// The commands of cases that are none of the programs: they make what a case begins with, and show what came of it.
#pragma once

#include "casefile.h"
#include "programs.h"

namespace Cases {

using Words = std::vector<std::string>;

/// A command of the cases by its name, nullptr where there is none; CONTRIBUTING.md tells what each does. It works in
/// the current folder and throws std::exception when it cannot do what is asked.
using Helper = std::function<std::string(const Words& words, const Lines& input)>;
[[nodiscard]] const Helper* helperOf(const std::string& name);

/// What stands after a pipe sign: "json PATTERN...", "records", "grep TEXT...", "without TEXT...", "lines",
/// "save FILE".
[[nodiscard]] std::string filtered(const Words& words, const std::string& text);

}  // namespace Cases
