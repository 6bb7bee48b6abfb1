// From keys of a station's file to options and back.
#include "commandtree.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <iterator>
#include <string_view>

#include <terminaltext/nearestword.h>

namespace RecStation {

namespace {

// What a file cannot say: where it lies itself, and what asks for a text in place of a run.
constexpr std::array<std::string_view, 7> NotInFiles = {"help",    "version", "config", "print-config",
                                                        "station", "wait",    "source"};

constexpr std::string_view Choice = "type";  // the key of a source that says which it is

bool isSwitch(const CLI::Option& option)
{
    return option.get_items_expected_max() == 0;
}

// The key of an option in a station's file: its long name, or that of its place, such as "file"; empty for those that
// no file can hold.
std::string settingKey(const CLI::Option& option)
{
    const auto& names = option.get_lnames();
    std::string key = names.empty() ? option.get_name(true) : names.front();
    if (names.empty()) {
        std::transform(key.begin(), key.end(), key.begin(), [](char c) {
            const auto byte = static_cast<unsigned char>(c);
            return std::isalnum(byte) != 0 ? static_cast<char>(std::tolower(byte)) : '-';
        });
    }
    return std::find(NotInFiles.begin(), NotInFiles.end(), key) == NotInFiles.end() ? key : std::string();
}

// The option that a key means; null when there is none.
CLI::Option* optionOfKey(const CLI::App& app, const std::string& key)
{
    const CLI::App& constApp = app;
    for (const CLI::Option* option : constApp.get_options()) {
        const auto& names = option->get_lnames();
        const std::string own = settingKey(*option);
        if (!own.empty() && (own == key || std::find(names.begin(), names.end(), key) != names.end())) {
            return const_cast<CLI::App&>(app).get_option(option->get_name());  // NOLINT(*-const-cast): the same tree
        }
    }
    return nullptr;
}

std::vector<std::string> keysOf(const CLI::App& app)
{
    std::vector<std::string> keys;
    for (const CLI::Option* option : app.get_options()) {
        if (const std::string key = settingKey(*option); !key.empty()) {
            keys.push_back(key);
        }
    }
    return keys;
}

std::string meantKey(const std::string& key, const CLI::App& app)
{
    std::string plain = key;
    std::replace(plain.begin(), plain.end(), '_', '-');
    plain.erase(0, plain.find_first_not_of('-'));
    return TerminalText::didYouMean(plain, keysOf(app));
}

// The parser names options as a command line has them.
std::string withoutName(const std::string& sentence, const CLI::Option& option)
{
    const std::string prefix = option.get_name() + ": ";
    return sentence.starts_with(prefix) ? sentence.substr(prefix.size()) : sentence;
}

void setSwitch(const StationFile& file, const StationSetting& setting, CLI::Option& option)
{
    if (!isSwitch(option)) {
        throw StationFileError(file.at(setting.line) + setting.key + ": expected a text or a number, found " +
                               (*setting.on ? "true" : "false"));
    }
    if (*setting.on) {
        option.add_result(option.get_flag_value(option.get_lnames().front(), ""));
        option.run_callback();
    }
}

void setTexts(const StationFile& file, const StationSetting& setting, CLI::Option& option)
{
    const bool any = option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
    const int most = isSwitch(option) ? 1 : option.get_items_expected_max();
    if (!any && static_cast<int>(setting.texts.size()) > most) {
        throw StationFileError(file.at(setting.line) + setting.key + ": expected one text, found a list of " +
                               std::to_string(setting.texts.size()));
    }
    for (const std::string& text : setting.texts) {
        option.add_result(isSwitch(option) ? option.get_flag_value(option.get_lnames().front(), text) : text);
    }
    if (!setting.texts.empty()) {
        option.run_callback();
    }
}

void apply(const StationFile& file, const StationSetting& setting, const CLI::App& app, const std::string& table)
{
    CLI::Option* option = optionOfKey(app, setting.key);
    if (option == nullptr) {
        throw StationFileError(file.at(setting.line) + table + " has no key \"" + setting.key + "\"" +
                               meantKey(setting.key, app));
    }
    if (option->count() > 0) {
        throw StationFileError(file.at(setting.line) + "\"" + setting.key + "\" is there twice, by another name");
    }
    try {
        setting.on ? setSwitch(file, setting, *option) : setTexts(file, setting, *option);
    } catch (const CLI::Error& error) {
        throw StationFileError(file.at(setting.line) + setting.key + ": " + withoutName(error.what(), *option));
    }
}

CLI::App& sourceOf(const StationFile& file, const StationTable& table, CommandTree& tree)
{
    std::vector<std::string> names;
    for (const auto& source : tree.offered) {
        names.emplace_back(source->traits().name);
        if (names.back() == table.type) {
            return *tree.app.get_subcommand(table.type);
        }
    }
    const std::string near = TerminalText::didYouMean(table.type, names);
    throw StationFileError(file.at(table.line) + "there is no source \"" + table.type + "\"" +
                           (near.empty() ? ": the sources are " + listed(names) : near));
}

std::string written(const CLI::Option& option, const std::vector<std::string>& texts)
{
    if (isSwitch(option)) {
        return texts.back() == "true" ? texts.back() : tomlString(texts.back());
    }
    const bool several = option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll || texts.size() > 1;
    std::vector<std::string> quoted;
    std::transform(texts.begin(), texts.end(), std::back_inserter(quoted), tomlString);
    return several ? '[' + listed(quoted) + ']' : listed(quoted);
}

std::string settingsText(const CLI::App& app, const GivenTexts& texts, bool withJournal)
{
    std::string lines;
    for (const CLI::Option* option : app.get_options()) {
        const auto given = texts.find(option);
        const std::string key = settingKey(*option);
        if (given != texts.end() && !key.empty() && (withJournal || key != "journal")) {
            lines += tomlKey(key) + " = " + written(*option, given->second) + '\n';
        }
    }
    return lines;
}

}  // namespace

void applyStation(const StationFile& file, const CLI::App& given, CommandTree& tree)
{
    for (const StationSetting& setting : file.station.settings) {
        const CLI::Option* option = optionOfKey(given, setting.key);
        if (option == nullptr || option->count() == 0) {
            apply(file, setting, tree.app, "[station]");
        }
    }
}

std::vector<std::string> applySources(const StationFile& file, CommandTree& tree)
{
    std::vector<std::string> names;
    for (const StationTable& table : file.sources) {
        const CLI::App& source = sourceOf(file, table, tree);
        if (std::find(names.begin(), names.end(), table.type) != names.end()) {
            throw StationFileError(file.at(table.line) + "a run has one " + table.type +
                                   ": record the other in a run of its own");
        }
        names.push_back(table.type);
        for (const StationSetting& setting : table.settings) {
            apply(file, setting, source, "the source " + table.type);
        }
    }
    return names;
}

unsigned lineMeant(const StationFile& file, const std::string& sentence)
{
    for (const StationSetting& setting : file.station.settings) {
        if (sentence.find("--" + setting.key) != std::string::npos) {
            return setting.line;
        }
    }
    for (const StationTable& source : file.sources) {
        if (sentence.find(source.type) != std::string::npos) {
            return source.line;
        }
    }
    return file.sources.empty() ? std::max(file.station.line, 1U) : file.sources.front().line;
}

std::string stationFileText(const CommandTree& tree, const std::string& recorders)
{
    std::string text = "[station]\n" + settingsText(tree.app, tree.texts, false) + '\n';
    for (const auto& source : tree.options.sources) {
        const std::string name = source->traits().name;
        text += "[[source]]\n" + std::string(Choice) + " = " + tomlString(name) + '\n' +
                settingsText(*tree.app.get_subcommand(name), tree.texts, true) + '\n';
    }
    return text + recorders;
}

}  // namespace RecStation
