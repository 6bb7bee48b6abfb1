// The verbs of the archive: "archive status", "groups", "show", "fetch", "verify" and "retry".
#include "archive/archive.h"

#include "commandline/verb.h"

namespace RecTool {

namespace {

constexpr const char* Results = "Exit code 3: the last attempt to move a file failed, or the storage cannot be used.";

void addLooking(const Syntax& archive)
{
    Verb status(archive, "status", "Show what is waiting, moved and failed, and why", ArchiveVerbs.status);
    status.json();
    status.examples({"archive status", "archive status --archive-config station.toml --json"}, Results);
    Verb groups(archive, "groups", "List the groups, the newest first", ArchiveVerbs.groups);
    groups.number("--limit", groups.options().limit, "Only the newest so many").as("NUMBER").wholeNumber(1, 1e9);
    groups.json();
    groups.examples({"archive groups", "archive groups --limit 20 --json"}, Results);
    Verb show(archive, "show", "Show a group with its files, or one file", ArchiveVerbs.show);
    show.text("GROUP|ADDRESS", show.options().what, "A group, or the address of a file").required().notEmpty();
    show.json();
    show.examples({"archive show 0f8fad5b-d9cb-469f-a165-70867728950e",
                   "archive show zelvo:///0f8fad5b-d9cb-469f-a165-70867728950e/1 --json"},
                  Results);
}

void addWorking(const Syntax& archive)
{
    Verb fetch(archive, "fetch", "Copy a file out of the archive and check it", ArchiveVerbs.fetch);
    fetch.text("ADDRESS", fetch.options().address, "Its address").required().notEmpty();
    fetch.output("FILE", "The copy, no existing file (default: the file's own name, here)");
    fetch.json();
    fetch.examples({"archive fetch zelvo:///0f8fad5b-d9cb-469f-a165-70867728950e/1 -o recording.rec"},
                   "Exit code 3: the storage's copy is not what was stored.");
    Verb verify(archive, "verify", "Read the storage again and name the first missing or altered file",
                ArchiveVerbs.verify);
    verify.text("GROUP", verify.options().group, "Only this group").notEmpty();
    verify.flag("--all", verify.options().all, "Name all of them");
    verify.json();
    verify.examples(
        {"archive verify", "archive verify --all --json", "archive verify 0f8fad5b-d9cb-469f-a165-70867728950e"},
        "Exit code 3: a file is missing, altered or cannot be read.");
    Verb retry(archive, "retry", "Let the mover try this station's failed moves again at once", ArchiveVerbs.retry);
    retry.text("GROUP", retry.options().group, "Only this group").notEmpty();
    retry.json();
    retry.examples({"archive retry", "archive retry 0f8fad5b-d9cb-469f-a165-70867728950e"});
}

}  // namespace

void addArchiveVerbs(const Syntax& program)
{
    Syntax archive(program, "archive", "Ask the archive, and fetch from it");
    archive.needsVerb();
    addLooking(archive);
    addWorking(archive);
}

}  // namespace RecTool
