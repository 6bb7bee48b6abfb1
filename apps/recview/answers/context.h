// What all answers are made of.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>

#include "answers.h"
#include "parameters.h"
#include "recordings/catalog.h"
#include "recordings/overviews.h"

namespace RecView {

/// What the answers of a program share.
struct Context {
    const Options& options;
    Catalog& catalog;
    Overviews& overviews;
    std::mutex& changing;  ///< held by whoever changes a recording
};

/// A recording that a request names, and the listing that it is of.
struct Asked {
    ListingPointer listing;
    const Timeline* timeline;
};
/// @throws Refusal 400 where "recording" is missing, 404 where there is none of that name
[[nodiscard]] Asked askedRecording(const Context& context, const Parameters& parameters);

/// What a recording holds, as far as anybody knows: of a file whose overview is made, all of it.
[[nodiscard]] RecordedTypes typesOf(const Context& context, const Timeline& timeline);
/// The type that "type" names, by number or keyword. @throws Refusal 400
[[nodiscard]] RecordedType askedType(const Context& context, const Timeline& timeline, const Parameters& parameters);
/// The same, where it has to be a spectrum.
[[nodiscard]] RecordedType askedSpectrum(const Context& context, const Timeline& timeline,
                                         const Parameters& parameters);

/// A file of a recording with its overview.
struct OverviewedFile {
    FilePointer file;
    std::shared_ptr<Overview> overview;  ///< what there is so far; may be null
    double share = 0;                    ///< how much of it there is

    [[nodiscard]] double startMs() const { return static_cast<double>(file->startMs); }
    /// What of a stretch this file may hold something of.
    [[nodiscard]] Stretch within(const Stretch& time) const;
};
/// @throws Refusal 503 where it cannot be made
[[nodiscard]] OverviewedFile overviewOf(const Context& context, const FilePointer& file);
/// Those files of a recording that reach into a stretch and have an overview, in their order.
struct OverviewedFiles {
    std::vector<OverviewedFile> files;
    double made = 1;  ///< how much of all that reach into it, by bytes
};
/// A file that cannot be overviewed is left out, unless all of them are. @throws Refusal 503 then
[[nodiscard]] OverviewedFiles overviewsIn(const Context& context, const Timeline& timeline, const Stretch& time);
/// How much of a whole recording is made, by bytes, without making any.
[[nodiscard]] double madeOf(const Overviews& overviews, const Timeline& timeline);

/// What is not found in a recording may be in what is not made yet. @throws Absent where that is so
void refuseUnfinished(const Context& context, const Timeline& timeline);

/// A time of a file since 1970.
[[nodiscard]] double sinceEpoch(const RecordedFile& file, double timeMs);

// The answers, each in a source of its own.
[[nodiscard]] Response answerRecordings(const Context& context, const Request& request);
[[nodiscard]] Response answerState(const Context& context, const Request& request);
[[nodiscard]] Response answerRecord(const Context& context, const Request& request);
[[nodiscard]] Response answerBearings(const Context& context, const Request& request);
[[nodiscard]] Response answerBookmarks(const Context& context, const Request& request);
[[nodiscard]] Response answerValues(const Context& context, const Request& request);
[[nodiscard]] Response answerView(const Context& context, const Request& request);
[[nodiscard]] Response answerSpectrum(const Context& context, const Request& request);
[[nodiscard]] Response answerChannel(const Context& context, const Request& request);
[[nodiscard]] Response answerSweep(const Context& context, const Request& request);
[[nodiscard]] Response answerTrace(const Context& context, const Request& request);
[[nodiscard]] Response answerEmissions(const Context& context, const Request& request);
[[nodiscard]] Response answerOccupancy(const Context& context, const Request& request);
[[nodiscard]] Response answerCsv(const Context& context, const Request& request);

}  // namespace RecView
