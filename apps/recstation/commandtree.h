// The options of the program and of its sources as the parser knows them, with what was said of each.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "options.h"

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

/// The key of an option in a station's file: its long name, or that of its place, such as "file"; empty for those that
/// no file can hold.
[[nodiscard]] std::string settingKey(const CLI::Option& option);

/// The option that a key means; null when there is none.
[[nodiscard]] CLI::Option* optionOfKey(const CLI::App& app, const std::string& key);

}  // namespace RecStation
