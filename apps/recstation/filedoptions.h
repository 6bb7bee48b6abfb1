// Options that stand in a station's file: put into the tree of options, and written as such a file.
#pragma once

#include <string>
#include <vector>

#include "commandtree.h"
#include "stationfile.h"

namespace RecStation {

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

}  // namespace RecStation
