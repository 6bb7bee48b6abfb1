// Choosing and walking the records that are exported, telling what was made of them; their times.
#include "export.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>

#include <terminaltext/quantity.h>
#include <QDateTime>

#include "printing/output.h"
#include "printing/text.h"
#include "replay/spectra.h"
#include "system/filenames.h"

namespace RecTool {

namespace {

constexpr std::int64_t ExportedUsPerMs = 1000;
constexpr std::int64_t ExportedUsPerSecond = 1'000'000;

/// Six digits.
std::string microsecondsOf(std::int64_t us)
{
    return std::to_string(ExportedUsPerSecond + std::max<std::int64_t>(us, 0) % ExportedUsPerSecond).substr(1);
}

}  // namespace

ExportTime::ExportTime(std::uint64_t startMs)
    : m_startUs(startMs <= EndOfYear9999Ms ? static_cast<std::int64_t>(startMs) * ExportedUsPerMs : 0)
{
}

std::int64_t ExportTime::us(double momentMs) const
{
    constexpr double Farthest = 9e18;  // that a number of microseconds tells
    const double us = std::round(momentMs * static_cast<double>(ExportedUsPerMs));
    const double all = us + static_cast<double>(m_startUs);
    return std::abs(all) < Farthest ? m_startUs + static_cast<std::int64_t>(us) : 0;
}

void ExportTime::takeSecond(std::int64_t us)
{
    constexpr std::int64_t Last = static_cast<std::int64_t>(EndOfYear9999Ms) * ExportedUsPerMs;
    const std::int64_t second = std::clamp<std::int64_t>(us, 0, Last) / ExportedUsPerSecond;
    if (second == m_second) {
        return;
    }
    m_second = second;
    m_text = QDateTime::fromSecsSinceEpoch(second, Qt::UTC).toString(Qt::ISODate).toStdString();
    m_text.pop_back();  // the zone's Z
}

std::string ExportTime::iso(double momentMs)
{
    const std::int64_t time = us(momentMs);
    return isKnown() && time > 0 ? isoAt(time) : TerminalText::shortest(momentMs);
}

std::string ExportTime::isoAt(std::int64_t us)
{
    takeSecond(us);
    const std::string fraction = microsecondsOf(us);
    return m_text + '.' + (us % ExportedUsPerMs == 0 ? fraction.substr(0, 3) : fraction) + 'Z';
}

std::string ExportTime::dateAndTime(double momentMs)
{
    const std::int64_t time = us(momentMs);
    takeSecond(time);
    constexpr std::size_t DateLength = 10;
    return m_text.substr(0, DateLength) + ", " + m_text.substr(DateLength + 1) + '.' + microsecondsOf(time);
}

ExportedRecords::ExportedRecords(Recordings& recordings, std::vector<TrackType> types)
    : m_recordings(recordings), m_types(std::move(types)), m_keywords(recordings.tracks().size())
{
}

const std::string& ExportedRecords::keyword(const TrackType& type)
{
    std::string& keyword = m_keywords[type.track][type.code];
    if (keyword.empty()) {
        keyword = keywordOf(m_recordings.tracks()[type.track].names, type.code);
    }
    return keyword;
}

const std::string& ExportedRecords::device(const TrackType& type) const
{
    return m_recordings.tracks()[type.track].device;
}

bool ExportedRecords::isWanted(const TrackType& type) const
{
    return m_types.empty() || std::find(m_types.begin(), m_types.end(), type) != m_types.end();
}

void ExportedRecords::walk(const std::function<bool()>& goesOn,
                           const std::function<void(const PlacedRecord&, const values::ValueBase&)>& visit)
{
    m_recordings.walk([&](const PlacedRecord& placed) {
        if (!goesOn()) {
            return;
        }
        if (m_bearings) {
            m_bearings->apply(placed);
        }
        if (!isWanted(placed.type)) {
            return;
        }
        // Also before the span: ranges are told once.
        const values::ValueBase* value = placed.recorded.applyAlone(placed.record);
        if (m_recordings.isBefore(placed.momentMs)) {
            return;
        }
        if (value == nullptr) {
            ++m_notUnderstood[keyword(placed.type)];
        } else {
            visit({placed.record, placed.type, placed.exactMomentMs(m_recordings.startMs()), placed.recorded}, *value);
        }
    });
}

void ExportedRecords::lookAtBearings(std::function<void(const PlacedRecord&, const BearingRow&)> look)
{
    m_bearings.emplace(m_recordings, [this, look = std::move(look)](const PlacedRecord& placed, const auto& taken) {
        constexpr double Unknown = std::numeric_limits<double>::quiet_NaN();
        if (!isWanted(placed.type) || m_recordings.isBefore(placed.momentMs)) {
            return;
        }
        ++m_bearingCount;
        const TakenBearing& bearing = taken.bearing;
        look(placed, {bearing.frequencyHz, bearing.bearing.azimuthDeg, bearing.headingDeg.value_or(Unknown),
                      bearing.bearing.elevationDeg, bearing.bearing.levelDb, bearing.bearing.quality,
                      taken.hasPosition ? bearing.line.from.latitudeDeg : Unknown,
                      taken.hasPosition ? bearing.line.from.longitudeDeg : Unknown});
    });
}

ExitCode ExportedRecords::tellLeftOut(const std::string& file, ExitCode result)
{
    for (const auto& [keyword, records] : m_leftOut) {
        complain(file, counted(records, "record") + " of " + oneLine(keyword) +
                           " not written: the format has no place for " + (records == 1 ? "it." : "them."));
    }
    for (const auto& [keyword, records] : m_notUnderstood) {
        complain(file, counted(records, "record") + " of " + oneLine(keyword) + " not understood and passed over.");
        result = worse(result, ExitCode::Damaged);
    }
    return result;
}

ExitCode exportTo(const ExportOptions& options, const ExportWriter& write, const std::string& samples)
{
    Recordings recordings(options, 1);
    if (recordings.state() != ExitCode::Fine) {
        return recordings.state();
    }
    const auto types = recordings.takeTypes(options.types);
    if (!types) {
        return ExitCode::Usage;
    }
    std::vector<std::string> inputs = options.files;
    if (!samples.empty()) {
        inputs.push_back(samples);
    }
    ExportedRecords records(recordings, *types);
    NewFile file(options.output, options.force);
    const ExitCode made = file.create(inputs);
    return made == ExitCode::Fine ? write(recordings, records, file) : made;
}

ExitCode endExport(Recordings& recordings, ExportedRecords& records, NewFile& file, const std::string& what,
                   const std::string& problem)
{
    const ExitCode written = file.finish(problem);
    if (written == ExitCode::Fine) {
        std::cout << oneLine(file.path()) << ": " << what << '\n';
    }
    return recordings.end(records.tellLeftOut(recordings.file(), written));
}

}  // namespace RecTool
