// Verbs and their options, handed to the parser.
#include "verb.h"

#include <cstdint>
#include <utility>

#include <CLI/CLI.hpp>

#include <terminaltext/optionvalues.h>

namespace RecTool {

Option& Option::required()
{
    m_option->required();
    return *this;
}

Option& Option::as(const char* typeName)
{
    m_option->type_name(typeName);
    return *this;
}

Option& Option::showDefault()
{
    m_option->capture_default_str();
    return *this;
}

Option& Option::hidden()
{
    m_option->group("");
    return *this;
}

Option& Option::sets(bool& whenGiven)
{
    m_option->each([&whenGiven](const std::string& /*value*/) { whenGiven = true; });
    return *this;
}

Option& Option::excludes(const Option& other)
{
    m_option->excludes(other.m_option);
    return *this;
}

Option& Option::needs(const Option& other)
{
    m_option->needs(other.m_option);
    return *this;
}

Option& Option::notEmpty()
{
    m_option->check(
        [](const std::string& text) { return text.empty() ? std::string("must not be empty") : std::string(); }, "");
    return *this;
}

Option& Option::oneOf(const std::vector<std::string>& words)
{
    m_option->check(TerminalText::oneOf(words));
    return *this;
}

Option& Option::wholeNumber(double lowest, double highest, const std::string& unit)
{
    m_option->transform(TerminalText::wholeNumber(lowest, highest, unit));
    return *this;
}

Option& Option::inSeconds(double lowest, double highest)
{
    m_option->transform(TerminalText::inSeconds(lowest, highest));
    return *this;
}

Option& Option::inUnit(std::initializer_list<std::string_view> units, double lowest, double highest)
{
    m_option->transform(TerminalText::inUnit(units, lowest, highest));
    return *this;
}

Option& Option::withUnit(std::optional<double> (*parse)(const std::string& text), const char* expected, double lowest,
                         double highest, const char* range)
{
    m_option->transform(TerminalText::withUnit(parse, expected, lowest, highest, range));
    return *this;
}

Syntax::Syntax(const Syntax& parent, const char* name, const char* description)
    : Syntax(*parent.m_app.add_subcommand(name, description), parent.m_action)
{
}

void Syntax::needsVerb()
{
    m_app.require_subcommand(1);
}

Option Syntax::text(const char* name, std::string& value, const std::string& help)
{
    return Option(*m_app.add_option(name, value, help));
}

Option Syntax::texts(const char* name, std::vector<std::string>& values, const std::string& help)
{
    return Option(*m_app.add_option(name, values, help));
}

Option Syntax::eachAlone(const char* name, std::vector<std::string>& values, const std::string& help)
{
    return Option(*m_app.add_option(name, values, help)
                       ->expected(1)
                       ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
                       ->allow_extra_args(false));
}

template <typename Number>
Option Syntax::number(const char* name, Number& value, const std::string& help)
{
    return Option(*m_app.add_option(name, value, help));
}

template Option Syntax::number(const char* name, int& value, const std::string& help);
template Option Syntax::number(const char* name, double& value, const std::string& help);
template Option Syntax::number(const char* name, std::int64_t& value, const std::string& help);
template Option Syntax::number(const char* name, std::uint64_t& value, const std::string& help);

Option Syntax::flag(const char* name, bool& value, const std::string& help)
{
    return Option(*m_app.add_flag(name, value, help));
}

Option Syntax::time(const char* name, std::string& time, const std::string& help)
{
    return text(name, time, help).as("TIME").notEmpty();
}

Option Syntax::frequency(const char* name, double& hz, const std::string& help)
{
    constexpr double Lowest = 1e-3;
    constexpr double Highest = 1e12;
    return number(name, hz, help)
        .as("FREQUENCY")
        .withUnit(parseHertz, "a frequency such as 433.92M, 100k or 98500000", Lowest, Highest, "1mHz to 1THz");
}

void Syntax::describe(const char* option, const char* help)
{
    m_app.get_option(option)->description(help);
}

void Syntax::examples(std::initializer_list<const char*> examples, const std::string& remark)
{
    std::string text = remark.empty() ? remark : remark + '\n';
    text += examples.size() == 1 ? "Example:" : "Examples:";
    for (const char* example : examples) {
        text.append("\n  rectool ").append(example);
    }
    m_app.footer(text);
}

void Syntax::whenGiven(std::function<Action()> action)
{
    m_app.callback([action = std::move(action), &given = m_action] { given = action(); });
}

}  // namespace RecTool
