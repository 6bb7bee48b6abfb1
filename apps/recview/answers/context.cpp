// Parsing numbers, words and spans out of a query: whatever is wrong becomes one sentence that names the parameter.
// Finding the recording, the type and the overviews that a request is about.
#include "context.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include <QString>

#include "recordings/keptcolumns.h"

namespace RecView {

namespace {

[[noreturn]] void refuseParameter(const std::string& name, const std::string& what)
{
    throw Refusal(400, "The parameter \"" + name + "\" " + what + ".");
}

template <typename Number>
std::optional<Number> parsedNumber(const std::string& text)
{
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && last == end ? std::optional(number) : std::nullopt;
}

}  // namespace

Parameters::Parameters(const Request& request, std::initializer_list<const char*> known) : m_query(request.query)
{
    for (const auto& [name, value] : m_query) {
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            refuseParameter(name, "is not one of " + request.path);
        }
    }
}

const std::string& Parameters::text(const std::string& name) const
{
    const auto found = m_query.find(name);
    if (found == m_query.end() || found->second.empty()) {
        refuseParameter(name, "is missing");
    }
    return found->second;
}

std::string Parameters::word(const std::string& name, const std::vector<std::string>& words) const
{
    if (!has(name)) {
        return words.front();
    }
    const std::string& given = text(name);
    if (std::find(words.begin(), words.end(), given) == words.end()) {
        std::string all;
        for (const std::string& one : words) {
            all += (all.empty() ? "" : ", ") + one;
        }
        refuseParameter(name, "is none of " + all);
    }
    return given;
}

double Parameters::number(const std::string& name, const char* what) const
{
    const std::optional<double> number = parsedNumber<double>(text(name));
    constexpr double Most = 1e15;  // far beyond every time and frequency, and exact to a part of a millisecond
    if (!number || !(std::abs(*number) <= Most)) {
        refuseParameter(name, std::string("is not ") + what);
    }
    return *number;
}

double Parameters::moment(const std::string& name) const
{
    return number(name, "a time in milliseconds since 1970");
}

double Parameters::frequency(const std::string& name) const
{
    return number(name, "a frequency in Hz");
}

bool Parameters::flag(const std::string& name) const
{
    return word(name, {"0", "1"}) == "1";
}

std::int64_t Parameters::whole(const std::string& name, std::int64_t least, std::int64_t most,
                               std::optional<std::int64_t> otherwise) const
{
    if (!has(name) && otherwise) {
        return *otherwise;
    }
    const std::optional<std::int64_t> number = parsedNumber<std::int64_t>(text(name));
    if (!number || *number < least || *number > most) {
        refuseParameter(name, "is not a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return *number;
}

Parameters::Span Parameters::moments() const
{
    const Span span{moment("from"), moment("to")};
    if (span.from > span.to) {
        refuseParameter("from", "lies behind \"to\"");
    }
    return span;
}

Parameters::Span Parameters::frequencies() const
{
    constexpr double Everything = std::numeric_limits<double>::infinity();
    if (!has("low") && !has("high")) {
        return {-Everything, Everything};
    }
    const Span span{frequency("low"), frequency("high")};
    if (span.from > span.to) {
        refuseParameter("low", "lies above \"high\"");
    }
    return span;
}

Parameters::Span Parameters::stretch() const
{
    const Span span = moments();
    if (span.from == span.to) {
        refuseParameter("to", "is the same as \"from\"");
    }
    return span;
}

Parameters::Span Parameters::band(double lowest, double highest) const
{
    Span span = frequencies();
    if (!has("low")) {
        span = {std::isfinite(lowest) ? lowest : 0, std::isfinite(highest) ? highest : 0};
        span.to = span.from < span.to ? span.to : span.from + 1;  // of a single channel
    }
    if (span.from == span.to) {
        refuseParameter("high", "is the same as \"low\"");
    }
    return span;
}

Asked askedRecording(const Context& context, const Parameters& parameters)
{
    const std::string& id = parameters.text("recording");
    ListingPointer listing = context.catalog.listing();
    const Timeline* timeline = listing->find(id);
    if (timeline == nullptr) {
        throw Refusal(404, "There is no recording of this name any more, or there never was.");
    }
    return {std::move(listing), timeline};
}

namespace {

/// How much of some files is made.
class MadeShare {
public:
    void add(const RecordedFile& file, double share)
    {
        const double bytes = std::max(1.0, static_cast<double>(file.bytes));
        m_made += bytes * share;
        m_all += bytes;
    }
    [[nodiscard]] double share() const { return m_all == 0 ? 1 : m_made / m_all; }

private:
    double m_made = 0;
    double m_all = 0;
};

void addTypes(const Overview& overview, const RecordedFile& file, RecordedTypes& types)
{
    for (const KeptKind& kept : kindsOf(overview)) {
        types.try_emplace(kept.code, typeOf(kept.code, static_cast<Kind>(kept.kind), file.types));
    }
    for (const Spectrum& spectrum : overview.spectra()) {
        const auto found = types.find(spectrum.code);
        if (found != types.end()) {
            found->second.widen(spectrum.span.lowHz, spectrum.span.highHz);
        }
    }
}

}  // namespace

RecordedTypes typesOf(const Context& context, const Timeline& timeline)
{
    RecordedTypes types = timeline.recorded();
    for (const FilePointer& file : timeline.files) {
        const std::shared_ptr<Overview> overview = file->live ? file->growing : context.overviews.known(*file).overview;
        if (overview != nullptr) {
            addTypes(*overview, *file, types);
        }
    }
    return types;
}

RecordedType askedType(const Context& context, const Timeline& timeline, const Parameters& parameters)
{
    const std::string& name = parameters.text("type");
    std::int32_t code = 0;
    const char* const end = name.data() + name.size();
    const auto [last, error] = std::from_chars(name.data(), end, code);
    const bool isNumber = error == std::errc() && last == end;
    for (const auto& [number, type] : typesOf(context, timeline)) {
        const bool isKeyword =
            QString::fromStdString(name).compare(QString::fromStdString(type.keyword), Qt::CaseInsensitive) == 0;
        if (isNumber ? number == code : isKeyword) {
            return type;
        }
    }
    throw Refusal(400, "The parameter \"type\" names nothing that this recording holds.");
}

RecordedType askedSpectrum(const Context& context, const Timeline& timeline, const Parameters& parameters)
{
    RecordedType type = askedType(context, timeline, parameters);
    if (type.kind != Kind::Levels) {
        throw Refusal(400, "The parameter \"type\" names no spectrum.");
    }
    return type;
}

Stretch OverviewedFile::within(const Stretch& time) const
{
    return {std::max(time.fromMs, startMs()),
            std::max(startMs(), std::min(time.toMs, static_cast<double>(file->endMs)))};
}

OverviewedFile overviewOf(const Context& context, const FilePointer& file)
{
    if (file->live) {
        return {file, file->growing, 1};
    }
    Made made = context.overviews.of(file);
    if (!made.problem.empty()) {
        throw Refusal(503, file->name + ": " + made.problem);
    }
    return {file, std::move(made.overview), made.share};
}

OverviewedFiles overviewsIn(const Context& context, const Timeline& timeline, const Stretch& time)
{
    constexpr double LongestInForceMs = 60'000;  // the last sweep of a file counts for some time
    OverviewedFiles found;
    MadeShare made;
    bool isAny = false;
    std::string problem;
    for (const FilePointer& file : timeline.files) {
        const bool reaches = static_cast<double>(file->startMs) <= time.toMs &&
                             static_cast<double>(file->endMs) + LongestInForceMs >= time.fromMs;
        if (!reaches) {
            continue;
        }
        try {
            OverviewedFile one = overviewOf(context, file);
            made.add(*file, one.share);
            isAny = true;
            if (one.overview != nullptr) {
                found.files.push_back(std::move(one));
            }
        } catch (const Refusal& refusal) {
            problem = refusal.what();
        }
    }
    if (!isAny && !problem.empty()) {
        throw Refusal(503, problem);
    }
    found.made = made.share();
    return found;
}

double madeOf(const Overviews& overviews, const Timeline& timeline)
{
    MadeShare made;
    for (const FilePointer& file : timeline.files) {
        made.add(*file, file->live ? 1 : overviews.known(*file).share);
    }
    return made.share();
}

void refuseUnfinished(const Context& context, const Timeline& timeline)
{
    if (madeOf(context.overviews, timeline) < 1) {
        throw Absent(Absent::Until::Soon, "The recording is still being looked through; ask again in a moment.");
    }
}

double sinceEpoch(const RecordedFile& file, double timeMs)
{
    return static_cast<double>(file.startMs) + timeMs;
}

}  // namespace RecView
