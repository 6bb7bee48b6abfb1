// rectool: looks into recording files.
#include <exception>
#include <iostream>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "recordingtime.h"

namespace {

using RecTool::ExitCode;

constexpr const char* ExitCodes = "Exit codes: 0 fine, 1 wrong usage, 2 a file cannot be read, 3 a file is damaged.";

CLI::App* addInfo(CLI::App& app, RecTool::InfoOptions& options)
{
    CLI::App* verb = app.add_subcommand("info", "Show the header, the tables and the number of records of recordings");
    verb->add_option("FILE", options.files, "Recordings")->required();
    verb->add_flag("--json", options.json, "Print one JSON document");
    verb->footer(
        "Examples:\n"
        "  rectool info recording.rec\n"
        "  rectool info --json *.rec");
    return verb;
}

CLI::App* addTypes(CLI::App& app, RecTool::TypesOptions& options)
{
    CLI::App* verb = app.add_subcommand("types", "Show what can be recorded: numbers, keywords, kinds and value paths");
    verb->add_option("FILE", options.file, "Recording")->required();
    verb->add_flag("--json", options.json, "Print one JSON document");
    verb->footer(
        "Example:\n"
        "  rectool types recording.rec");
    return verb;
}

CLI::App* addCat(CLI::App& app, RecTool::CatOptions& options)
{
    CLI::App* verb = app.add_subcommand("cat", "Show the records, one a line: time in milliseconds, keyword, value");
    const std::string time = std::string("TIME: ") + RecTool::TimeForms;
    verb->add_option("FILE", options.file, "Recording")->required();
    verb->add_option("--from", options.from, "Begin at this time. " + time)->type_name("TIME");
    verb->add_option("--to", options.to, "End at this time, which is shown too")->type_name("TIME");
    verb->add_option("--type", options.types, "Only this keyword or type number; may be given several times")
        ->type_name("TYPE")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    verb->add_flag("--json", options.json, "Print one JSON object a line");
    verb->footer(
        "Examples:\n"
        "  rectool cat recording.rec\n"
        "  rectool cat recording.rec --from 60000 --to 65000 --type LEVEL --type FREQUENCY\n"
        "  rectool cat --json recording.rec");
    return verb;
}

ExitCode run(int argc, char** argv)
{
    CLI::App app("Looks into recordings of receivers and direction finders.", "rectool");
    app.set_version_flag("--version", "rectool " RECTOOL_VERSION);
    app.require_subcommand(1);
    app.footer(std::string("rectool VERB --help tells more about a verb.\n\n") + ExitCodes);

    RecTool::InfoOptions infoOptions;
    RecTool::TypesOptions typesOptions;
    RecTool::CatOptions catOptions;
    const CLI::App* infoVerb = addInfo(app, infoOptions);
    const CLI::App* typesVerb = addTypes(app, typesOptions);
    addCat(app, catOptions);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? ExitCode::Fine : ExitCode::Usage;
    }
    if (infoVerb->parsed()) {
        return RecTool::info(infoOptions);
    }
    return typesVerb->parsed() ? RecTool::types(typesOptions) : RecTool::cat(catOptions);
}

}  // namespace

int main(int argc, char** argv)
{
    std::ios::sync_with_stdio(false);
    try {
        return static_cast<int>(run(argc, argv));
    } catch (const std::exception& error) {
        std::cerr << "rectool: " << error.what() << '\n';
        return static_cast<int>(ExitCode::CannotRead);
    }
}
