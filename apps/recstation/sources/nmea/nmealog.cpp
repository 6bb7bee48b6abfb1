// Grouping sentences of one time, holding those without a date, spreading those without a time.
#include "sources/nmea/nmealog.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include <QDate>

#include <system/stopsignal.h>

#include "clock.h"
#include "input/fields.h"
#include "input/timetext.h"

namespace RecStation {

namespace {

constexpr std::size_t MostWaiting = 10'000;
constexpr long long LongestHeldUs = 10'000'000;
constexpr auto ArrivalHelps = ": with --arrival its lines have the time in front of them, or at which they are read";

long long today()
{
    constexpr unsigned long long DayUs = 86'400'000'000;
    return static_cast<long long>(systemTimeUs() / DayUs);
}

std::string dayText(long long day)
{
    return QDate(1970, 1, 1).addDays(day).toString(Qt::ISODate).toStdString();
}

// Fields of a letter, a colon and a value, between commas and up to the checksum.
std::optional<unsigned long long> readTagBlock(std::string_view block)
{
    const std::string_view fields = block.substr(0, block.find('*'));
    for (const std::string_view begin : {"\\c:", ",c:"}) {
        const std::size_t found = fields.find(begin);
        if (found != std::string_view::npos) {
            const std::string_view value = fields.substr(found + begin.size());
            return parseEpoch(std::string(value.substr(0, value.find_first_of(",\\"))));
        }
    }
    return std::nullopt;
}

// The time that a logger or a multiplexer put in front of a sentence:
// ISO 8601, also with a blank between date and time and in brackets, seconds or milliseconds since 1970, or the field
// c of a tag block ("\\s:AB,c:1795248000*5D\\"); microseconds since 1970 UTC. Nothing for anything else.
std::optional<unsigned long long> readLoggedTime(std::string_view front)
{
    constexpr std::size_t DateLength = 10;
    if (front.empty()) {
        return std::nullopt;
    }
    if (front.front() == '\\') {
        return readTagBlock(front);
    }
    std::string text(trimmed(front, " \t[](),;:|<>\""));
    if (text.size() > DateLength && text[DateLength] == ' ') {
        text[DateLength] = 'T';
    }
    const std::size_t comma = text.find(',', DateLength);  // what some write for a point
    if (comma != std::string::npos) {
        text[comma] = '.';
    }
    const auto time = parseIsoTime(text);
    return time ? time : parseEpoch(text);
}

}  // namespace

NmeaLog::NmeaLog(const NmeaOptions& options, InputReport report, ArrivalClock now)
    : m_options(options),
      m_bad("nmea", options.strict, std::move(report)),
      m_order(options.splitGapUs),
      m_lines(withLineFeeds(openText(options.file)), LongestLine),
      m_clock(today(), options.fixWeekRollover),
      m_live(now || isStream(options.file)),
      m_byArrival(options.arrival),
      m_now(now ? std::move(now) : [] { return static_cast<long long>(systemTimeUs()); }),
      m_variation(options.variationDeg)
{
    if (options.firstDay) {
        m_clock.start(*options.firstDay);
    }
}

std::optional<TimedFix> NmeaLog::next()
{
    while (m_ready.empty() && !m_ended) {
        if (!readSentence()) {
            if (System::StopSignal::requested()) {
                return std::nullopt;
            }
            m_ended = true;
            endInput();
        }
    }
    return takeReady();
}

std::optional<TimedFix> NmeaLog::nextUnfinished()
{
    m_order.finish(m_bad);
    if (m_live && !m_held.empty()) {
        goByArrival();
    }
    if (m_time) {
        releaseGroup();
    }
    return takeReady();
}

std::optional<TimedFix> NmeaLog::takeReady()
{
    if (m_ready.empty()) {
        return std::nullopt;
    }
    const TimedFix fix = m_ready.front();
    m_ready.pop_front();
    return fix;
}

void NmeaLog::accept(const NmeaMessage& message, std::string_view front)
{
    if (message.fix.empty() && !message.timeOfDay) {
        return;
    }
    Entry entry{m_lines.number(), message, m_now()};
    if (m_byArrival) {
        if (const auto logged = m_live ? std::nullopt : readLoggedTime(front)) {
            m_logged = static_cast<long long>(*logged);
        }
        entry.arrival = m_logged.value_or(entry.arrival);
        giveAtArrival(entry);
        return;
    }
    entry.message.day =
        message.day && !m_options.firstDay ? std::optional(m_clock.corrected(*message.day)) : std::nullopt;
    if (m_clock.started()) {
        place(entry);
    } else {
        holdUntilDate(entry);
    }
}

void NmeaLog::holdUntilDate(const Entry& entry)
{
    m_held.push_back(entry);
    if (entry.message.day && entry.message.timeOfDay) {
        releaseHeld();
    } else if (m_live && (m_held.size() >= MostWaiting || entry.arrival - m_held.front().arrival >= LongestHeldUs)) {
        goByArrival();
    } else if (m_held.size() >= MostWaiting) {
        throw std::runtime_error("nmea: the first " + std::to_string(MostWaiting) + " sentences of " +
                                 inputName(m_options.file) + " tell no date: name it with --date");
    }
}

void NmeaLog::goByArrival()
{
    m_bad.say(inputName(m_options.file) + " tells no date: times are those of arrival");
    m_byArrival = true;
    for (const Entry& entry : std::exchange(m_held, {})) {
        giveAtArrival(entry);
    }
}

void NmeaLog::giveAtArrival(const Entry& entry)
{
    if (entry.message.fix.empty()) {
        return;
    }
    m_time = static_cast<long long>(m_order.take(static_cast<unsigned long long>(entry.arrival), entry.line, m_bad));
    m_ready.push_back({static_cast<unsigned long long>(*m_time), entry.message.fix});
    m_given = true;
}

// The date that came last is counted back to the first time of day.
void NmeaLog::releaseHeld()
{
    constexpr long long HalfDay = 43'200'000'000;
    long long day = m_held.back().message.day.value();
    std::optional<long long> later;
    for (auto entry = m_held.rbegin(); entry != m_held.rend(); ++entry) {
        if (const auto time = entry->message.timeOfDay) {
            day -= later && *time > *later + HalfDay ? 1 : 0;
            later = time;
        }
    }
    m_clock.start(day);
    for (const Entry& entry : std::exchange(m_held, {})) {
        place(entry);
    }
}

void NmeaLog::place(const Entry& entry)
{
    const NmeaMessage& message = entry.message;
    if (message.timeOfDay) {
        const long long measured = std::max(m_clock.at(*message.timeOfDay, message.day), 0LL);
        m_ofClock.reset();
        if (message.clockOnly && measured != m_time) {
            noteClock(entry.line, measured);
            return;
        }
        m_ofFixes = m_ofFixes || !message.clockOnly;
        advance(entry.line, measured);
    } else if (const auto clock = std::exchange(m_ofClock, std::nullopt)) {
        goByClock(*clock);
    }
    m_group.push_back({entry.line, message.timeOfDay.has_value(), m_time.value_or(0), message.fix});
    if (m_group.size() >= MostWaiting) {
        if (!m_time) {
            throw std::runtime_error("nmea: the first " + std::to_string(MostWaiting) + " sentences of " +
                                     inputName(m_options.file) + " tell no time" + ArrivalHelps);
        }
        releaseGroup();
    }
}

// A clock's time is that of the moment, which may be a second ahead of the fix that is still being sent: it only counts
// while fixes tell none, and for sentences without a time.
void NmeaLog::noteClock(std::size_t line, long long time)
{
    constexpr long long NearFix = 1'500'000;
    if (!m_ofFixes || std::abs(time - m_time.value_or(0)) > NearFix) {
        m_ofClock = Clock{line, time};
    }
}

void NmeaLog::goByClock(const Clock& clock)
{
    advance(clock.line, clock.time);
    m_group.push_back({clock.line, true, *m_time, {}});
}

void NmeaLog::advance(std::size_t line, long long measured)
{
    const auto time = static_cast<long long>(m_order.take(static_cast<unsigned long long>(measured), line, m_bad));
    if (!m_time || time != *m_time) {
        closeGroup(line, time);
    }
}

// Another time came: now everything of the group has its time.
void NmeaLog::closeGroup(std::size_t line, long long time)
{
    if (m_time) {
        if (!isGap(time)) {
            spreadUntimed(line, time);
        }
    } else {
        for (Waiting& waiting : m_group) {
            waiting.time = time;
        }
    }
    releaseGroup();
    m_time = time;
}

bool NmeaLog::isGap(long long time) const
{
    return m_options.splitGapUs && isBeyond(static_cast<unsigned long long>(*m_time),
                                            static_cast<unsigned long long>(time), *m_options.splitGapUs);
}

// Sentences without a time, from the timed one before the first of them to the later time, by their lines. Timed ones
// after them come first.
void NmeaLog::spreadUntimed(std::size_t line, long long time)
{
    const auto firstUntimed =
        std::find_if(m_group.begin(), m_group.end(), [](const Waiting& waiting) { return !waiting.timed; });
    if (firstUntimed == m_group.end()) {
        return;
    }
    // A group of very many is released early and then begins without its timed sentence.
    const std::size_t from = firstUntimed == m_group.begin() ? firstUntimed->line : std::prev(firstUntimed)->line;
    const auto span = static_cast<double>(time - *m_time);
    const auto lines = static_cast<double>(line - from);
    for (auto waiting = firstUntimed; waiting != m_group.end(); ++waiting) {
        if (!waiting->timed) {
            const double part = static_cast<double>(waiting->line - from) / lines;
            waiting->time = *m_time + static_cast<long long>(part * span);
        }
    }
    std::stable_sort(m_group.begin(), m_group.end(),
                     [](const Waiting& a, const Waiting& b) { return a.time < b.time; });
}

void NmeaLog::releaseGroup()
{
    for (const Waiting& waiting : m_group) {
        if (!waiting.fix.empty()) {
            m_ready.push_back({static_cast<unsigned long long>(waiting.time), waiting.fix});
            m_given = true;
        }
    }
    m_group.clear();
}

// Says what is missing, and what helps.
void NmeaLog::requireFix() const
{
    if (m_given) {
        return;
    }
    const std::string input = "nmea: " + inputName(m_options.file);
    if (std::any_of(m_held.begin(), m_held.end(), [](const Entry& entry) { return entry.message.timeOfDay; })) {
        throw std::runtime_error(input + " tells no date: name it with --date");
    }
    if (!m_held.empty() || !m_group.empty()) {
        throw std::runtime_error(input + " tells no time" + ArrivalHelps);
    }
    if (m_binary > 0 && !m_time) {
        throw std::runtime_error(input + " holds binary data, but no sentence that tells a position or heading: let " +
                                 "gpsd read the receiver, and record it with recstation gpsd");
    }
    const std::string counts =
        " (" + std::to_string(m_skipped) + " lines skipped, " + std::to_string(m_bad.count()) + " bad)";
    if (!m_hasFix) {
        throw std::runtime_error(input + " tells no position: its receiver has no fix" + counts);
    }
    throw std::runtime_error(input + (m_time ? " tells no position, speed or heading" : " tells no time and position") +
                             counts);
}

void NmeaLog::endInput()
{
    m_order.finish(m_bad);
    if (m_live && !m_held.empty()) {
        goByArrival();
    }
    if (const auto clock = std::exchange(m_ofClock, std::nullopt)) {
        goByClock(*clock);
    }
    if (m_time) {
        releaseGroup();
    }
    requireFix();
    if (m_binary > 0) {
        m_bad.say((m_binary == 1 ? "1 line holds" : std::to_string(m_binary) + " lines hold") +
                  " binary data, of which only sentences were used");
    }
    if (const auto day = m_clock.rolledBack()) {
        m_bad.say(m_options.fixWeekRollover
                      ? "the date " + dayText(*day) + " and others as old were set 1,024 weeks later"
                      : "there is the date " + dayText(*day) +
                            "; if the receiver lost 1,024 weeks, as GPS receivers do when their week counter rolls "
                            "over, record with --fix-week-rollover");
    }
    if (m_clock.midnights() > 0) {
        m_bad.say("midnight passed " + std::to_string(m_clock.midnights()) + " times without a date");
    }
}

}  // namespace RecStation
