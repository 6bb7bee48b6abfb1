// A verb and the options that many verbs have.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "archive/archive.h"
#include "archive/archivedfiles.h"
#include "replay/recordingtime.h"
#include "verbs.h"

namespace RecTool::CommandLine {

/// Refuses what a script passes when it has forgotten to set a variable: without a time a verb would take everything.
inline CLI::Validator notEmpty()
{
    return {[](const std::string& text) { return text.empty() ? std::string("must not be empty") : std::string(); },
            ""};
}

/// A verb whose options live as long as it does; when it is given, they become the action.
template <typename Options>
class Verb {
public:
    Verb(CLI::App& parent, const char* name, const char* description, ExitCode (*run)(const Options&), Action& action)
        : m_options(std::make_shared<Options>()), m_app(*parent.add_subcommand(name, description))
    {
        if constexpr (requires { m_options->files; }) {
            m_app.add_option("FILE", m_options->files, "Recordings, files or archive addresses")->required();
        } else if constexpr (requires { m_options->directory; }) {
            m_app.add_option("DIR", m_options->directory, "Directory")->required()->check(notEmpty());
        } else if constexpr (requires { m_options->file; }) {
            m_app.add_option("FILE", m_options->file, "Recording, a file or an archive address")->required();
        }
        m_app
            .add_option("--archive-config", *m_archiveConfiguration,
                        "Configuration of the archive (default: the file that ZELVO_CONFIG names)")
            ->type_name("FILE")
            ->check(notEmpty());
        m_app.callback([options = m_options, archive = m_archiveConfiguration, run, &action] {
            action = [options, archive, run] {
                useArchive(*archive);
                if constexpr (
                    requires { options->files; } || requires { options->file; }) {
                    return runOnLocalFiles(*options, run);
                } else {
                    return run(*options);
                }
            };
        });
    }
    [[nodiscard]] Options& options() { return *m_options; }
    [[nodiscard]] CLI::App& app() { return m_app; }

    CLI::Option* addTime(const char* name, std::string& time, const std::string& description)
    {
        return m_app.add_option(name, time, description)->type_name("TIME")->check(notEmpty());
    }
    /// --from and --to; the forms of a time are told with the first one.
    void addSpan(const std::string& from, const std::string& to)
    {
        addTime("--from", m_options->from, from + ". TIME: " + TimeForms);
        addTime("--to", m_options->to, to);
    }
    void addTypes(const char* description)
    {
        m_app.add_option("--type", m_options->types, description)
            ->type_name("TYPE")
            ->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
            ->allow_extra_args(false);  // what follows one is the recording
    }
    void addJson(const char* description = "Print one JSON document")
    {
        m_app.add_flag("--json", m_options->json, description);
    }
    void addYes() { m_app.add_flag("--yes", m_options->yes, "Change the file without asking"); }

    CLI::Option* addOutput(const char* typeName, const char* description)
    {
        return m_app.add_option("-o,--output", m_options->output, description)->type_name(typeName)->check(notEmpty());
    }

    /// @param examples what follows the program's name
    /// @param remark a sentence in front of them, may be empty
    void addExamples(std::initializer_list<const char*> examples, const std::string& remark = {})
    {
        std::string text = remark.empty() ? remark : remark + '\n';
        text += examples.size() == 1 ? "Example:" : "Examples:";
        for (const char* example : examples) {
            text.append("\n  rectool ").append(example);
        }
        m_app.footer(text);
    }

private:
    std::shared_ptr<Options> m_options;
    std::shared_ptr<std::string> m_archiveConfiguration = std::make_shared<std::string>();
    CLI::App& m_app;
};

}  // namespace RecTool::CommandLine
