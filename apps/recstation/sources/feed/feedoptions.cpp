// The options of the source "feed" and the examples in its help.
#include <CLI/CLI.hpp>

#include "input/optionchecks.h"
#include "sources/feed/feedsource.h"

namespace RecStation {

namespace {

constexpr auto FeedExamples = R"(
One JSON object per line, one change of a value per object, "at" in milliseconds (doc/feed.md has it all):
  {"at": 0, "path": "/LEVEL", "create": "number", "value": -30, "lower": -150, "upper": 50}
  {"at": 0, "record": "On"}
  {"at": 1500, "path": "/LEVEL", "set": -31.5}
A date and time do as well: "at": "2026-03-01T08:00:01.5Z".

Examples:
  recstation -o recordings feed changes.jsonl
  receiver-driver | recstation -o recordings feed)";

void addFeedOptions(CLI::App& command, FeedOptions& options)
{
    command.footer(FeedExamples);
    addInputFile(command, options.file, "File to read; - is the standard input")
        ->required(false)
        ->capture_default_str();
    addStart(command, options.startTime,
             "Recorded time of \"at\": 0 (default: that of the first line if \"at\" is one there, else the current "
             "time)")
        ->type_name("TIME");
    addStrict(command, options.strict);
    command.add_flag("--keep-at", options.keepAt,
                     "Record every plain value at its own \"at\", not at the \"time\" of the map before it");
}

}  // namespace

std::shared_ptr<OfferedSource> offerFeed()
{
    const auto make = [](FeedOptions options, const SourceRun& run) {
        options.keepAt = options.keepAt || !run.alone;  // with others, every change has its own time
        options.live = run.live;
        return makeFeedSource(options, run.hooks);
    };
    return std::make_shared<SourceWith<FeedOptions>>(
        SourceTraits{.name = "feed",
                     .description = "Changes as JSON Lines from a file or another program",
                     .turn = 5,
                     .switchesRecorders = true},
        addFeedOptions, make);
}

}  // namespace RecStation
