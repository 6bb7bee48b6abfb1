// What all answers are made of: what a request asks for, checked, and the recording, the type and the overviews that it
// is about.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>

#include "answers.h"
#include "recordings/catalog.h"
#include "recordings/overviews.h"
#include "server/http.h"

namespace RecView {

/// An answer that is none: a status and one sentence.
class Refusal : public std::runtime_error {
public:
    Refusal(int status, const std::string& sentence) : std::runtime_error(sentence), m_status(status) {}
    [[nodiscard]] int status() const { return m_status; }

private:
    int m_status;
};

/// What was asked for rightly, but is not there: no error, which browsers would write into their logs.
class Absent : public std::runtime_error {
public:
    enum class Until : unsigned char { Ever, Soon };

    Absent(Until until, const std::string& sentence) : std::runtime_error(sentence), m_until(until) {}
    [[nodiscard]] Until until() const { return m_until; }

private:
    Until m_until;
};

/// The parameters of a request. All of this throws a Refusal with status 400.
class Parameters {
public:
    /// @param known all that there are; another one is refused
    Parameters(const Request& request, std::initializer_list<const char*> known);

    [[nodiscard]] bool has(const std::string& name) const { return m_query.count(name) > 0; }
    [[nodiscard]] const std::string& text(const std::string& name) const;  ///< required; not empty
    /// One of some words; the first of them where it is missing.
    [[nodiscard]] std::string word(const std::string& name, const std::vector<std::string>& words) const;
    [[nodiscard]] double moment(const std::string& name) const;     ///< required; milliseconds since 1970
    [[nodiscard]] double frequency(const std::string& name) const;  ///< required; Hz
    [[nodiscard]] bool flag(const std::string& name) const;         ///< "1", or "0" or missing
    /// @param otherwise where it is missing; without, it is required
    [[nodiscard]] std::int64_t whole(const std::string& name, std::int64_t least, std::int64_t most,
                                     std::optional<std::int64_t> otherwise = std::nullopt) const;

    struct Span {
        double from = 0;
        double to = 0;
    };
    [[nodiscard]] Span moments() const;      ///< "from" and "to", in this order
    [[nodiscard]] Span stretch() const;      ///< the same, which must be apart
    [[nodiscard]] Span frequencies() const;  ///< "low" and "high", in this order; everything where both are missing
    /// The same, which must be apart. @param lowest, highest where both are missing
    [[nodiscard]] Span band(double lowest, double highest) const;

private:
    [[nodiscard]] double number(const std::string& name, const char* what) const;

    const std::map<std::string, std::string>& m_query;
};

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
