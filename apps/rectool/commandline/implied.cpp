#include "implied.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <numeric>
#include <string_view>
#include <system_error>

#include "../archivedfiles.h"
#include "../system/filenames.h"
#include "../text.h"

namespace RecTool::CommandLine {

namespace {

const CLI::App* findVerb(const CLI::App& app, const std::string& name)
{
    const std::vector<const CLI::App*> verbs = app.get_subcommands([](const CLI::App*) { return true; });
    const auto found =
        std::find_if(verbs.begin(), verbs.end(), [&](const CLI::App* verb) { return verb->get_name() == name; });
    return found == verbs.end() ? nullptr : *found;
}

/// How many letters must be added, left out, replaced or swapped with their neighbour to make one word the other.
std::size_t distance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> beforeLast;
    std::vector<std::size_t> last(b.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::vector<std::size_t> line{i};
        for (std::size_t j = 1; j <= b.size(); ++j) {
            std::size_t least =
                std::min({last[j] + 1, line[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0U : 1U)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                least = std::min(least, beforeLast[j - 2] + 1);
            }
            line.push_back(least);
        }
        beforeLast = std::move(last);
        last = std::move(line);
    }
    return last.back();
}

/// Empty where none is near.
std::string nearestVerb(const CLI::App& app, const std::string& word)
{
    std::string nearest;
    std::size_t least = std::max<std::size_t>(2, word.size() / 3) + 1;
    for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
        const std::size_t apart = distance(word, verb->get_name());
        if (apart < least) {
            least = apart;
            nearest = verb->get_name();
        }
    }
    return nearest;
}

bool isFile(const std::string& name)
{
    std::error_code error;
    return isArchiveAddress(name) || name.ends_with(".rec") || name.ends_with(".tmp") ||
           std::filesystem::exists(native(name), error);
}

bool isOption(const std::string& argument)
{
    return argument.size() > 1 && argument.front() == '-';
}

}  // namespace

void addImpliedVerb(const CLI::App& app, std::vector<std::string>& arguments)
{
    if (arguments.empty() || isOption(arguments.front()) || findVerb(app, arguments.front()) != nullptr ||
        !isFile(arguments.front())) {
        return;
    }
    const auto files = std::count_if(arguments.begin(), arguments.end(), isFile);
    const bool isJson = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
    if (files > 1 && !isJson) {
        arguments.insert(arguments.begin(), "--table");
    }
    arguments.insert(arguments.begin(), "info");
}

std::string unknownVerb(const CLI::App& app, const std::vector<std::string>& arguments)
{
    if (arguments.empty() || isOption(arguments.front())) {
        return "";
    }
    const std::string& word = arguments.front();
    if (const CLI::App* verb = findVerb(app, word)) {
        const bool hasVerbs = verb->get_require_subcommand_min() > 0;
        return hasVerbs ? unknownVerb(*verb, {arguments.begin() + 1, arguments.end()}) : "";
    }
    const std::string nearest = nearestVerb(app, word);
    const std::string ask = "rectool" + (app.get_parent() == nullptr ? "" : ' ' + app.get_name()) + " --help";
    return "There is no verb \"" + oneLine(word) + "\"" +
           (nearest.empty() ? ", nor such a file; " + ask + " lists the verbs."
                            : ". Did you mean \"" + nearest + "\"?");
}

}  // namespace RecTool::CommandLine
