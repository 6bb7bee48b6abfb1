// Copying a recording with bookmarks.
#include "emissionbookmarks.h"

#include <cmath>
#include <map>
#include <string>

#include <QString>

#include "printing/output.h"
#include "printing/text.h"
#include "replay/recordingtime.h"
#include "replay/walk.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

std::string bookmarkText(const FoundEmission& emission, const std::string& unit)
{
    const std::string text = frequency(emission.centreHz()) + ", " + frequency(emission.band.width(), 4) + ", " +
                             number(emission.highest) + ' ' + unit + ", " +
                             duration(static_cast<std::uint64_t>(std::llround(emission.stopMs - emission.startMs)));
    return QString::fromStdString(text).toLatin1().toStdString();
}

/// The next time that is free, from 1 ms to the end of the recording; nothing where there is none.
std::optional<std::uint64_t> freeTime(const std::map<std::uint64_t, std::string>& bookmarks, std::uint64_t time,
                                      std::uint64_t last)
{
    time = std::max<std::uint64_t>(time, 1);
    for (auto next = bookmarks.lower_bound(time); next != bookmarks.end() && next->first == time; ++next) {
        ++time;
    }
    return time <= last ? std::optional(time) : std::nullopt;
}

}  // namespace

ExitCode bookmarkEmissions(const std::string& file, const std::string& unit, const FoundEmissions& found,
                           NewRecording& copy)
{
    Inspection::Summary summary;
    if (!readSummary(file, summary)) {
        return ExitCode::CannotRead;
    }
    ExitCode result = copy.create(summary.types);
    if (result != ExitCode::Fine) {
        return result;
    }
    std::uint64_t withoutTime = 0;
    const std::vector<Inspection::Finding> findings = walk(file, summary, [&](const Inspection::Record& record) {
        if (record.timeMs == 0) {
            ++withoutTime;
        } else {
            copy.write(record.code, record.data, record.timeMs, false);
        }
        return !Interrupt::requested();
    });
    for (const std::uint64_t time : summary.channelRangeTimes) {
        copy.addChannelRange(time);
    }
    std::map<std::uint64_t, std::string> bookmarks;
    for (const Inspection::Bookmark& bookmark : summary.bookmarks) {
        bookmarks.emplace(bookmark.timeMs, bookmark.text);
    }
    std::uint64_t withoutPlace = 0;
    for (const FoundEmission& emission : found.all) {
        const auto time = freeTime(bookmarks, emission.first.timeMs, lastMoment(summary));
        time ? static_cast<void>(bookmarks.emplace(*time, bookmarkText(emission, unit)))
             : static_cast<void>(++withoutPlace);
    }
    result = copy.finish(summary.header, bookmarks);
    if (result != ExitCode::Fine) {
        return result;
    }
    tellWithoutTime(file, withoutTime);
    if (withoutPlace > 0) {
        complain(file,
                 "Bookmarks left out because every millisecond up to the end has one: " + grouped(withoutPlace) + '.');
    }
    return withoutTime + withoutPlace > 0 ? ExitCode::Damaged : soundness(findings);
}

}  // namespace RecTool
