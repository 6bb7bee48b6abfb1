// The options of the program and of its sources as the parser knows them: what was said of each on the command line and
// in a station's file, and what is wrong with it.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "options.h"
#include "stationfile.h"

namespace RecStation {

/// Texts of options as they were given, before units and words were made plain.
using GivenTexts = std::map<const CLI::Option*, std::vector<std::string>>;

/// It must not move: the parser writes into it.
struct CommandTree {
    explicit CommandTree(Task task);
    CommandTree(const CommandTree&) = delete;
    CommandTree& operator=(const CommandTree&) = delete;
    ~CommandTree() = default;

    Options options;
    CLI::App app;
    std::vector<std::shared_ptr<OfferedSource>> offered;
    GivenTexts texts;
};

// ---- what a station's file says of it

/// Fills the options of [station] that the command line has not given.
/// @param given the tree that parsed the command line
/// @throws StationFileError
void applyStation(const StationFile& file, const CLI::App& given, CommandTree& tree);

/// Fills the options of every source of the file.
/// @return the names of the sources, in the order of the file
/// @throws StationFileError
[[nodiscard]] std::vector<std::string> applySources(const StationFile& file, CommandTree& tree);

/// The line of the file that a sentence of the parser is most likely about.
[[nodiscard]] unsigned lineMeant(const StationFile& file, const std::string& sentence);

/// The file that starts the same run.
/// @param tree after parsing
/// @param recorders the tables of the recorders, TOML
[[nodiscard]] std::string stationFileText(const CommandTree& tree, const std::string& recorders);

// ---- what is wrong with a command line

/// "a, b, c".
[[nodiscard]] std::string listed(const std::vector<std::string>& words);

/// Says that a source is named twice, which the parser takes for more of the first; empty when none is.
[[nodiscard]] std::string namedTwice(const CLI::App& app);

/// @param error what the parser threw
/// @param arguments what it was given
[[nodiscard]] std::string whatIsWrong(const CLI::App& app, const CLI::ParseError& error,
                                      const std::vector<std::string>& arguments);

}  // namespace RecStation
