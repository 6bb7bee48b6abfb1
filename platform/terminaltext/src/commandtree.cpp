// The commands of a program as JSON.
#include <terminaltext/commandtree.h>

#include <iostream>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

namespace TerminalText {

namespace {

using Json = nlohmann::ordered_json;

Json namesOf(const std::set<CLI::Option*>& options)
{
    Json names = Json::array();
    for (const CLI::Option* option : options) {
        names.push_back(option->get_name());
    }
    return names;
}

Json optionTree(const CLI::Option& option)
{
    Json names = Json::array();
    for (const std::string& name : option.get_snames()) {
        names.push_back('-' + name);
    }
    for (const std::string& name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    const bool takesValue = option.get_positional() || option.get_type_size_max() > 0;
    return {{"names", names},
            {"positional", option.get_positional() ? option.get_name(true) : ""},
            {"type", takesValue ? option.get_type_name() : ""},
            {"takesValue", takesValue && option.get_expected_min() > 0},
            {"many", option.get_expected_max() >= CLI::detail::expected_max_vector_size},
            {"repeated", option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll},
            {"required", option.get_required()},
            {"default", option.get_default_str()},
            {"environment", option.get_envname()},
            {"needs", namesOf(option.get_needs())},
            {"excludes", namesOf(option.get_excludes())},
            {"help", option.get_description()}};
}

Json commandTree(const CLI::App& app)
{
    Json options = Json::array();
    for (const CLI::Option* option : app.get_options()) {
        if (!option->get_group().empty()) {
            options.push_back(optionTree(*option));
        }
    }
    Json commands = Json::array();
    for (const CLI::App* command :
         app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); })) {
        commands.push_back(commandTree(*command));
    }
    return {{"name", app.get_name()},
            {"help", app.get_description()},
            {"footer", app.get_footer()},
            {"needsCommand", app.get_require_subcommand_min() > 0},
            {"inheritsOptions", app.get_fallthrough()},
            {"options", options},
            {"commands", commands}};
}

}  // namespace

bool printedCommandTree(const CLI::App& app, const std::vector<std::string>& arguments)
{
    if (arguments != std::vector<std::string>{"--print-command-tree"}) {
        return false;
    }
    std::cout << commandTree(app).dump(1) << '\n';
    return true;
}

}  // namespace TerminalText
