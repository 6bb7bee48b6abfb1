// The sources that the options name: whether they go together, how they are made, and whether they measured at the same
// time.
#pragma once

#include <memory>
#include <vector>

#include <QString>
#include <QStringList>

#include "options.h"
#include "sources/source.h"

namespace RecStation {

/// @throws UsageError when two sources would read the standard input
void requireOneInput(const ChosenSources& sources);

/// Whether the sources are merged by arrival.
/// @throws UsageError when they or the options do not go together
[[nodiscard]] bool isLiveRun(const Options& options);
/// One of the sources of a run. What is no peer's has the times of its arrival in a live run.
/// @param run what is known of it besides the options
[[nodiscard]] std::unique_ptr<Source> makeSource(const Options& options, const OfferedSource& chosen, SourceRun run);
/// Two sources would tear each other's spectrum down with every change, and two receivers' spectra of different paths
/// still have one frequency, span and level between them.
/// @throws UsageError when they have one in common
void requireOwnSpectra(const QString& one, const QStringList& spectraOfOne, const QString& other,
                       const QStringList& spectraOfOther);

/// Waits for the first change of every source. Reads inputs to their ends where that is needed to know.
/// @throws std::runtime_error that names both spans when sources lie apart by more than the gap (microseconds), because
/// the recording would have it in its middle
void requireOverlap(const std::vector<std::unique_ptr<Source>>& sources, unsigned long long gapUs);

}  // namespace RecStation
