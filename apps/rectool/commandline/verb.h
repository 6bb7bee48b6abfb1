// A verb as it stands in its file: name, description, options, work. The parser after it is a heavy header, which only
// verb.cpp takes.
#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/archivedfiles.h"
#include "printing/exitcode.h"
#include "printing/text.h"
#include "replay/recordingtime.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace RecTool {

/// What the arguments ask for.
struct Action {
    std::function<ExitCode()> run;
    bool isPaged = false;  ///< the output may be long, and nobody is asked anything meanwhile
};

/// An option of a verb. Every call says one thing more of it; what a value must be is checked in the order of the
/// calls.
class Option {
public:
    explicit Option(CLI::Option& option) : m_option(&option) {}

    Option& required();
    Option& as(const char* typeName);  ///< how the help calls the value
    Option& showDefault();
    Option& hidden();               ///< from the help
    Option& sets(bool& whenGiven);  ///< to true
    Option& excludes(const Option& other);
    Option& needs(const Option& other);

    /// Refuses what a script passes when it has forgotten to set a variable: without a time a verb would take
    /// everything.
    Option& notEmpty();
    Option& oneOf(const std::vector<std::string>& words);
    Option& wholeNumber(double lowest, double highest, const std::string& unit = {});
    Option& inSeconds(double lowest, double highest);
    Option& inUnit(std::initializer_list<std::string_view> units, double lowest, double highest);
    /// @param parse nothing for what is no such number
    /// @param expected, range how messages call such a number, and what is from lowest to highest
    Option& withUnit(std::optional<double> (*parse)(const std::string& text), const char* expected, double lowest,
                     double highest, const char* range);

private:
    CLI::Option* m_option;
};

/// What the program or one of its verbs takes. The values that options fill must outlive the parsing.
class Syntax {
public:
    Syntax(CLI::App& app, Action& action) : m_app(app), m_action(action) {}
    /// A verb of the program, or of a verb.
    Syntax(const Syntax& parent, const char* name, const char* description);

    /// One of its own verbs must follow.
    void needsVerb();
    Option text(const char* name, std::string& value, const std::string& help);
    Option texts(const char* name, std::vector<std::string>& values, const std::string& help);
    Option eachAlone(const char* name, std::vector<std::string>& values, const std::string& help);
    /// @tparam Number int, double, std::int64_t or std::uint64_t
    template <typename Number>
    Option number(const char* name, Number& value, const std::string& help);
    Option flag(const char* name, bool& value, const std::string& help);
    Option time(const char* name, std::string& time, const std::string& help);
    Option frequency(const char* name, double& hz, const std::string& help);  ///< from 1 mHz to 1 THz

    void describe(const char* option, const char* help);
    /// @param examples what follows the program's name
    /// @param remark a sentence before them, may be empty
    void examples(std::initializer_list<const char*> examples, const std::string& remark = {});

protected:
    void whenGiven(std::function<Action()> action);

private:
    CLI::App& m_app;
    Action& m_action;
};

/// A verb and the options that many verbs have; they live as long as the parser does.
template <typename Options>
class Verb : public Syntax {
public:
    /// The recordings or the directory that the options hold are taken first.
    Verb(const Syntax& parent, const char* name, const char* description, ExitCode (*run)(const Options&))
        : Syntax(parent, name, description)
    {
        if constexpr (requires { options().files; }) {
            texts("FILE", options().files, "Recordings, files or archive addresses").required();
        } else if constexpr (requires { options().directory; }) {
            text("DIR", options().directory, "Directory").required().notEmpty();
        } else if constexpr (requires { options().file; }) {
            text("FILE", options().file, "Recording, a file or an archive address").required();
        }
        text("--archive-config", m_given->archiveConfiguration,
             "Configuration of the archive (default: the file that ZELVO_CONFIG names)")
            .as("FILE")
            .notEmpty();
        whenGiven([given = m_given, run] {
            return Action{[given, run] {
                              useArchive(given->archiveConfiguration);
                              return runOnLocalFiles(given->options, run);
                          },
                          given->isPaged && !isEndless(given->options)};
        });
    }
    [[nodiscard]] Options& options() { return m_given->options; }

    void paged() { m_given->isPaged = true; }
    /// --from and --to; the forms of a time are told with the first one.
    void span(const std::string& from, const std::string& to, bool isRequired = false)
    {
        Option first = time("--from", options().from, from + ". TIME: " + TimeForms);
        Option last = time("--to", options().to, to);
        if (isRequired) {
            first.required();
            last.required();
        }
    }
    /// Each is given with a --type of its own: what follows one is the recording.
    void types(const char* help) { eachAlone("--type", options().types, help).as("TYPE"); }
    Option json(const char* help = "Print one JSON document") { return flag("--json", options().json, help); }
    void timeForms()
    {
        text("--time", options().time, "How times are shown: offset, utc or local")
            .oneOf({"offset", "utc", "local"})
            .showDefault();
    }
    Option unit(const char* help = "What levels are in, such as dBm; recordings do not tell")
    {
        return text("--unit", options().unit, help).showDefault();
    }
    /// --width and --height of a picture.
    void size(const char* width, const char* height)
    {
        constexpr double Smallest = 400;  // pixels; in less the texts have no room
        constexpr double Largest = 5000;
        number("--width", options().width, width).wholeNumber(Smallest, Largest, "px").showDefault();
        number("--height", options().height, height)
            .sets(options().heightIsAsked)
            .wholeNumber(Smallest, Largest, "px")
            .showDefault();
    }
    Option yes() { return flag("--yes", options().yes, "Change the file without asking"); }
    Option output(const char* typeName, const char* help)
    {
        return text("-o,--output", options().output, help).as(typeName).notEmpty();
    }
    /// What all verbs take that make a recording.
    void newRecording()
    {
        output("FILE", "The new recording").required();
        flag("--force", options().force, "Replace an existing file");
        json("Print a summary as JSON");
    }
    void period()
    {
        constexpr double LongestMs = 86'400'000;
        number("--period", options().periodMs,
               "From record to record where no later time is known, in milliseconds or as 0.5s (default: evenly to the "
               "end of the recording)")
            .as("DURATION")
            .withUnit([](const std::string& text) { return std::optional<double>(parseMilliseconds(text)); },
                      "a time such as 20, 20ms or 0.5s", 1, LongestMs, "1ms to 24h");
    }

private:
    /// What goes on coming is for no pager.
    static bool isEndless(const Options& options)
    {
        if constexpr (requires { options.follow; }) {
            return options.follow;
        }
        return false;
    }

    struct Given {
        Options options;
        std::string archiveConfiguration;
        bool isPaged = false;
    };
    std::shared_ptr<Given> m_given = std::make_shared<Given>();
};

}  // namespace RecTool
