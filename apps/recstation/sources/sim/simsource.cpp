// The options of the source "sim" and its timetable: sweeps, levels, bearings, the vehicle, and the operator's tuning.
#include "simsource.h"

#include <algorithm>
#include <utility>

#include <CLI/CLI.hpp>

#include "input/fields.h"
#include "input/optionchecks.h"
#include "scenery.h"
#include "simvalues.h"
#include "sources/offeredsource.h"

namespace RecStation {

namespace {

constexpr unsigned long long MicrosecondsPerMillisecond = 1000;

constexpr unsigned long long SweepMs = 250;
constexpr unsigned long long IfMs = 100;
constexpr unsigned long long LevelMs = 100;
constexpr unsigned long long BearingMs = 200;
constexpr unsigned long long VehicleMs = 500;

constexpr std::int32_t SpanKey100kHz = 1;
constexpr std::int32_t SpanKey500kHz = 3;

// A measured value has the decimals that an instrument would show.
double tenths(double value)
{
    constexpr double PerUnit = 10;
    return Exact::rounded(value, PerUnit);
}

QString valuePath(const Instance& instance, const char* path)
{
    return instance.valuePath + QLatin1Char('/') + QLatin1String(path);
}

QString absolute(const char* path)
{
    return QString::fromLatin1(path);
}

class SimSource final : public Source {
public:
    SimSource(const SimOptions& options, std::vector<Instance> instances)
        : m_options(options),
          m_instances(std::move(instances)),
          m_durationMs(static_cast<unsigned long long>(options.durationSeconds * 1000)),
          m_scenery(options.seed),
          m_bandCells(Sim::BandChannels),
          m_ifCells(Sim::IfChannels)
    {
        // At the same time the operator acts first and the vehicle moves before anything is measured.
        m_activities = {
            {0, 0, &SimSource::operate},
            {0, VehicleMs, &SimSource::moveVehicle},
            {SweepMs, SweepMs, &SimSource::sweepBand},
            {IfMs, IfMs, &SimSource::sweepAround},
            {LevelMs, LevelMs, &SimSource::measureLevel},
            {BearingMs, BearingMs, &SimSource::findDirections},
        };
    }

    [[nodiscard]] QString name() const override { return QStringLiteral("sim"); }
    [[nodiscard]] QStringList spectra() const override
    {
        QStringList paths = {absolute("/IfMapping"), absolute("/DfSpectrum")};
        for (const Instance& instance : m_instances) {
            paths += valuePath(instance, "Scn/RfSpectrum");
        }
        return paths;
    }
    void prepare() override
    {
        int receivers = 0;
        int finders = 0;
        for (const Instance& instance : m_instances) {
            Sim::createDevice(instance, instance.directionFinding ? ++finders : ++receivers);
            if (auto* spectrum = Sim::findValue<Sim::LevelMap>(valuePath(instance, "Scn/RfSpectrum"))) {
                spectrum->SetChannelRange(
                    values::ChannelRange::Even(Sim::BandStartHz, Sim::BandStepHz, Sim::BandChannels));
            }
        }
        if (auto* bearings = Sim::findValue<Sim::BearingMap>(absolute("/DfSpectrum"))) {
            bearings->SetChannelRange(
                values::ChannelRange::Even(Sim::FinderStartHz, Sim::BandStepHz, Sim::FinderChannels));
        }
    }
    [[nodiscard]] std::optional<unsigned long long> nextTime() override
    {
        const auto next = std::min_element(m_activities.begin(), m_activities.end(),
                                           [](const Activity& a, const Activity& b) { return a.nextMs < b.nextMs; });
        if (next->nextMs > m_durationMs) {
            return std::nullopt;
        }
        return m_options.startTime + next->nextMs * MicrosecondsPerMillisecond;
    }
    void step() override
    {
        m_nowMs = (nextTime().value_or(m_options.startTime) - m_options.startTime) / MicrosecondsPerMillisecond;
        m_scenery.advanceTo(m_nowMs);
        for (Activity& activity : m_activities) {
            if (activity.nextMs == m_nowMs) {
                activity.nextMs += activity.periodMs;
                (this->*activity.act)();
            }
        }
        ++m_report.used;
    }
    [[nodiscard]] std::optional<unsigned long long> lastTime() override
    {
        return m_options.startTime + m_durationMs * 1000;
    }
    [[nodiscard]] SourceReport report() const override { return m_report; }

private:
    // Something that the station does again and again.
    struct Activity {
        unsigned long long nextMs;  // since the start
        unsigned long long periodMs;
        void (SimSource::*act)();
    };

    void sweepBand()
    {
        if (m_monitoring) {
            return;
        }
        for (const Instance& instance : m_instances) {
            auto* spectrum = Sim::findValue<Sim::LevelMap>(valuePath(instance, "Scn/RfSpectrum"));
            if (!instance.directionFinding && spectrum != nullptr && spectrum->size() == m_bandCells.size()) {
                m_scenery.sweepBand(m_bandCells);
                spectrum->SetCells(0, m_bandCells, nowUs());
            }
        }
    }
    void sweepAround()
    {
        auto* spectrum = Sim::findValue<Sim::LevelMap>(absolute("/IfMapping"));
        auto* span = Sim::findValue<values::ValueSelection>(absolute("/IFSPAN"));
        if (!m_monitoring || spectrum == nullptr || span == nullptr) {
            return;
        }
        const double spanHz = span->GetCurrentValue();
        const double stepHz = spanHz / static_cast<double>(Sim::IfChannels - 1);
        spectrum->SetChannelRange(
            values::ChannelRange::Even(tuned().frequencyHz - spanHz / 2, stepHz, Sim::IfChannels));
        m_scenery.sweepAround(tuned(), spanHz, m_ifCells);
        spectrum->SetCells(0, m_ifCells, nowUs());
    }
    void measureLevel()
    {
        constexpr double SquelchDb = -95;
        if (!m_monitoring) {
            return;
        }
        const double noise = Sim::NoiseFloorDb + m_scenery.random().bell();
        const double level = tuned().on ? std::max(noise, m_scenery.levelDb(tuned())) : noise;
        Sim::setNumber(absolute("/LEVEL"), tenths(level));
        Sim::setNumber(absolute("/FIELDSTRENGTH"), tenths(level + Sim::FieldStrengthFactorDb));
        for (const Instance& instance : m_instances) {
            if (!instance.directionFinding) {
                Sim::setValue<values::Value<bool>>(valuePath(instance, "Mon/SquelchState"), level > SquelchDb);
            }
        }
    }
    void findDirections()
    {
        constexpr double SpreadDeg = 1.5;
        constexpr double BestQuality = 95;
        auto* bearings = Sim::findValue<Sim::BearingMap>(absolute("/DfSpectrum"));
        if (bearings == nullptr || bearings->size() != Sim::FinderChannels) {
            return;
        }
        std::vector<values::Bearing> cells(Sim::FinderChannels);
        const values::Bearing* strongest = nullptr;
        for (const Sim::Transmitter& transmitter : m_scenery.transmitters()) {
            const double channel = (transmitter.frequencyHz - Sim::FinderStartHz) / Sim::BandStepHz;
            if (!transmitter.on || channel < 0 || channel >= static_cast<double>(cells.size())) {
                continue;
            }
            values::Bearing& cell = cells[static_cast<std::size_t>(channel)];
            const double error = SpreadDeg * m_scenery.random().bell();
            cell.azimuthDeg = tenths(Exact::wrapDeg(m_scenery.bearingDeg(transmitter) + error));
            cell.elevationDeg = tenths(m_scenery.random().uniform(-2, 6));
            cell.levelDb = tenths(m_scenery.levelDb(transmitter));
            cell.quality = tenths(BestQuality - std::min(BestQuality, 10 * std::max(error, -error)));
            strongest = strongest == nullptr || cell.levelDb > strongest->levelDb ? &cell : strongest;
        }
        bearings->SetCells(0, cells, nowUs());
        if (strongest != nullptr) {
            Sim::setNumber(absolute("/AZIMUTH"), strongest->azimuthDeg);
            Sim::setNumber(absolute("/ELEVATION"), strongest->elevationDeg);
            Sim::setNumber(absolute("/QUALITY"), strongest->quality);
        }
    }
    void moveVehicle()
    {
        constexpr double BaseAltitude = 310;
        constexpr double DegreeSteps = 1e7;
        constexpr double CompassSpreadDeg = 0.3;
        m_scenery.drive(static_cast<double>(VehicleMs) / 1000);
        const Sim::Vehicle& vehicle = m_scenery.vehicle();
        Sim::setNumber(absolute("/LOCATIONLATITUDE"), Exact::rounded(vehicle.latitude(), DegreeSteps));
        Sim::setNumber(absolute("/LOCATIONLONGITUDE"), Exact::rounded(vehicle.longitude(), DegreeSteps));
        Sim::setNumber(absolute("/TRUEHEADING"),
                       tenths(Exact::wrapDeg(vehicle.headingDeg() + CompassSpreadDeg * m_scenery.random().bell())));
        Sim::setNumber(absolute("/VELOCITY"), tenths(vehicle.speed()));
        Sim::setNumber(absolute("/ALTITUDE"), tenths(BaseAltitude + vehicle.place().north / 100));
        Sim::setNumber(absolute("/PITCH"), tenths(m_scenery.random().uniform(-2, 2)));
        Sim::setNumber(absolute("/ROLL"), tenths(m_scenery.random().uniform(-3, 3)));
    }

    // Scanning and monitoring take turns; while monitoring, the operator tunes to one transmitter after the other.
    void operate()
    {
        constexpr double ShortestScanMs = 15'000;
        constexpr double LongestScanMs = 25'000;
        constexpr double ShortestTuningMs = 3'000;
        constexpr double LongestTuningMs = 6'000;
        constexpr std::uint32_t MostTunings = 4;
        const bool first = m_nowMs == 0;
        if (m_tuningsLeft > 0) {
            --m_tuningsLeft;
            tune();
        } else if (m_monitoring || first) {
            startScan();
        } else {
            m_tuningsLeft = m_scenery.random().below(MostTunings);
            startMonitoring();
            tune();
        }
        const double pause = m_monitoring ? m_scenery.random().uniform(ShortestTuningMs, LongestTuningMs)
                                          : m_scenery.random().uniform(ShortestScanMs, LongestScanMs);
        m_activities.front().nextMs = m_nowMs + static_cast<unsigned long long>(pause);
    }

    void startScan()
    {
        m_monitoring = false;
        // The recorder moves the scan range to the IF span when it starts while a frequency is monitored.
        setOnReceivers("Scn/StartFreq", Sim::BandStartHz);
        setOnReceivers("Scn/StopFreq", Sim::BandStopHz);
        chooseOnReceivers("Scn/SEARCHSCANMODE", 1);
        chooseOnReceivers("Gen/DRVCOMMANDS", Sim::ScanKey);
        Sim::chooseKey(absolute("/OPERATEMODE"), 0);
    }
    void startMonitoring()
    {
        m_monitoring = true;
        chooseOnReceivers("Scn/SEARCHSCANMODE", 0);
        chooseOnReceivers("Gen/DRVCOMMANDS", Sim::MonitorKey);
        Sim::chooseKey(absolute("/OPERATEMODE"), 1);
    }
    void tune()
    {
        constexpr double WideHz = 50e3;
        constexpr double StrongDb = -70;
        constexpr double AttenuationDb = 10;
        const auto count = static_cast<std::uint32_t>(m_scenery.transmitters().size());
        m_tuned = m_scenery.random().below(count);
        const bool wide = tuned().widthHz > WideHz;
        Sim::setNumber(absolute("/FREQUENCY"), tuned().frequencyHz);
        Sim::chooseKey(absolute("/IFSPAN"), wide ? SpanKey500kHz : SpanKey100kHz);
        Sim::setNumber(absolute("/DFBANDWIDTH"), tuned().widthHz);
        Sim::setNumber(absolute("/RFAZIMUTHRULER"), tenths(m_scenery.bearingDeg(tuned())));
        setOnReceivers("Mon/BANDWIDTH", tuned().widthHz);
        chooseOnReceivers("Mon/DEMODULATION", wide ? 2 : 0);
        setOnReceivers("Mon/Attenuation", m_scenery.levelDb(tuned()) > StrongDb ? AttenuationDb : 0);
    }
    void setOnReceivers(const char* path, double value)
    {
        for (const Instance& instance : m_instances) {
            if (!instance.directionFinding) {
                Sim::setNumber(valuePath(instance, path), value);
            }
        }
    }
    void chooseOnReceivers(const char* path, std::int32_t key)
    {
        for (const Instance& instance : m_instances) {
            if (!instance.directionFinding) {
                Sim::chooseKey(valuePath(instance, path), key);
            }
        }
    }
    [[nodiscard]] unsigned long long nowUs() const
    {
        return m_options.startTime + m_nowMs * MicrosecondsPerMillisecond;
    }
    [[nodiscard]] const Sim::Transmitter& tuned() const { return m_scenery.transmitters()[m_tuned]; }

    SimOptions m_options;
    std::vector<Instance> m_instances;
    unsigned long long m_durationMs;
    Sim::Scenery m_scenery;
    std::vector<Activity> m_activities;
    unsigned long long m_nowMs = 0;  // since the start
    bool m_monitoring = false;
    std::size_t m_tuned = 0;  // transmitter that the receivers are tuned to
    std::uint32_t m_tuningsLeft = 0;
    std::vector<float> m_bandCells;
    std::vector<float> m_ifCells;
    SourceReport m_report;
};

constexpr auto SimExamples = R"(
A receiver that scans a band and monitors single frequencies, and a direction finder in a moving vehicle.
The same seed, duration and start give the same recordings on every machine.

Examples:
  recstation -o recordings sim
  recstation -o recordings sim --seed 7 --duration 10min --start 2026-03-01T08:00:00Z)";

// The parser would take a negative number as a huge one, and one that is too large as the largest.
bool isSeed(const std::string& text)
{
    return parseNumber<std::uint64_t>(text).has_value();
}

void addSimOptions(CLI::App& command, SimOptions& options)
{
    command.footer(SimExamples);
    command.add_option("--seed", options.seed, "Number that all chance follows from")
        ->capture_default_str()
        ->check(TerminalText::acceptedIf(isSeed, "a whole number from 0 to 18446744073709551615"));
    constexpr double Longest = 1e9;
    command.add_option("--duration", options.durationSeconds, "Recorded time, such as 90s, 3min, 1h (default: 3min)")
        ->type_name("TIME")
        ->transform(TerminalText::inSeconds(0, Longest));
    addStart(command, options.startTime, "Recorded time of the first change (default: 2026-01-01T00:00:00Z)")
        ->type_name("TIME");
}

}  // namespace

std::unique_ptr<Source> makeSimSource(const SimOptions& options, const std::vector<Instance>& instances)
{
    return std::make_unique<SimSource>(options, instances);
}

std::shared_ptr<OfferedSource> offerSim()
{
    const auto make = [](SimOptions options, const SourceRun& run) {
        return makeSimSource(options, run.configuration.instances);
    };
    return std::make_shared<SourceWith<SimOptions>>(
        SourceTraits{.name = "sim",
                     .description = "Simulated receiver and direction finder",
                     .turn = 0,
                     .receives = true,
                     .findsDirections = true},
        addSimOptions, make);
}

}  // namespace RecStation
