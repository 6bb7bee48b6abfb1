// Verbs of the archive.
#include <terminaltext/optionvalues.h>

#include "archive/archive.h"
#include "verb.h"

namespace RecTool::CommandLine {

namespace {

constexpr const char* Results = "Exit code 3: the last attempt to move a file failed, or the storage cannot be used.";

void addStatus(CLI::App& archive, Action& action)
{
    Verb<ArchiveStatusOptions> verb(archive, "status", "Show what is waiting, moved and failed, and why", archiveStatus,
                                    action);
    verb.addJson();
    verb.addExamples({"archive status", "archive status --archive-config station.toml --json"}, Results);
}

void addGroups(CLI::App& archive, Action& action)
{
    Verb<ArchiveGroupsOptions> verb(archive, "groups", "List the groups, the newest first", archiveGroups, action);
    verb.app()
        .add_option("--limit", verb.options().limit, "Only the newest so many")
        ->type_name("NUMBER")
        ->transform(TerminalText::wholeNumber(1, 1e9));
    verb.addJson();
    verb.addExamples({"archive groups", "archive groups --limit 20 --json"}, Results);
}

void addShow(CLI::App& archive, Action& action)
{
    Verb<ArchiveShowOptions> verb(archive, "show", "Show a group with its files, or one file", archiveShow, action);
    verb.app()
        .add_option("GROUP|ADDRESS", verb.options().what, "A group, or the address of a file")
        ->required()
        ->check(notEmpty());
    verb.addJson();
    verb.addExamples({"archive show 0f8fad5b-d9cb-469f-a165-70867728950e",
                      "archive show zelvo:///0f8fad5b-d9cb-469f-a165-70867728950e/1 --json"},
                     Results);
}

void addFetch(CLI::App& archive, Action& action)
{
    Verb<ArchiveFetchOptions> verb(archive, "fetch", "Copy a file out of the archive and check it", archiveFetch,
                                   action);
    verb.app().add_option("ADDRESS", verb.options().address, "Its address")->required()->check(notEmpty());
    verb.addOutput("FILE", "The copy, no existing file (default: the file's own name, here)");
    verb.addJson();
    verb.addExamples({"archive fetch zelvo:///0f8fad5b-d9cb-469f-a165-70867728950e/1 -o recording.rec"},
                     "Exit code 3: the storage's copy is not what was stored.");
}

void addArchiveVerify(CLI::App& archive, Action& action)
{
    Verb<ArchiveVerifyOptions> verb(
        archive, "verify", "Read the storage again and name the first missing or altered file", archiveVerify, action);
    verb.app().add_option("GROUP", verb.options().group, "Only this group")->check(notEmpty());
    verb.app().add_flag("--all", verb.options().all, "Name all of them");
    verb.addJson();
    verb.addExamples(
        {"archive verify", "archive verify --all --json", "archive verify 0f8fad5b-d9cb-469f-a165-70867728950e"},
        "Exit code 3: a file is missing, altered or cannot be read.");
}

void addRetry(CLI::App& archive, Action& action)
{
    Verb<ArchiveRetryOptions> verb(archive, "retry", "Let the mover try this station's failed moves again at once",
                                   archiveRetry, action);
    verb.app().add_option("GROUP", verb.options().group, "Only this group")->check(notEmpty());
    verb.addJson();
    verb.addExamples({"archive retry", "archive retry 0f8fad5b-d9cb-469f-a165-70867728950e"});
}

}  // namespace

void addArchiveVerbs(CLI::App& app, Action& action)
{
    CLI::App& archive = *app.add_subcommand("archive", "Ask the archive, and fetch from it");
    archive.require_subcommand(1);
    addStatus(archive, action);
    addGroups(archive, action);
    addShow(archive, action);
    addFetch(archive, action);
    addArchiveVerify(archive, action);
    addRetry(archive, action);
}

}  // namespace RecTool::CommandLine
