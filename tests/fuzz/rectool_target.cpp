// The verbs of rectool that read one file, on a file of any bytes.
#include <QTemporaryDir>

#include "hugerange.h"
#include "scratchfile.h"
#include "silence.h"
#include "target.h"
#include "verbs/commands.h"
#include "verbs/listing.h"

namespace Fuzzing {

namespace {

/// As the program does: what is thrown becomes a sentence.
void tolerating(const std::function<RecTool::ExitCode()>& verb)
{
    try {
        static_cast<void>(verb());
    } catch (const std::exception& error) {
        require(*error.what() != '\0', "an error says nothing");
    }
}

void look(const std::string& path)
{
    for (const bool json : {false, true}) {
        RecTool::OverviewOptions overview;
        overview.files = {path};
        overview.json = json;
        tolerating([&] { return RecTool::overview(overview); });
        tolerating([&] { return RecTool::types({path, json}); });
        tolerating([&] { return RecTool::verify({{path}, json}); });
        tolerating([&] { return RecTool::listBookmarks({path, json}); });
        tolerating([&] { return RecTool::listRanges({path, json}); });
    }
}

void showValues(const std::string& path)
{
    tolerating([&] { return RecTool::cat({path, "", "", {}, "local", true, false}); });
    for (const bool json : {false, true}) {
        tolerating([&] { return RecTool::cat({path, "", "", {}, json ? "offset" : "utc", false, json}); });
        tolerating([&] { return RecTool::state({path, "15", json}); });
        tolerating([&] { return RecTool::diff({path, "10", "1000", true, json}); });
        RecTool::MapOptions map;
        map.files = {path};
        map.json = json;
        tolerating([&] { return RecTool::map(map); });
    }
}

void repair(const std::string& path)
{
    static const QTemporaryDir folder;
    RecTool::RepairOptions options;
    options.file = path;
    options.output = (folder.path() + "/repaired.rec").toStdString();
    options.force = true;
    RecTool::ExitCode result = RecTool::ExitCode::CannotRead;
    tolerating([&] { return result = RecTool::repair(options); });
    if (result == RecTool::ExitCode::Fine || result == RecTool::ExitCode::Damaged) {
        require(RecTool::verify({{options.output}, false}) == RecTool::ExitCode::Fine, "a repaired file is not sound");
    }
}

}  // namespace

void runRectool(const std::string& input)
{
    const ScratchFile scratch(input);
    const Silence silence;
    look(scratch.path());
    if (!mentionsHugeRange(input)) {
        showValues(scratch.path());
    }
    repair(scratch.path());
}

}  // namespace Fuzzing
