// The options of the source "feed", and playing it: its order of times, bad lines, recorders switched on and off.
#include "feedsource.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <CLI/CLI.hpp>

#include <system/stopsignal.h>
#include <values/tree.h>
#include <vkbase/vkexception.h>

#include "clock.h"
#include "input/fields.h"
#include "input/optionchecks.h"
#include "input/timeorder.h"
#include "input/timetext.h"
#include "sources/feed/feedsource.h"

namespace RecStation {

namespace {

// A level map of a million channels fits.
constexpr std::size_t LongestLine = std::size_t{16} * 1024 * 1024;

// What is behind what a recording can hold would hold back all that comes later.
void requireRecordable(const FeedLine& line)
{
    const auto require = [](const char* key, unsigned long long us) {
        if (!isRecordable(static_cast<long long>(us))) {
            throw LineError("\"" + std::string(key) + "\" is behind the year 2500");
        }
    };
    require("at", line.at.us);
    if (const auto* change = std::get_if<FeedChange>(&line.action); change != nullptr && change->ownTime) {
        require("time", change->ownTime->us);
    }
}

constexpr auto FeedExamples = R"(
One JSON object per line, one change of a value per object, "at" in milliseconds (doc/feed.md has it all):
  {"at": 0, "path": "/LEVEL", "create": "number", "value": -30, "lower": -150, "upper": 50}
  {"at": 0, "record": "On"}
  {"at": 1500, "path": "/LEVEL", "set": -31.5}
A date and time do as well: "at": "2026-03-01T08:00:01.5Z".

Examples:
  recstation -o recordings feed changes.jsonl
  receiver-driver | recstation -o recordings feed)";

void addFeedOptions(CLI::App& command, FeedOptions& options)
{
    command.footer(FeedExamples);
    addInputFile(command, options.file, "File to read; - is the standard input")
        ->required(false)
        ->capture_default_str();
    addStart(command, options.startTime,
             "Recorded time of \"at\": 0 (default: that of the first line if \"at\" is one there, else the current "
             "time)")
        ->type_name("TIME");
    addStrict(command, options.strict);
    command.add_flag("--keep-at", options.keepAt,
                     "Record every plain value at its own \"at\", not at the \"time\" of the map before it");
}

}  // namespace

void MovedTimes::recordingBegins(unsigned long long atUs)
{
    m_start = atUs;
    m_before = 0;
    m_moved = false;
}

std::string MovedTimes::changed(const FeedLine& line)
{
    constexpr unsigned long long LeastUs = 999;  // records have milliseconds
    const auto* change = std::get_if<FeedChange>(&line.action);
    if (change == nullptr || m_moved) {
        return {};
    }
    const unsigned long long start = m_start.value_or(line.at.us);
    m_start = start;
    const auto own = change->cells ? change->ownTime : std::nullopt;
    if (!own) {
        ++m_before;
        return {};
    }
    m_moved = true;
    if (m_before == 0 || !isBeyond(start, own->us, LeastUs)) {
        return {};
    }
    const std::string changes = m_before == 1 ? "1 change" : std::to_string(m_before) + " changes";
    return changes + " in front of the first map with a \"time\" of its own (" + line.path.toStdString() +
           ") recorded " + spanText(own->us > start ? own->us - start : start - own->us) +
           (own->us > start ? " later" : " earlier") +
           " than made, because a recording starts at that map's time; --keep-at avoids it";
}

FeedSource::FeedSource(std::function<ByteInput()> open, unsigned long long startTime, const FeedOptions& options,
                       StationHooks host)
    : m_open(std::move(open)),
      m_startTime(startTime),
      m_options(options),
      m_host(std::move(host)),
      m_bad("feed", options.strict, m_host.report)
{
}

void FeedSource::prepare()
{
    m_lines = std::make_unique<LineReader>(m_open(), LongestLine);
}

std::optional<unsigned long long> FeedSource::nextTime()
{
    while (!m_pending) {
        // A line that the wish to stop cut short is none.
        if (!m_lines->next() || System::StopSignal::requested()) {
            endInput();
            return std::nullopt;
        }
        takeLine();
    }
    return m_pending->at.us;
}

void FeedSource::endInput()
{
    m_order.finish(m_bad);
    if (m_used == 0 && !System::StopSignal::requested()) {
        throw std::runtime_error("feed: " + inputName(m_options.file) + " holds no change (" +
                                 std::to_string(m_skipped) + " lines skipped, " + std::to_string(m_bad.count()) +
                                 " bad)");
    }
}

void FeedSource::takeLine()
{
    try {
        if (trimmed(m_lines->line()).empty()) {
            ++m_skipped;
        } else {
            accept(parseFeedLine(m_lines->line()));
        }
    } catch (const LineError& error) {
        m_bad.add(m_lines->number(), error.what());
    }
}

void FeedSource::accept(FeedLine line)
{
    constexpr double MicrosecondsPerMillisecond = 1000;
    const bool absolute = line.at.absolute;
    const unsigned long long told = line.at.us;
    if (!m_absolute && absolute && !m_options.startTime) {
        m_startTime = line.at.us;
    }
    makeTimesAbsolute(line, m_startTime);
    requireRecordable(line);
    if (line.at.us < m_lastAtUs) {
        const double last =
            (static_cast<double>(m_lastAtUs) - static_cast<double>(m_startTime)) / MicrosecondsPerMillisecond;
        throw LineError("\"at\" goes backwards: expected " +
                        (absolute ? utcText(m_lastAtUs) : QString::number(last, 'g', 15).toStdString()) + " or later");
    }
    noteForm(absolute);
    if (!absolute) {
        noteEpoch(told);
    }
    m_lastAtUs = line.at.us;
    m_pending = std::move(line);
}

// One of the two clocks is wrong more often than both are meant.
void FeedSource::noteForm(bool absolute)
{
    if (m_absolute.value_or(absolute) != absolute && !std::exchange(m_mixed, true)) {
        m_bad.say("line " + std::to_string(m_lines->number()) +
                  ": \"at\" is here a time and there a number; numbers count from " + utcText(m_startTime));
    }
    m_absolute = m_absolute.value_or(absolute);
}

// Milliseconds since 1970 are most likely no time that has passed since the start.
void FeedSource::noteEpoch(unsigned long long sinceStartUs)
{
    constexpr unsigned long long ThirtyYearsUs = 946'728'000'000'000;
    if (sinceStartUs > ThirtyYearsUs && !std::exchange(m_epochTold, true)) {
        m_bad.say("line " + std::to_string(m_lines->number()) + ": \"at\" is " + spanText(sinceStartUs) +
                  " behind the start, " + utcText(m_startTime) +
                  ": a number counts from there, and a time since 1970 is a text");
    }
}

// Every line is carried out by itself, so none waits for another.
std::optional<unsigned long long> FeedSource::unfinishedTime()
{
    m_order.finish(m_bad);
    return std::nullopt;
}

void FeedSource::step()
{
    FeedLine line = std::move(*m_pending);
    m_pending.reset();
    keepOrder(line);
    try {
        apply(line);
        ++m_used;
    } catch (const LineError& error) {
        m_bad.add(m_lines->number(), error.what());
    } catch (const VKException& error) {
        m_bad.add(m_lines->number(), error.what());
    }
}

// A map's own time may be earlier than the line's, but not than what the recorders were handed before.
void FeedSource::keepOrder(FeedLine& line)
{
    auto* change = std::get_if<FeedChange>(&line.action);
    const auto* record = std::get_if<FeedRecord>(&line.action);
    if (m_options.live && change != nullptr && change->ownTime) {
        change->ownTime->us = stationTimeUs();
    } else if (change != nullptr && change->ownTime) {
        const unsigned long long latest = m_order.take(change->ownTime->us, m_lines->number(), m_bad);
        m_handed = std::max({latest, m_handed, m_host.toldTime ? m_host.toldTime() : 0});
        change->ownTime->us = m_handed;
        m_ownTimeHolds = true;
    } else if (record != nullptr && !record->on) {
        m_ownTimeHolds = false;
    } else if (!m_ownTimeHolds) {
        m_handed = std::max(m_handed, line.at.us);
    }
}

void FeedSource::apply(const FeedLine& line)
{
    const auto* record = std::get_if<FeedRecord>(&line.action);
    if (record == nullptr) {
        applyFeedLine(*values::Tree::Instance(), line);
        if (std::holds_alternative<FeedCreate>(line.action)) {
            m_host.created(line.path);
        }
        tellMovedTimes(line);
    } else if (!m_host.switchRecorder(record->recorder, record->on)) {
        throw LineError("there is no recorder \"" + record->recorder.toStdString() + "\"");
    } else if (record->on) {
        m_movedTimes.recordingBegins(line.at.us);
    }
}

void FeedSource::tellMovedTimes(const FeedLine& line)
{
    if (m_options.keepAt || !m_host.recorded || !m_host.recorded(line.path)) {
        return;
    }
    if (const std::string moved = m_movedTimes.changed(line); !moved.empty()) {
        m_bad.say("line " + std::to_string(m_lines->number()) + ": " + moved);
    }
}

std::optional<unsigned long long> FeedSource::lastTime()
{
    if (m_options.file == "-") {
        return std::nullopt;
    }
    LineReader lines(m_open(), LongestLine);
    unsigned long long lastUs = m_startTime;
    while (lines.next()) {
        try {
            if (!trimmed(lines.line()).empty()) {
                FeedLine line = parseFeedLine(lines.line());
                makeTimesAbsolute(line, m_startTime);
                lastUs = std::max(lastUs, line.at.us);
            }
        } catch (const LineError&) {
            continue;  // told when it is played
        }
    }
    return lastUs;
}

std::unique_ptr<Source> makeFeedSource(const FeedOptions& options, StationHooks host)
{
    return std::make_unique<FeedSource>([file = options.file] { return openText(file); },
                                        options.startTime.value_or(wholeMillisecondUs()), options, std::move(host));
}

std::shared_ptr<OfferedSource> offerFeed()
{
    const auto make = [](FeedOptions options, const SourceRun& run) {
        options.keepAt = options.keepAt || !run.alone;  // with others, every change has its own time
        options.live = run.live;
        return makeFeedSource(options, run.hooks);
    };
    return std::make_shared<SourceWith<FeedOptions>>(
        SourceTraits{.name = "feed",
                     .description = "Changes as JSON Lines from a file or another program",
                     .turn = 5,
                     .switchesRecorders = true},
        addFeedOptions, make);
}

}  // namespace RecStation
