// Refusing sources that do not go together, and making those that do.
#include "runsources.h"

#include <algorithm>
#include <string>
#include <vector>

#include "live/arrivalsource.h"

namespace RecStation {

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

}  // namespace RecStation
