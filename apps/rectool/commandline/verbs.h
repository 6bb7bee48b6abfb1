// What every verb takes on the command line, family by family.
#pragma once

#include <functional>

#include <CLI/CLI.hpp>

#include "verbs/commands.h"

namespace RecTool::CommandLine {

/// What the arguments ask for.
using Action = std::function<ExitCode()>;

// Each adds its verbs; the one that is given sets the action.
void addLookingVerbs(CLI::App& app, Action& action);  ///< info, types, cat, state, diff, verify
void addEditingVerbs(CLI::App& app, Action& action);  ///< bookmark, range
void addMapVerb(CLI::App& app, Action& action);
void addPlotVerbs(CLI::App& app, Action& action);
void addMakingVerbs(CLI::App& app, Action& action);   ///< cut, merge, repair, recover, selfcheck
void addArchiveVerbs(CLI::App& app, Action& action);  ///< archive status, groups, show, fetch, verify, retry

}  // namespace RecTool::CommandLine
