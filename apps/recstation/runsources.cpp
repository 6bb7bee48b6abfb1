// Refusing sources that do not go together, by what they are and when they measured, and making those that do.
#include "runsources.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

#include "input/timetext.h"
#include "live/livetimes.h"

namespace RecStation {

namespace {

/// A pipe or a device in a run of live sources: gives the steps of another source the time of their arrival, or keeps
/// theirs and tells how late they came.
class ArrivalSource final : public Source {
public:
    ArrivalSource(std::unique_ptr<Source> source, bool sourceTime) : m_source(std::move(source)), m_times(sourceTime) {}

    [[nodiscard]] QString name() const override { return m_source->name(); }
    void prepare() override { m_source->prepare(); }
    [[nodiscard]] std::optional<unsigned long long> nextTime() override { return arrived(m_source->nextTime()); }
    void step() override { m_source->step(); }
    [[nodiscard]] std::optional<unsigned long long> unfinishedTime() override
    {
        return arrived(m_source->unfinishedTime());
    }
    [[nodiscard]] bool plainValuesComeFirst() const override { return m_source->plainValuesComeFirst(); }
    [[nodiscard]] QStringList spectra() const override { return m_source->spectra(); }
    [[nodiscard]] SourceReport report() const override
    {
        SourceReport report = m_source->report();
        report.live = true;
        report.silent = !m_came;
        report.lag = m_times.lag();
        return report;
    }

private:
    std::optional<unsigned long long> arrived(std::optional<unsigned long long> time)
    {
        m_came = m_came || time;
        return time ? std::optional(m_times.take({systemTimeUs(), time})) : std::nullopt;
    }

    std::unique_ptr<Source> m_source;
    LiveTimes m_times;
    bool m_came = false;
};

struct Span {
    Source* source;
    unsigned long long first;
};

// The source that reaches farthest, and how far; without a time it is not known to end.
struct Reach {
    Span span;
    std::optional<unsigned long long> last;
};

std::string spanOf(const Span& span, std::optional<unsigned long long> last)
{
    return span.source->name().toStdString() + " (" + utcText(span.first) +
           (last ? " to " + utcText(std::max(*last, span.first)) : " on") + ")";
}

}  // namespace

// Standard input has one reader.
void requireOneInput(const ChosenSources& sources)
{
    std::vector<std::string> readers;
    for (const auto& source : sources) {
        if (source->readsStandardInput()) {
            readers.emplace_back(source->traits().name);
        }
    }
    if (readers.size() > 1) {
        throw UsageError(readers[0] + " and " + readers[1] +
                         " cannot both read the standard input: name a file for one of them");
    }
}

// Whatever has a peer goes on without end: what only pipes give is merged by arrival when there are several of them.
bool isLiveRun(const Options& options)
{
    const ChosenSources& sources = options.sources;
    const auto peer =
        std::find_if(sources.begin(), sources.end(), [](const auto& source) { return source->traits().live; });
    const auto file =
        std::find_if(sources.begin(), sources.end(), [](const auto& source) { return !source->isLive(); });
    if (peer != sources.end() && file != sources.end()) {
        throw UsageError(std::string((*file)->traits().name) + " does not go with " + (*peer)->traits().name +
                         ", which is live: record it in a run of its own, and join the recordings with rectool merge");
    }
    const bool live = peer != sources.end() || (sources.size() > 1 && file == sources.end());
    if (live && options.speed) {
        throw UsageError("--speed is for files: live sources set their own pace");
    }
    if (!live && (options.durationSeconds || options.sourceTime)) {
        throw UsageError(std::string(options.sourceTime ? "--source-time" : "--duration") +
                         " is for runs of live sources" +
                         (options.sourceTime ? "" : "; sim has one of its own, which stands behind that word"));
    }
    return live;
}

std::unique_ptr<Source> makeSource(const Options& options, const OfferedSource& chosen, SourceRun run)
{
    const auto tellsPositions = [&chosen](const auto& other) {
        return other.get() != &chosen && other->traits().tellsPositions;
    };
    run.alone = options.sources.size() == 1;
    run.positionElsewhere = std::any_of(options.sources.begin(), options.sources.end(), tellsPositions);
    run.sourceTime = options.sourceTime;
    auto source = chosen.make(run);
    if (run.live && !chosen.traits().live) {
        source = std::make_unique<ArrivalSource>(std::move(source), options.sourceTime);
    }
    return source;
}

void requireOwnSpectra(const QString& one, const QStringList& spectraOfOne, const QString& other,
                       const QStringList& spectraOfOther)
{
    for (const QString& path : spectraOfOther) {
        if (spectraOfOne.contains(path)) {
            const bool bearings = path == QLatin1String("/DfSpectrum");
            throw UsageError(one.toStdString() + " and " + other.toStdString() +
                             (bearings ? " both show bearings, and a run has those of one direction finder"
                                       : " both show spectra, and a run has the frequency, span and level of one") +
                             ": record each in a run of its own; these may go on side by side");
        }
    }
}

void requireOverlap(const std::vector<std::unique_ptr<Source>>& sources, unsigned long long gapUs)
{
    std::vector<Span> spans;
    for (const auto& source : sources) {
        if (const auto first = source->nextTime()) {
            spans.push_back({source.get(), *first});
        }
    }
    std::stable_sort(spans.begin(), spans.end(), [](const Span& a, const Span& b) { return a.first < b.first; });
    if (spans.size() < 2 || spans.back().first - spans.front().first <= gapUs) {
        return;
    }
    Reach reach{spans.front(), spans.front().source->lastTime()};
    for (auto next = spans.begin() + 1; next != spans.end() && reach.last; ++next) {
        const auto last = next->source->lastTime();
        if (next->first > *reach.last + gapUs) {
            throw std::runtime_error(spanOf(reach.span, reach.last) + " and " + spanOf(*next, last) +
                                     " lie apart: record them one after the other, correct the times of one, or give "
                                     "--allow-gap (--split-on-gap begins a new recording behind the gap)");
        }
        if (!last || *last > *reach.last) {
            reach = {*next, last};
        }
    }
}

}  // namespace RecStation
