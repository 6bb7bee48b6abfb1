// Putting recordings on tracks and one axis of time, and walking through their records.
#include "recordings.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include <QStringList>

#include "printing/text.h"
#include "recordingtime.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

constexpr double MaySeemToOverlapMs = 1000;  // a split begins while the last records of the one before wait

bool sameTypes(const std::vector<Inspection::TypeEntry>& a, const std::vector<Inspection::TypeEntry>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& one, const auto& other) {
        return one.typeNumber == other.typeNumber && one.keyword == other.keyword && one.valuePath == other.valuePath;
    });
}

const LevelMap* levelsOf(const values::ValueBase* value)
{
    const bool isMap = value != nullptr && value->GetType() == values::ValueType::LevelMap;
    return isMap ? static_cast<const LevelMap*>(value) : nullptr;
}

std::string deviceOf(const Inspection::Header& header)
{
    const std::string name = fromLatin1(header.deviceName);
    const std::string type = fromLatin1(header.deviceType);
    return oneLine(type.empty() ? name : name + " (" + type + ")");
}

}  // namespace

double PlacedRecord::exactMomentMs(std::uint64_t startMs) const
{
    constexpr double UsPerMilli = 1000;
    const auto measured = measuredUs(record.data);
    const double exact =
        measured ? (static_cast<double>(*measured) - static_cast<double>(startMs) * UsPerMilli) / UsPerMilli : 0;
    return measured && std::abs(exact - momentMs) < 1 ? exact : momentMs;
}

std::optional<double> PlacedRecord::number() const
{
    return plainNumber(recorded.apply(record));
}

const LevelMap* PlacedRecord::levels() const
{
    return levelsOf(recorded.apply(record));
}

const LevelMap* PlacedRecord::carriedLevels() const
{
    return levelsOf(recorded.applyAlone(record));
}

double Recordings::Part::lengthMs() const
{
    const Inspection::Header& header = summary.header;
    const std::uint64_t duration = header.stopMs > header.startMs ? header.stopMs - header.startMs : 0;
    return static_cast<double>(std::max(duration, summary.times.empty() ? 0 : summary.times.back().timeMs));
}

Recordings::Recordings(const RecordingsOptions& options, std::size_t passes, ExitCode state)
    : m_state(state), m_progress(options.files.front()), m_passes(passes)
{
    if (m_state == ExitCode::Fine) {
        m_state = readParts(options.files);
    }
    if (m_state == ExitCode::Fine) {
        makeTracks();
        makeAxis();
        m_state = takeSpan(options);
    }
}

ExitCode Recordings::readParts(const std::vector<std::string>& files)
{
    for (const std::string& file : files) {
        Inspection::Summary summary = Inspection::inspect(file);
        if (summary.readability != Inspection::Readability::Ok) {
            complain(file, summary.problem);
            return ExitCode::CannotRead;
        }
        if (files.size() > 1 && summary.header.startMs == 0) {
            complain(file, "This recording does not tell when it began, so it cannot be drawn with others.");
            return ExitCode::Usage;
        }
        m_parts.push_back({file, std::move(summary), 0, 0, {}});
    }
    std::stable_sort(m_parts.begin(), m_parts.end(),
                     [](const Part& a, const Part& b) { return a.summary.header.startMs < b.summary.header.startMs; });
    const std::uint64_t first = m_parts.front().summary.header.startMs;
    for (Part& part : m_parts) {
        part.offsetMs = static_cast<double>(part.summary.header.startMs - first);
    }
    return ExitCode::Fine;
}

void Recordings::makeTracks()
{
    std::vector<const Part*> lastOf;  // of each track
    for (Part& part : m_parts) {
        const auto goesOn = std::find_if(lastOf.begin(), lastOf.end(), [&](const Part* last) {
            return deviceOf(last->summary.header) == deviceOf(part.summary.header) &&
                   sameTypes(last->summary.types, part.summary.types) &&
                   last->offsetMs + last->lengthMs() <= part.offsetMs + MaySeemToOverlapMs;
        });
        part.track = static_cast<std::size_t>(goesOn - lastOf.begin());
        if (goesOn != lastOf.end()) {
            *goesOn = &part;
        } else {
            lastOf.push_back(&part);
            m_tracks.push_back({fromLatin1(part.summary.header.deviceName), TypeNames(part.summary.types)});
        }
    }
}

void Recordings::makeAxis()
{
    m_axis.header = m_parts.front().summary.header;
    for (const Part& part : m_parts) {
        for (Inspection::Bookmark bookmark : part.summary.bookmarks) {
            bookmark.timeMs += static_cast<std::uint64_t>(part.offsetMs);
            m_axis.bookmarks.push_back(bookmark);
        }
    }
    std::stable_sort(m_axis.bookmarks.begin(), m_axis.bookmarks.end(),
                     [](const Inspection::Bookmark& a, const Inspection::Bookmark& b) { return a.timeMs < b.timeMs; });
}

ExitCode Recordings::takeSpan(const RecordingsOptions& options)
{
    double end = 0;
    m_span.fromMs = std::numeric_limits<double>::infinity();
    for (const Part& part : m_parts) {
        const std::vector<Inspection::TimeEntry>& times = part.summary.times;
        const double first = times.empty() ? 0 : static_cast<double>(times.front().timeMs);
        m_span.fromMs = std::min(m_span.fromMs, part.offsetMs + first);
        end = std::max(end, part.offsetMs + part.lengthMs());
    }
    m_span.toMs = end;
    m_fromIsGiven = !options.from.empty();
    m_toIsGiven = !options.to.empty();
    std::uint64_t from = 0;
    std::uint64_t to = 0;
    if (!takeTime(options.fromName, options.from, m_axis, from) || !takeTime(options.toName, options.to, m_axis, to)) {
        return ExitCode::Usage;
    }
    m_span.fromMs = m_fromIsGiven ? static_cast<double>(from) : m_span.fromMs;
    m_span.toMs = m_toIsGiven ? static_cast<double>(to) : m_span.toMs;
    if (m_span.fromMs > m_span.toMs) {
        complain(file(), m_span.fromMs > end ? std::string(options.fromName) + " lies behind the end of the recording."
                         : !m_fromIsGiven    ? std::string(options.toName) + " lies in front of the first record."
                                             : std::string(options.fromName) + " lies behind " + options.toName + '.');
        return ExitCode::Usage;
    }
    m_lastMs = m_toIsGiven ? m_span.toMs : std::numeric_limits<double>::infinity();
    reach(m_span.fromMs, m_span.toMs);
    return ExitCode::Fine;
}

void Recordings::reach(double fromMs, double toMs)
{
    constexpr double Least = 1e-12;  // of a time so late that a millisecond more is the same number
    m_span.fromMs = m_fromIsGiven ? m_span.fromMs : std::min(m_span.fromMs, fromMs);
    m_span.toMs = m_toIsGiven ? m_span.toMs : std::max(m_span.toMs, toMs);
    m_span.toMs = std::max(m_span.toMs, m_span.fromMs + std::max(1.0, std::abs(m_span.fromMs) * Least));
}

void Recordings::keepVisible(double momentMs)
{
    constexpr double Least = 0.02;  // of the picture
    if (momentMs > m_span.fromMs) {
        m_span.toMs = std::max(m_span.toMs, momentMs + (momentMs - m_span.fromMs) * Least / (1 - Least));
    }
}

std::string Recordings::labelled(std::size_t track, const std::string& text) const
{
    const std::string& device = m_tracks[track].device;
    return m_tracks.size() < 2 || device.empty() ? text : oneLine(device) + ": " + text;
}

QString Recordings::devices() const
{
    QStringList devices;
    for (const Part& part : m_parts) {
        devices << QString::fromStdString(deviceOf(part.summary.header));
    }
    devices.removeDuplicates();
    devices.removeAll(QString());
    return devices.join(QStringLiteral(" + "));
}

std::vector<Inspection::Bookmark> Recordings::bookmarks() const
{
    std::vector<Inspection::Bookmark> inSpan;
    std::copy_if(m_axis.bookmarks.begin(), m_axis.bookmarks.end(), std::back_inserter(inSpan),
                 [this](const Inspection::Bookmark& bookmark) {
                     const auto time = static_cast<double>(bookmark.timeMs);
                     return time >= m_span.fromMs && time <= m_span.toMs;
                 });
    return inSpan;
}

void Recordings::walk(const std::function<void(const PlacedRecord&)>& visit)
{
    std::vector<RecordedValues> recorded(m_tracks.size());
    for (Part& part : m_parts) {
        std::function<void(std::int64_t, std::int64_t)> progress = m_progress.callback();
        if (progress) {
            const auto before = static_cast<std::int64_t>(m_walked);
            const auto walks = static_cast<std::int64_t>(m_passes * m_parts.size());
            progress = [before, walks, show = progress](std::int64_t done, std::int64_t all) {
                show(before * all + done, walks * all);
            };
        }
        const double lengthMs = part.lengthMs();
        const auto place = [&](const Inspection::Record& record) {
            constexpr std::uint64_t Often = 256;
            if (m_isToStop && ++m_seen % Often == 0 && m_isToStop()) {
                throw Stopped();
            }
            const double measured = momentMs(record, part.summary.header.startMs);
            const double moment = part.offsetMs + (measured > lengthMs ? static_cast<double>(record.timeMs) : measured);
            if (record.timeMs != 0 && moment <= m_lastMs) {  // 0: its time is lost
                visit({record,
                       {part.track, record.code},
                       moment,
                       recorded[part.track],
                       static_cast<std::size_t>(&part - m_parts.data())});
            }
            return true;  // what was measured in the span may be filed after it
        };
        part.inRecords = Inspection::walkRecords(part.file, part.summary, place, progress);
        ++m_walked;
    }
}

std::optional<std::vector<TrackType>> Recordings::takeTypes(const std::vector<std::string>& types) const
{
    std::vector<TrackType> taken;
    for (const std::string& type : types) {
        bool isThere = false;
        for (std::size_t track = 0; track < m_tracks.size(); ++track) {
            const auto code = m_tracks[track].names.numberOf(type);
            isThere = isThere || code;
            if (code && std::find(taken.begin(), taken.end(), TrackType{track, *code}) == taken.end()) {
                taken.push_back({track, *code});
            }
        }
        if (!isThere) {
            static_cast<void>(RecTool::takeTypes(file(), {type}, m_tracks.front().names));  // tells what there is
            return std::nullopt;
        }
    }
    return taken;
}

ExitCode Recordings::end(ExitCode drawn)
{
    m_progress.clear();
    for (const Part& part : m_parts) {
        std::vector<Inspection::Finding> findings = part.summary.findings;
        findings.insert(findings.end(), part.inRecords.begin(), part.inRecords.end());
        complain(part.file, findings);
        drawn = worse(drawn, soundness(findings));
    }
    return finish(drawn);
}

ExitCode Recordings::refuse(const std::string& why)
{
    m_progress.clear();
    complain(file(), why);
    return end(ExitCode::Usage);
}

std::string ofDevice(const std::string& device, const std::string& keyword)
{
    return oneLine(device.empty() ? keyword : device + ": " + keyword);
}

std::string noRecord(const RecordingsOptions& options, const std::string& keyword)
{
    const bool isWhole = options.from.empty() && options.to.empty();
    return "There is no record of " + keyword + (isWhole ? " in the recording." : " in or before the span.");
}

}  // namespace RecTool
