// The options of the source "bearings"; surveying a log first, then showing its rows at their times.
#include "sources/bearings/bearingssource.h"

#include <stdexcept>
#include <utility>

#include <CLI/CLI.hpp>

#include "clock.h"
#include "input/optionchecks.h"
#include "input/timetext.h"
#include "sources/bearings/bearinglog.h"
#include "sources/bearings/bearingsvalues.h"
#include "sources/offeredsource.h"

namespace RecStation {

namespace {

class BearingsSource final : public Source {
public:
    BearingsSource(BearingsOptions options, InputReport report)
        : m_options(std::move(options)), m_report(std::move(report))
    {
    }

    [[nodiscard]] QString name() const override { return QStringLiteral("bearings"); }
    void prepare() override
    {
        const LogInput input(m_options.file);
        const LogSurvey survey = this->survey(input);
        reportOddities(survey);
        m_lastTime = survey.lastTime;
        m_values =
            std::make_unique<BearingsValues>(survey, m_options.headingDeg, deviceName(survey), m_options.valuePath);
        m_log = std::make_unique<BearingLog>(m_options, input, nullptr);  // the bad rows have been reported
    }
    [[nodiscard]] std::optional<unsigned long long> nextTime() override
    {
        while (!m_pending) {
            const auto row = m_log->next();
            if (!row) {
                return std::nullopt;
            }
            m_pending = row->bearing;
            if (m_pending) {
                m_latest = notBefore(m_latest, m_pending->time, m_options.splitGapUs);
                m_pending->time = m_latest;
            }
        }
        return m_latest;
    }
    void step() override
    {
        if (m_options.live) {
            m_pending->time = stationTimeUs();
        }
        m_values->show(*m_pending);
        m_pending.reset();
        ++m_shown;
    }
    [[nodiscard]] std::optional<unsigned long long> lastTime() override
    {
        return m_options.file == "-" ? std::nullopt : std::optional(m_lastTime);
    }
    [[nodiscard]] QStringList spectra() const override { return {QStringLiteral("/DfSpectrum")}; }
    [[nodiscard]] SourceReport report() const override
    {
        if (m_log == nullptr) {
            return {};
        }
        return {m_shown, m_log->skipped(), m_log->bad(), true};
    }

private:
    [[nodiscard]] LogSurvey survey(const LogInput& input) const
    {
        // Strict is about the whole log, so that all bad lines are told.
        constexpr bool EndAtTheFirst = false;
        BadLines bad("bearings", EndAtTheFirst, m_report);
        LogSurvey survey = surveyLog(m_options, input, bad);
        bad.finish();
        if (m_options.strict && bad.count() > 0) {
            throw std::runtime_error("bearings: " + input.name() + " has " + std::to_string(bad.count()) +
                                     " bad lines, and --strict allows none");
        }
        if (m_options.strict && survey.order.rowsBack() > 0) {
            throw std::runtime_error("bearings: " + input.name() + ": " + survey.order.sentence() +
                                     "; --strict allows none");
        }
        return survey;
    }
    void reportOddities(const LogSurvey& survey) const
    {
        if (!survey.hasPosition && !m_options.noPosition && !m_options.positionElsewhere) {
            say("the log has no position: name its columns with --latitude-column and --longitude-column, if it has");
        }
        if (!survey.remark.empty()) {
            say(survey.remark);
        }
        if (survey.order.rowsBack() > 0) {
            say(survey.order.sentence() + "; sort the log, if its times are to stay");
        }
    }
    [[nodiscard]] QString deviceName(const LogSurvey& survey) const
    {
        if (survey.oneStation && !survey.first.station.empty()) {
            return QString::fromStdString(survey.first.station);
        }
        return m_options.file == "-" ? QStringLiteral("Bearings") : textBaseName(m_options.file);
    }
    void say(const std::string& sentence) const
    {
        m_report(QStringLiteral("bearings: ") + QString::fromStdString(sentence));
    }

    BearingsOptions m_options;
    InputReport m_report;
    std::unique_ptr<BearingLog> m_log;
    std::unique_ptr<BearingsValues> m_values;
    std::optional<LoggedBearing> m_pending;  // read, not yet shown
    unsigned long long m_latest = 0;         // when the latest is recorded
    unsigned long long m_lastTime = 0;
    std::uint64_t m_shown = 0;
};

constexpr auto BearingsExample = R"(
Columns are found by their names in the first line, upper and lower case alike. Every row with an azimuth becomes a
bearing on the channel of its frequency, with the row's own time; rows whose azimuth is empty, NA or NaN are skipped.

Example, for a log that begins with
  Date;Time;GID;Station;Gradosx;minx;segx;Northing;Gradosy;miny;segy;Easting;altitude;frec;channel;dial;Azimuth;species
  01/14/17;5:31;1;E1;4;38;24.2;4.640055556;75;32;50;-74.45277778;1942;150.015;A;1;163;Myadestes ralloides
with local times of Colombia and longitudes that are west without a sign:
  recstation -o recordings bearings telemetria.csv --date-format MM/dd/yy --utc-offset -05:00
    --latitude-column Gradosx,minx,segx --longitude-column Gradosy,miny,segy --west --frequency-column frec
A log without that line, and the lines of a KrakenSDR, which are known as such:
  recstation -o recordings bearings bare.csv --columns timestamp,frequency,azimuth,
  recstation -o recordings bearings kraken.csv)";

std::optional<char> parseSeparator(const std::string& text)
{
    if (text == "auto" || text == "tab") {
        return text == "tab" ? '\t' : BearingsOptions::GuessedSeparator;
    }
    return text.size() == 1 && text.find_first_of("\"\r\n") == std::string::npos ? std::optional(text.front())
                                                                                 : std::nullopt;
}

std::optional<LogDateFormat> parseDateFormat(const std::string& text)
{
    try {
        return LogDateFormat(text);
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
}

void addColumns(CLI::App& command, BearingsOptions& options)
{
    command
        .add_option("--columns", options.columns,
                    "The log has no line with names: those of its columns, in order; empty for one of no use")
        ->type_name("NAME,NAME,...");
    command.add_option("--timestamp-column", options.timestampColumn,
                       "Column of date and time in one, ISO 8601 or (milli)seconds since 1970 (default: timestamp, or "
                       "time, if there is no date apart)");
    command.add_option("--date-column", options.dateColumn, "Column of the date")->capture_default_str();
    command.add_option("--time-column", options.timeColumn, "Column of the time of day (5:31, 05:31:07.25)")
        ->capture_default_str();
    command.add_option("--station-column", options.stationColumn, "Column of the station (default: station, if any)");
    command
        .add_option("--latitude-column", options.latitudeColumns,
                    "Column of the latitude in degrees, or DEGREES,MINUTES,SECONDS (default: latitude, if any)")
        ->type_name("NAME[,NAME[,NAME]]");
    command
        .add_option("--longitude-column", options.longitudeColumns,
                    "Column of the longitude, in the same way (default: longitude, if any)")
        ->type_name("NAME[,NAME[,NAME]]");
    command.add_option("--altitude-column", options.altitudeColumn,
                       "Column of the altitude in metres (default: altitude, if any)");
    command.add_option("--frequency-column", options.frequencyColumn, "Column of the frequency")->capture_default_str();
    command.add_option("--azimuth-column", options.azimuthColumn, "Column of the azimuth, 0 to 360 degrees")
        ->capture_default_str();
    command.add_option("--elevation-column", options.elevationColumn,
                       "Column of the elevation, -90 to 90 degrees (default: elevation, if any; \"\" is none)");
    command.add_option("--level-column", options.levelColumn, "Column of the level in dB (default: level, if any)");
    command.add_option("--quality-column", options.qualityColumn,
                       "Column of the quality, 0 to 100 (default: quality, if any)");
    command.add_option("--heading-column", options.headingColumn,
                       "Column of the true heading of azimuth 0 in degrees, where azimuths are relative to it");
}

void addBearingsOptions(CLI::App& command, BearingsOptions& options)
{
    command.footer(BearingsExample);
    addInputFile(command, options.file, "Log as CSV; - is the standard input");
    addParsed(command, "--separator", options.separator, "A character, tab or auto (one of ; , and tab)",
              parseSeparator, "one character, tab or auto")
        ->default_str("auto");
    command.add_flag("--decimal-comma", options.decimalComma, "Numbers have a decimal comma: 433,92");
    addColumns(command, options);
    addParsed(command, "--date-format", options.dateFormat, "d, dd, M, MM, yy (1970 to 2069) and yyyy, as in MM/dd/yy",
              parseDateFormat, "one day, month and year, as in MM/dd/yy")
        ->default_str(options.dateFormat.text());
    addUtcOffset(command, options.utcOffsetUs, "How far the log's times are ahead of UTC, as -05:00");
    command.add_option("--station", options.station, "Only the bearings of this station");
    command.add_flag("--no-position", options.noPosition,
                     "Leave positions and altitudes out, because nmea or another source tells them");
    command.add_flag("--south", options.south, "Latitudes have no sign and are south");
    command.add_flag("--west", options.west, "Longitudes have no sign and are west");
    command
        .add_option_function<std::string>(
            "--frequency-unit",
            [&options](const std::string& unit) {
                options.hzPerUnit = TerminalText::parseQuantity('1' + unit, {"Hz"});
            },
            "Hz, kHz, MHz or GHz (default: as the column's name tells, otherwise MHz)")
        ->check(TerminalText::oneOf({"Hz", "kHz", "MHz", "GHz"}));
    command
        .add_option("--heading", options.headingDeg,
                    "True heading of azimuth 0 in degrees, such as a compass's declination (default: as the log tells, "
                    "otherwise 0)")
        ->transform(TerminalText::inUnit({"deg", "°"}, -360, 360));
    command.add_flag_callback(
        "--mirror", [&options] { options.mirror = Mirror::Yes; },
        "A KrakenSDR's angles are counter-clockwise (default: as its 360 values tell)");
    command.add_flag_callback(
        "--no-mirror", [&options] { options.mirror = Mirror::No; }, "They are clockwise: take them as they are");
    addStrict(command, options.strict, "Record nothing when a row is bad");
}

}  // namespace

std::unique_ptr<Source> makeBearingsSource(const BearingsOptions& options, InputReport report)
{
    return std::make_unique<BearingsSource>(options, std::move(report));
}

std::shared_ptr<OfferedSource> offerBearings()
{
    const auto make = [](BearingsOptions options, const SourceRun& run) {
        options.splitGapUs = run.splitGapUs;
        options.live = run.live;
        options.valuePath = finderOf(run.configuration).valuePath;
        options.positionElsewhere = run.positionElsewhere;
        return makeBearingsSource(options, run.hooks.report);
    };
    return std::make_shared<SourceWith<BearingsOptions>>(SourceTraits{.name = "bearings",
                                                                      .description = "A direction finder's log as CSV",
                                                                      .turn = 3,
                                                                      .findsDirections = true,
                                                                      .readsAhead = true},
                                                         addBearingsOptions, make);
}

}  // namespace RecStation
