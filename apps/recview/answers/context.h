// What all answers are made of.
#pragma once

#include <functional>
#include <mutex>
#include <string>

#include <recording2/inspection/inspection.h>

#include "answers.h"
#include "parameters.h"
#include "recordings/catalog.h"
#include "rectool/replay/inforce.h"

namespace RecView {

/// What the answers of a program share.
struct Context {
    const Options& options;
    Catalog& catalog;
    std::mutex& changing;  ///< held by whoever changes a recording
};

/// A recording that a request names, and the listing that it is of.
struct Asked {
    ListingPointer listing;
    const Timeline* timeline;
};
/// @throws Refusal 400 where "recording" is missing, 404 where there is none of that name
[[nodiscard]] Asked askedRecording(const Context& context, const Parameters& parameters);
/// The type that "type" names, by number or keyword. @throws Refusal 400
[[nodiscard]] RecordedType askedType(const Timeline& timeline, const Parameters& parameters);
/// The same, where it has to be of a kind.
[[nodiscard]] RecordedType askedType(const Timeline& timeline, const Parameters& parameters, Kind kind);

/// The last millisecond of a file's own times that is not after a moment; 0 before its first one.
[[nodiscard]] std::uint64_t timeIn(const RecordedFile& file, double ms);
/// A time of a file since 1970.
[[nodiscard]] double sinceEpoch(const RecordedFile& file, double timeMs);

/// Reads the tables of a file. @throws Refusal where it has gone or cannot be read any more
[[nodiscard]] Recording2::Inspection::Summary readTables(const RecordedFile& file);

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
[[nodiscard]] Response answerCsv(const Context& context, const Request& request);

}  // namespace RecView
