// The options of the source "nmea", and playing the fixes of its log, also those still held at a stop.
#include "sources/nmea/nmeasource.h"

#include <algorithm>
#include <utility>

#include <CLI/CLI.hpp>

#include "input/optionchecks.h"
#include "input/timetext.h"
#include "published/attachedvalue.h"
#include "published/positionvalues.h"
#include "sources/nmea/nmealog.h"
#include "sources/offeredsource.h"

namespace RecStation {

namespace {

class NmeaSource final : public Source {
public:
    NmeaSource(NmeaOptions options, InputReport report) : m_options(std::move(options)), m_report(std::move(report)) {}

    [[nodiscard]] QString name() const override { return QStringLiteral("nmea"); }
    void prepare() override
    {
        m_log = std::make_unique<NmeaLog>(m_options, m_report);
        m_values = std::make_unique<PositionValues>();
        if (!m_options.valuePath.isEmpty()) {
            const QString device = m_options.file == "-" ? QStringLiteral("NMEA input") : textBaseName(m_options.file);
            setDevice(m_options.valuePath, forFileNames(device), QStringLiteral("NMEA 0183"));
        }
    }
    [[nodiscard]] std::optional<unsigned long long> nextTime() override
    {
        if (!m_pending) {
            m_pending = m_log->next();
        }
        return m_pending ? std::optional(m_pending->time) : std::nullopt;
    }
    void step() override
    {
        m_values->show(m_pending->fix);
        m_pending.reset();
        ++m_shown;
    }
    [[nodiscard]] std::optional<unsigned long long> unfinishedTime() override
    {
        // What was not due yet lies ahead of the stop.
        if (!m_stopping && (m_pending || !m_log->waitsForInput())) {
            return std::nullopt;
        }
        m_stopping = true;
        m_pending = m_log->nextUnfinished();
        return m_pending ? std::optional(m_pending->time) : std::nullopt;
    }
    [[nodiscard]] std::optional<unsigned long long> lastTime() override
    {
        if (isStream(m_options.file) || m_options.arrival) {
            return std::nullopt;
        }
        NmeaOptions options = m_options;
        options.strict = false;
        NmeaLog log(options, [](const QString&) {});  // what is bad is told when it is played
        std::optional<unsigned long long> last;
        while (const auto fix = log.next()) {
            last = std::max(last.value_or(0), fix->time);
        }
        return last;
    }
    [[nodiscard]] SourceReport report() const override
    {
        if (m_log == nullptr) {
            return {};
        }
        return {m_shown, m_log->skipped(), m_log->bad(), true};
    }

private:
    NmeaOptions m_options;
    InputReport m_report;
    std::unique_ptr<NmeaLog> m_log;
    std::unique_ptr<PositionValues> m_values;
    std::optional<TimedFix> m_pending;  // read, not yet shown
    std::uint64_t m_shown = 0;
    bool m_stopping = false;
};

constexpr auto NmeaExample = R"(
Position, altitude, speed, heading, pitch and roll from GGA, GNS, GLL, RMC, VTG, HDT, THS, HDG and HDM (both with a
variation), XDR and PASHR of any talker. Other sentences are skipped. Times are those of the sentences, dates those of
RMC and ZDA; what arrives live without a date has the time of its arrival.

Examples:
  recstation -o recordings nmea drive.log
  recstation -o recordings nmea compass.log --date 2026-11-21
  recstation -o recordings nmea /dev/ttyUSB0 --arrival --variation -14.5
  recstation -o recordings sweep night.csv nmea drive.log --fix-week-rollover)";

void addNmeaOptions(CLI::App& command, NmeaOptions& options)
{
    command.footer(NmeaExample);
    addInputFile(command, options.file, "NMEA 0183 sentences; - is the standard input");
    const auto parseDay = [](const std::string& text) {
        const auto day = LogDateFormat("yyyy-MM-dd").parse(text);
        return day.value_or(-1) >= 0 ? day : std::nullopt;
    };
    addParsed(command, "--date", options.firstDay,
              "Day of the first time, as 2026-11-21; the dates in RMC and ZDA do not count", parseDay,
              "a day from 1970 on such as 2026-11-21")
        ->type_name("DATE");
    command.add_flag(
        "--arrival", options.arrival,
        "Times are those in front of the lines of a file, or at which they are read, whatever the sentences tell");
    command
        .add_option(
            "--variation", options.variationDeg,
            "Degrees from magnetic to true north, east positive, for HDM, and HDG that tells none (default: as in RMC)")
        ->type_name("DEG")
        ->transform(TerminalText::inUnit({"deg", "°"}, -180, 180));
    command.add_flag("--fix-week-rollover", options.fixWeekRollover,
                     "Add 1,024 weeks to dates that a receiver may have rolled back");
    addStrict(command, options.strict);
}

}  // namespace

std::unique_ptr<Source> makeNmeaSource(const NmeaOptions& options, InputReport report)
{
    return std::make_unique<NmeaSource>(options, std::move(report));
}

std::shared_ptr<OfferedSource> offerNmea()
{
    const auto make = [](NmeaOptions options, const SourceRun& run) {
        options.splitGapUs = run.splitGapUs;
        options.arrival = options.arrival || (run.live && !run.sourceTime);  // at once, not with the next second
        // Other sources name their devices themselves.
        options.valuePath = run.alone ? receiverOf(run.configuration).valuePath : QString();
        return makeNmeaSource(options, run.hooks.report);
    };
    return std::make_shared<SourceWith<NmeaOptions>>(
        SourceTraits{.name = "nmea",
                     .description = "Position, heading and attitude from NMEA 0183",
                     .turn = 4,  // after the bearings, whose heading is only the first
                     .tellsPositions = true},
        addNmeaOptions, make);
}

}  // namespace RecStation
