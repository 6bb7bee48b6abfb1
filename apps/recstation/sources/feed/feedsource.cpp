// Playing a feed: its order of times, bad lines, recorders switched on and off.
#include "feedsource.h"

#include <algorithm>
#include <utility>

#include <QDateTime>

#include <system/stopsignal.h>
#include <values/tree.h>
#include <vkbase/vkexception.h>

#include "feedapply.h"

namespace RecStation {

namespace {

// A level map of a million channels fits.
constexpr std::size_t LongestLine = std::size_t{16} * 1024 * 1024;

bool isBlank(const std::string& line)
{
    return line.find_first_not_of(" \t\r") == std::string::npos;
}

}  // namespace

FeedSource::FeedSource(std::function<ByteInput()> open, unsigned long long startTime, const FeedOptions& options,
                       StationHooks host)
    : m_open(std::move(open)),
      m_startTime(startTime),
      m_options(options),
      m_host(std::move(host)),
      m_bad("feed", options.strict, m_host.report),
      m_order("feed", options.strict)
{
}

QString FeedSource::name() const
{
    return QStringLiteral("feed");
}

void FeedSource::prepare()
{
    m_lines = std::make_unique<LineReader>(m_open(), LongestLine);
}

std::optional<unsigned long long> FeedSource::nextTime()
{
    while (!m_pending) {
        const LineReader::Result result = m_lines->next();
        // A line that the wish to stop cut short is none.
        if (result == LineReader::Result::End || System::StopSignal::requested()) {
            m_bad.finish();
            m_order.finish(m_bad);
            return std::nullopt;
        }
        take(result);
    }
    return m_startTime + m_pending->atUs;
}

void FeedSource::take(LineReader::Result result)
{
    if (result == LineReader::Result::TooLong) {
        m_bad.add(m_lines->number(), "it is longer than 16 MiB");
    } else if (result == LineReader::Result::Damaged) {
        m_bad.add(m_lines->number(), m_lines->problem());
    } else if (isBlank(m_lines->line())) {
        ++m_skipped;
    } else {
        try {
            accept(parseFeedLine(m_lines->line()));
        } catch (const LineError& error) {
            m_bad.add(m_lines->number(), error.what());
        }
    }
}

void FeedSource::accept(FeedLine line)
{
    if (line.atUs < m_lastAtUs) {
        constexpr double MicrosecondsPerMillisecond = 1000;
        const double last = static_cast<double>(m_lastAtUs) / MicrosecondsPerMillisecond;
        throw LineError("\"at\" goes backwards: expected " + QString::number(last, 'g', 15).toStdString() +
                        " or later");
    }
    m_lastAtUs = line.atUs;
    m_pending = std::move(line);
}

// Every line is carried out by itself, so none waits for another.
std::optional<unsigned long long> FeedSource::unfinishedTime()
{
    m_bad.finish();
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
    if (change != nullptr && change->ownTimeUs) {
        const unsigned long long latest = m_order.take(m_startTime + *change->ownTimeUs, m_lines->number());
        m_handed = std::max({latest, m_handed, m_host.toldTime ? m_host.toldTime() : 0});
        change->ownTimeUs = m_handed - m_startTime;
        m_ownTimeHolds = true;
    } else if (record != nullptr && !record->on) {
        m_ownTimeHolds = false;
    } else if (!m_ownTimeHolds) {
        m_handed = std::max(m_handed, m_startTime + line.atUs);
    }
}

void FeedSource::apply(const FeedLine& line)
{
    const auto* record = std::get_if<FeedRecord>(&line.action);
    if (record == nullptr) {
        applyFeedLine(*values::Tree::Instance(), line, m_startTime);
        if (std::holds_alternative<FeedCreate>(line.action)) {
            m_host.created(line.path);
        }
        tellMovedTimes(line);
    } else if (!m_host.switchRecorder(record->recorder, record->on)) {
        throw LineError("there is no recorder \"" + record->recorder.toStdString() + "\"");
    } else if (record->on) {
        m_movedTimes.recordingBegins(line.atUs);
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
    unsigned long long lastUs = 0;
    for (auto result = lines.next(); result != LineReader::Result::End; result = lines.next()) {
        try {
            if (result == LineReader::Result::Line && !isBlank(lines.line())) {
                lastUs = std::max(lastUs, parseFeedLine(lines.line()).atUs);
            }
        } catch (const LineError&) {
            continue;  // told when it is played
        }
    }
    return m_startTime + lastUs;
}

std::unique_ptr<Source> makeFeedSource(const FeedOptions& options, StationHooks host)
{
    constexpr unsigned long long MicrosecondsPerMillisecond = 1000;
    const auto now = static_cast<unsigned long long>(QDateTime::currentMSecsSinceEpoch()) * MicrosecondsPerMillisecond;
    return std::make_unique<FeedSource>([file = options.file] { return openText(file); },
                                        options.startTime.value_or(now), options, std::move(host));
}

}  // namespace RecStation
