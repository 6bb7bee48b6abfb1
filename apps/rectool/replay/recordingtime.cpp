// Reading time stamps of maps, and parsing clock times, offsets, zones and bookmarks to times of a recording.
#include "recordingtime.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include <values/recordingtext.h>
#include <QDateTime>
#include <QString>

#include "printing/output.h"
#include "printing/text.h"

namespace RecTool {

using Recording2::Inspection::Bookmark;
using Recording2::Inspection::Summary;

namespace {

struct Zone {
    Qt::TimeSpec spec = Qt::UTC;
    int offsetSeconds = 0;  // of Qt::OffsetFromUTC
};

/// "+01:00", as other programs and cat write it.
std::optional<Zone> takeOffset(QString& clock)
{
    constexpr int OffsetLength = 6;
    const QString offset = clock.right(OffsetLength);
    const QTime ahead = QTime::fromString(offset.mid(1), QStringLiteral("HH:mm"));
    if (!ahead.isValid() || (offset[0] != QLatin1Char('+') && offset[0] != QLatin1Char('-'))) {
        return std::nullopt;
    }
    clock.chop(OffsetLength);
    clock = clock.trimmed();
    const int seconds = QTime(0, 0).secsTo(ahead);
    return Zone{Qt::OffsetFromUTC, offset[0] == QLatin1Char('-') ? -seconds : seconds};
}

/// Takes the zone off the end of a clock time. @return nothing when it does not say one
std::optional<Zone> takeZone(QString& clock)
{
    struct Named {
        const char* name;
        Qt::TimeSpec spec;
    };
    for (const Named zone : {Named{"UTC", Qt::UTC}, Named{"Z", Qt::UTC}, Named{"local", Qt::LocalTime}}) {
        if (clock.endsWith(QLatin1String(zone.name), Qt::CaseInsensitive)) {
            clock.chop(QLatin1String(zone.name).size());
            clock = clock.trimmed();
            return Zone{zone.spec};
        }
    }
    return takeOffset(clock);
}

QDateTime moment(const QDate& date, const QTime& time, const Zone& zone)
{
    return {date, time, zone.spec, zone.offsetSeconds};
}

/// The first moment from the start on at which a clock shows the time.
QDateTime firstOfDay(const QTime& time, const QDateTime& start, const Zone& zone)
{
    QDateTime first = moment(start.date(), time, zone);
    return first < start ? moment(start.date().addDays(1), time, zone) : first;
}

constexpr int DateLength = 10;
constexpr std::string_view BookmarkPrefix = "bookmark:";

/// "2023-11-14 22:13:21.5" or with a T; an invalid moment when it is none.
QDateTime dateAndClock(const QString& text, const Zone& zone)
{
    if (text.size() <= DateLength || (text[DateLength] != ' ' && text[DateLength] != 'T')) {
        return {};
    }
    const QDate date = QDate::fromString(text.left(DateLength), Qt::ISODate);
    const QTime time = QTime::fromString(text.mid(DateLength + 1), Qt::ISODateWithMs);
    return date.isValid() && time.isValid() ? moment(date, time, zone) : QDateTime();
}

std::optional<std::uint64_t> parseClock(const std::string& text, std::uint64_t startMs)
{
    QString clock = QString::fromStdString(text);
    const std::optional<Zone> zone = takeZone(clock);
    if (!zone || startMs > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) {
        return std::nullopt;
    }
    const QDateTime start =
        QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(startMs), zone->spec, zone->offsetSeconds);
    const QTime time = QTime::fromString(clock, Qt::ISODateWithMs);
    const QDateTime meant = time.isValid() ? firstOfDay(time, start, *zone) : dateAndClock(clock, *zone);
    if (!meant.isValid() || meant < start) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(start.msecsTo(meant));
}

/// The time of the only bookmark that has the text.
std::optional<std::uint64_t> findBookmark(const std::string& text, const Summary& summary)
{
    const auto has = [&](const Bookmark& bookmark) { return fromLatin1(bookmark.text) == text; };
    const auto first = std::find_if(summary.bookmarks.begin(), summary.bookmarks.end(), has);
    if (first == summary.bookmarks.end() || std::any_of(first + 1, summary.bookmarks.end(), has)) {
        return std::nullopt;
    }
    return first->timeMs;
}

/// @param text after "bookmark:"; a bookmark's own text may end like an offset
std::optional<std::uint64_t> parseBookmark(const std::string& text, const Summary& summary)
{
    if (const std::optional<std::uint64_t> time = findBookmark(text, summary)) {
        return time;
    }
    const std::size_t sign = text.find_last_of("+-");
    if (sign == std::string::npos) {
        return std::nullopt;
    }
    const std::optional<std::uint64_t> time = findBookmark(text.substr(0, sign), summary);
    const std::optional<std::uint64_t> offset = parseMilliseconds(text.substr(sign + 1));
    if (!time || !offset) {
        return std::nullopt;
    }
    const bool before = text[sign] == '-';
    const std::uint64_t room = before ? *time : std::numeric_limits<std::uint64_t>::max() - *time;
    if (*offset > room) {
        return std::nullopt;
    }
    return before ? *time - *offset : *time + *offset;
}

std::string likelyReason(const std::string& text, const Summary& summary)
{
    if (parseTime(text + " UTC", summary)) {
        return "It does not say whose clock it is: \"" + text + " UTC\" or \"" + text + " local\".";
    }
    if (text.starts_with(BookmarkPrefix)) {
        constexpr std::size_t Most = 10;
        std::string known;
        for (std::size_t i = 0; i < std::min(Most, summary.bookmarks.size()); ++i) {
            known += (known.empty() ? "\"" : ", \"") + fromLatin1(summary.bookmarks[i].text) + '"';
        }
        if (summary.bookmarks.size() > Most) {
            known += " and " + grouped(summary.bookmarks.size() - Most) + " more";
        }
        return known.empty() ? "It has no bookmarks." : "Its bookmarks: " + known + ".";
    }
    return std::string("Expected: ") + TimeForms + '.';
}

}  // namespace

std::optional<std::uint64_t> measuredUs(const std::string& text)
{
    constexpr std::size_t Tag = 2;  // "6;" of a level map, "7;" of a bearing map
    const bool isMap = text.compare(0, Tag, "6;") == 0 || text.compare(0, Tag, "7;") == 0;
    if (!isMap) {
        return std::nullopt;
    }
    std::uint64_t stamp = 0;
    const char* end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data() + Tag, end, stamp);
    const bool isWhole = error == std::errc() && (last == end || *last == '|');
    return isWhole && stamp != 0 ? std::optional(stamp) : std::nullopt;
}

double momentMs(const Recording2::Inspection::Record& record, std::uint64_t startMs)
{
    constexpr double UsPerMs = 1000;
    constexpr double LongestBeforeMs = 24 * 3600 * 1000.0;  // what is older was stamped by a clock nobody had set
    const std::optional<std::uint64_t> measured = measuredUs(record.data);
    const auto filed = static_cast<double>(record.timeMs);
    if (!measured || startMs == 0 || startMs > EndOfYear9999Ms) {
        return filed;
    }
    const std::uint64_t startUs = startMs * 1000;
    if (*measured < startUs) {
        const double before = static_cast<double>(startUs - *measured) / UsPerMs;
        return before > LongestBeforeMs || values::CarriesChannelRange(record.data) ? filed : -before;
    }
    return static_cast<double>(*measured - startUs) / UsPerMs;
}

double firstMoment(std::uint64_t fromMs)
{
    return fromMs == 0 ? -std::numeric_limits<double>::infinity() : static_cast<double>(fromMs);
}

std::string utcExactly(std::uint64_t usSince1970)
{
    constexpr std::uint64_t UsPerMs = 1000;
    constexpr int Digits = 3;
    std::string text = utc(usSince1970 / UsPerMs);
    const std::uint64_t us = usSince1970 % UsPerMs;
    const std::size_t end = text.rfind(" UTC");
    if (us != 0 && end != std::string::npos) {
        const std::string digits = std::to_string(us);
        text.insert(end, std::string(Digits - digits.size(), '0') + digits);
    }
    return text;
}

std::optional<std::uint64_t> parseMoment(const std::string& text, std::uint64_t nowMs, DayEnd end)
{
    const bool hasUnit = !text.empty() && (text.back() < '0' || text.back() > '9');
    if (const std::optional<std::uint64_t> ago = hasUnit ? parseMilliseconds(text) : std::nullopt) {
        return nowMs - std::min(nowMs, *ago);
    }
    QString clock = QString::fromStdString(text);
    const std::optional<Zone> zone = takeZone(clock);
    if (!zone) {
        return std::nullopt;
    }
    QDateTime meant = dateAndClock(clock, *zone);
    if (const QDate day = QDate::fromString(clock, Qt::ISODate); clock.size() == DateLength && day.isValid()) {
        constexpr int LastMs = 999;
        meant = moment(day, end == DayEnd::First ? QTime(0, 0) : QTime(23, 59, 59, LastMs), *zone);
    }
    const qint64 ms = meant.isValid() ? meant.toMSecsSinceEpoch() : -1;
    return ms < 0 ? std::nullopt : std::optional(static_cast<std::uint64_t>(ms));
}

std::uint64_t lastMoment(const Summary& summary)
{
    const Recording2::Inspection::Header& header = summary.header;
    const std::uint64_t length = header.stopMs - std::min(header.startMs, header.stopMs);
    return summary.times.empty() ? length : std::max(length, summary.times.back().timeMs);
}

std::optional<std::uint64_t> parseTime(const std::string& text, const Summary& summary)
{
    if (text.starts_with(BookmarkPrefix)) {
        return parseBookmark(text.substr(BookmarkPrefix.size()), summary);
    }
    const std::optional<std::uint64_t> milliseconds = parseMilliseconds(text);
    return milliseconds ? milliseconds : parseClock(text, summary.header.startMs);
}

bool requireTime(const char* name, const std::string& text, const Summary& summary, std::uint64_t& time)
{
    const std::optional<std::uint64_t> parsed = parseTime(text, summary);
    if (!parsed) {
        complain(name, "\"" + text + "\" is not a time of this recording. " + likelyReason(text, summary));
        return false;
    }
    time = *parsed;
    return true;
}

bool takeTime(const char* name, const std::string& text, const Summary& summary, std::uint64_t& time)
{
    return text.empty() || requireTime(name, text, summary, time);
}

bool takeSpan(const std::string& file, const std::string& fromText, const std::string& toText, const Summary& summary,
              Span& span)
{
    if (!takeTime("--from", fromText, summary, span.from) || !takeTime("--to", toText, summary, span.to)) {
        return false;
    }
    if (span.from > span.to) {
        complain(file, "--from lies behind --to.");
    }
    return span.from <= span.to;
}

}  // namespace RecTool
