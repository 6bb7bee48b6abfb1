// Unknown options and words, sources named twice, and what may have been meant.
#include "commandtree.h"

#include <algorithm>

#include <terminaltext/wrongarguments.h>

namespace RecStation {

namespace {

std::vector<std::string> sourceNames(const CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::App* source : app.get_subcommands({})) {
        names.push_back(source->get_name());
    }
    return names;
}

std::string unknownOption(const CLI::App& app, const std::string& argument)
{
    const std::string name = argument.substr(0, argument.find('='));
    std::vector<std::string> known = TerminalText::optionNames(app);
    for (const CLI::App* source : app.get_subcommands({})) {
        const std::vector<std::string> own = TerminalText::optionNames(*source);
        if (name != "--help" && std::find(own.begin(), own.end(), name) != own.end()) {
            return name + " is an option of " + source->get_name() + ", and stands behind that word";
        }
        if (source->count() > 0) {
            known.insert(known.end(), own.begin(), own.end());
        }
    }
    return TerminalText::noSuchOption(argument, known);
}

std::string unknownWord(const CLI::App& app, const std::string& word, const std::vector<std::string>& before)
{
    const std::vector<std::string> names = sourceNames(app);
    const auto source = std::find_first_of(before.rbegin(), before.rend(), names.begin(), names.end());
    const std::string near = TerminalText::didYouMean(word, names);
    if (source != before.rend()) {
        return "\"" + TerminalText::oneLine(word) + "\" is one word too many behind " + *source + near;
    }
    return "there is no source \"" + TerminalText::oneLine(word) + "\"" +
           (near.empty() ? ": the sources are " + listed(names) + ", and the name of a file stands behind one" : near);
}

// A source that takes several files takes its own name for one of them.
bool isAmongItsFiles(const CLI::App& source)
{
    const CLI::Option* files = source.get_option_no_throw("FILE");
    if (files == nullptr) {
        return false;
    }
    const auto& named = files->results();
    return std::find(named.begin(), named.end(), source.get_name()) != named.end();
}

std::string whatIsNeeded(const CLI::App& app)
{
    for (const CLI::App* source : app.get_subcommands()) {
        for (const CLI::Option* option : source->get_options()) {
            if (option->get_required() && option->count() == 0) {
                const bool file = option->get_name(true) == "FILE";
                return source->get_name() + " needs " +
                       (file ? "the name of a file; - is the standard input" : option->get_name());
            }
        }
    }
    return {};
}

}  // namespace

std::string listed(const std::vector<std::string>& words)
{
    std::string list;
    for (const std::string& word : words) {
        list += (list.empty() ? "" : ", ") + word;
    }
    return list;
}

std::string namedTwice(const CLI::App& app)
{
    for (const CLI::App* source : app.get_subcommands({})) {
        if (source->count() > 1 || isAmongItsFiles(*source)) {
            return "a run has one " + source->get_name() +
                   ": record the other in a run of its own, and join the recordings with rectool merge";
        }
    }
    return {};
}

std::string whatIsWrong(const CLI::App& app, const CLI::ParseError& error, const std::vector<std::string>& arguments)
{
    if (std::string twice = namedTwice(app); !twice.empty()) {
        return twice;
    }
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
        const std::vector<std::string> rest = app.remaining(true);  // in no order that one could rely on
        const auto first = std::find_first_of(arguments.begin(), arguments.end(), rest.begin(), rest.end());
        if (first != arguments.end()) {
            return TerminalText::isOption(*first) ? unknownOption(app, *first)
                                                  : unknownWord(app, *first, {arguments.begin(), first});
        }
    }
    const std::string needed = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr ? whatIsNeeded(app) : "";
    return needed.empty() ? TerminalText::oneLine(error.what()) : needed;
}

}  // namespace RecStation
