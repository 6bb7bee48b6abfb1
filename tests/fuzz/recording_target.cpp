// Opening, reading and navigating, inspecting and editing a file of any bytes.
#include <utility>

#include <QString>

#include <recording2/fileaccess.h>
#include <recording2/inspection/inspection.h>
#include <recording2/inspection/rescue/salvage.h>
#include <recording2/inspection/verify/verification.h>
#include <recording2/mappinggenerator.h>
#include <recording2/recordmodel.h>

#include "hugerange.h"
#include "scratchfile.h"
#include "target.h"

namespace Fuzzing {

namespace {

using Recording2::CFileAccess;
using Recording2::CHeaderData;
using Recording2::CVTCmdData;
using Recording2::CVTTypesData;
namespace Inspection = Recording2::Inspection;

/// Goes on while the step answers something, which it may do only so often.
void untilZero(std::size_t most, const std::function<unsigned long long()>& step)
{
    for (std::size_t count = 0; step() != 0; ++count) {
        require(count < most, "reading does not come to an end");
    }
}

void inspectAll(const std::string& path, std::size_t bytes)
{
    const Inspection::Summary summary = Inspection::inspect(path);
    std::size_t records = 0;
    std::size_t dataBytes = 0;
    const auto findings = Inspection::walkRecords(path, summary, [&](const Inspection::Record& record) {
        ++records;
        dataBytes += record.data.size();
        return true;
    });
    require(records <= bytes && dataBytes <= bytes, "a walk finds more records than there are bytes");
    require(findings.size() <= bytes + 2, "a walk has more findings than there are bytes");
    Inspection::verify(path);
    const Inspection::Salvage salvaged = Inspection::salvage(path);
    require(salvaged.records.size() <= bytes, "more records are salvaged than there are bytes");
    const auto take = [](const Inspection::Record&, std::optional<std::uint64_t>, bool) { return true; };
    require(Inspection::readSalvaged(path, salvaged, take) == 0, "a salvaged record cannot be read");
}

CFileAccess open(const std::string& path, bool withTables)
{
    return {path.c_str(), QString(), nullptr, false, withTables, false, nullptr, nullptr};
}

void stepThrough(const std::string& path, std::size_t most)
{
    CVTCmdData record;
    CFileAccess file = open(path, true);
    unsigned long long time = file.readfirst(record);
    untilZero(most, [&] { return time = file.readnext(record); });
    file.readfirst(record, 0);
    const std::int32_t code = record.cmd();
    file.readfirst(record, code + 1);
    untilZero(most, [&] { return file.readnext(record, code); });
    for (const unsigned long long at : {1ULL, 10ULL, 0x8000000000000000ULL, ~0ULL}) {
        file.read(record, at);
        file.readprev(record, at);
    }
    file.read(record, 1ULL);
    untilZero(most, [&] { return file.read(record); });
    CFileAccess again = open(path, false);
    again.readTables();
    again.readTables();
    time = again.read(record, 1ULL);
    while (time != 0 && most-- > 0) {
        time = again.readAndReturnTimeOfCurrentCmd(record);
    }
    untilZero(most + 1, [&] { return time = again.readprev(record, time); });
}

void readTables(CFileAccess& file, std::size_t most)
{
    CHeaderData header;
    file.read(header);
    CVTTypesData types;
    file.read(types);
    file.read(types);
    require(types.get_vector().size() <= most, "there are more types than bytes");
    CVTCmdData record;
    unsigned long long time = 0;
    file.CRDTableToBegin();
    untilZero(most, [&] { return file.readNextChannelRangeDef(record, time) ? 1ULL : 0ULL; });
    std::string text;
    file.BookmarkTableToBegin();
    untilZero(most, [&] { return file.getNextBookmark(time, text) ? 1ULL : 0ULL; });
}

/// What a tool does to a file that somebody gave it. The file grows by what is added, and by what clearing may pass its
/// end.
void edit(const ScratchFile& scratch, const std::string& input)
{
    constexpr std::int64_t Added = 100;
    const std::int64_t most = static_cast<std::int64_t>(input.size()) * 2 + 600 + Added;
    const std::string path = scratch.path();
    {
        CFileAccess file = open(path, true);
        file.addBookmark(20, "a moment");
        file.removeBookmark(10);
        file.writeBookmarks();
    }
    require(scratch.size() <= most, "storing a bookmark lets the file grow out of bounds");
    {
        CFileAccess file = open(path, true);
        if (file.channelRangeDefAvailable()) {
            file.clearChannelRangeDef();
        }
        file.addChannelRangeDef(10);
        file.rebuildChannelRangeDef();
        readTables(file, static_cast<std::size_t>(most));
    }
    require(scratch.size() <= most, "rebuilding channel ranges lets the file grow out of bounds");
}

void replay(const std::string& path)
{
    Recording2::MappingGenerator generator;
    Recording2::MappingGenerator::BearingMap map;
    long long start = 0;
    long long stop = 0;
    if (generator.LoadRecording(start, stop, path.c_str(), nullptr)) {
        generator.RequestMapping(map, start, stop);
        generator.RequestMapping(map, 0, -1);
        generator.RequestMapping(map, stop, start);
    }
}

}  // namespace

void runRecording(const std::string& input)
{
    const ScratchFile scratch(input);
    const std::string path = scratch.path();
    const std::size_t most = input.size() + 10;
    inspectAll(path, input.size());
    stepThrough(path, most);
    {
        CFileAccess file = open(path, true);
        readTables(file, most);
    }
    if (!mentionsHugeRange(input)) {
        replay(path);
    }
    edit(scratch, input);
}

std::vector<std::string> recordingSeeds()
{
    std::vector<std::string> seeds;
    for (const char* name :
         {"bookmarks", "bookmarks_added", "bookmarks_emptied", "bookmarks_longer", "bookmarks_shorter", "channelranges",
          "empty", "full", "ranges_cleared", "ranges_cleared_bookmarks", "ranges_overrun", "ranges_rebuilt"}) {
        std::ifstream file(std::string(GOLDEN_FOLDER) + "/" + name + "/" + name + ".rec", std::ios::binary);
        require(file.is_open(), "a golden file is missing");
        seeds.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    // Beginnings of files, what a crash leaves, and a position that is damaged.
    const std::string full = seeds[7];
    seeds.push_back(full.substr(0, full.size() / 2));
    seeds.push_back(std::string(499, '0') + '#' + full.substr(500));
    std::string moved = full;
    moved.insert(500, "12");
    seeds.push_back(std::move(moved));
    seeds.emplace_back();
    return seeds;
}

}  // namespace Fuzzing
