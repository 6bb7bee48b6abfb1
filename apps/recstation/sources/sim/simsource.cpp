// The timetable of the simulation: sweeps, levels, bearings, the vehicle, and the operator's tuning.
#include "simsource.h"

#include <algorithm>
#include <utility>

#include "simvalues.h"

namespace recstation {

namespace {

constexpr unsigned long long microsecondsPerMillisecond = 1000;

constexpr unsigned long long sweepMs = 250;
constexpr unsigned long long ifMs = 100;
constexpr unsigned long long levelMs = 100;
constexpr unsigned long long bearingMs = 200;
constexpr unsigned long long vehicleMs = 500;

constexpr std::int32_t spanKey100kHz = 1;
constexpr std::int32_t spanKey500kHz = 3;

// A measured value has the decimals that an instrument would show.
double tenths(double value)
{
    constexpr double perUnit = 10;
    return exact::rounded(value, perUnit);
}

QString valuePath(const Instance& instance, const char* path)
{
    return instance.valuePath + QLatin1Char('/') + QLatin1String(path);
}

QString absolute(const char* path)
{
    return QString::fromLatin1(path);
}

}  // namespace

SimSource::SimSource(const SimOptions& options, std::vector<Instance> instances)
    : m_options(options),
      m_instances(std::move(instances)),
      m_durationMs(static_cast<unsigned long long>(options.durationSeconds * 1000)),
      m_scenery(options.seed),
      m_bandCells(sim::bandChannels),
      m_ifCells(sim::ifChannels)
{
    // At the same time the operator acts first and the vehicle moves before anything is measured.
    m_activities = {
        {0, 0, &SimSource::operate},
        {0, vehicleMs, &SimSource::moveVehicle},
        {sweepMs, sweepMs, &SimSource::sweepBand},
        {ifMs, ifMs, &SimSource::sweepAround},
        {levelMs, levelMs, &SimSource::measureLevel},
        {bearingMs, bearingMs, &SimSource::findDirections},
    };
}

QString SimSource::name() const
{
    return QStringLiteral("sim");
}

QStringList SimSource::spectra() const
{
    QStringList paths = {absolute("/IfMapping"), absolute("/DfSpectrum")};
    for (const Instance& instance : m_instances) {
        paths += valuePath(instance, "Scn/RfSpectrum");
    }
    return paths;
}

void SimSource::prepare()
{
    int receivers = 0;
    int finders = 0;
    for (const Instance& instance : m_instances) {
        sim::createDevice(instance, instance.directionFinding ? ++finders : ++receivers);
        if (auto* spectrum = sim::findValue<sim::LevelMap>(valuePath(instance, "Scn/RfSpectrum"))) {
            spectrum->SetChannelRange(values::ChannelRange::Even(sim::bandStartHz, sim::bandStepHz, sim::bandChannels));
        }
    }
    if (auto* bearings = sim::findValue<sim::BearingMap>(absolute("/DfSpectrum"))) {
        bearings->SetChannelRange(values::ChannelRange::Even(sim::finderStartHz, sim::bandStepHz, sim::finderChannels));
    }
}

std::optional<unsigned long long> SimSource::nextTime()
{
    const auto next = std::min_element(m_activities.begin(), m_activities.end(),
                                       [](const Activity& a, const Activity& b) { return a.nextMs < b.nextMs; });
    if (next->nextMs > m_durationMs) {
        return std::nullopt;
    }
    return m_options.startTime + next->nextMs * microsecondsPerMillisecond;
}

void SimSource::step()
{
    m_nowMs = (nextTime().value_or(m_options.startTime) - m_options.startTime) / microsecondsPerMillisecond;
    m_scenery.advanceTo(m_nowMs);
    for (Activity& activity : m_activities) {
        if (activity.nextMs == m_nowMs) {
            activity.nextMs += activity.periodMs;
            (this->*activity.act)();
        }
    }
    ++m_report.used;
}

unsigned long long SimSource::nowUs() const
{
    return m_options.startTime + m_nowMs * microsecondsPerMillisecond;
}

void SimSource::setOnReceivers(const char* path, double value)
{
    for (const Instance& instance : m_instances) {
        if (!instance.directionFinding) {
            sim::setNumber(valuePath(instance, path), value);
        }
    }
}

void SimSource::chooseOnReceivers(const char* path, std::int32_t key)
{
    for (const Instance& instance : m_instances) {
        if (!instance.directionFinding) {
            sim::chooseKey(valuePath(instance, path), key);
        }
    }
}

void SimSource::sweepBand()
{
    if (m_monitoring) {
        return;
    }
    for (const Instance& instance : m_instances) {
        auto* spectrum = sim::findValue<sim::LevelMap>(valuePath(instance, "Scn/RfSpectrum"));
        if (!instance.directionFinding && spectrum != nullptr && spectrum->size() == m_bandCells.size()) {
            m_scenery.sweepBand(m_bandCells);
            spectrum->SetCells(0, m_bandCells, nowUs());
        }
    }
}

void SimSource::sweepAround()
{
    auto* spectrum = sim::findValue<sim::LevelMap>(absolute("/IfMapping"));
    auto* span = sim::findValue<values::ValueSelection>(absolute("/IFSPAN"));
    if (!m_monitoring || spectrum == nullptr || span == nullptr) {
        return;
    }
    const double spanHz = span->GetCurrentValue();
    const double stepHz = spanHz / static_cast<double>(sim::ifChannels - 1);
    spectrum->SetChannelRange(values::ChannelRange::Even(tuned().frequencyHz - spanHz / 2, stepHz, sim::ifChannels));
    m_scenery.sweepAround(tuned(), spanHz, m_ifCells);
    spectrum->SetCells(0, m_ifCells, nowUs());
}

void SimSource::measureLevel()
{
    constexpr double squelchDb = -95;
    if (!m_monitoring) {
        return;
    }
    const double noise = sim::noiseFloorDb + m_scenery.random().bell();
    const double level = tuned().on ? std::max(noise, m_scenery.levelDb(tuned())) : noise;
    sim::setNumber(absolute("/LEVEL"), tenths(level));
    sim::setNumber(absolute("/FIELDSTRENGTH"), tenths(level + sim::fieldStrengthFactorDb));
    for (const Instance& instance : m_instances) {
        if (!instance.directionFinding) {
            sim::setFlag(valuePath(instance, "Mon/SquelchState"), level > squelchDb);
        }
    }
}

void SimSource::findDirections()
{
    constexpr double spreadDeg = 1.5;
    constexpr double bestQuality = 95;
    auto* bearings = sim::findValue<sim::BearingMap>(absolute("/DfSpectrum"));
    if (bearings == nullptr || bearings->size() != sim::finderChannels) {
        return;
    }
    std::vector<values::Bearing> cells(sim::finderChannels);
    const values::Bearing* strongest = nullptr;
    for (const sim::Transmitter& transmitter : m_scenery.transmitters()) {
        const double channel = (transmitter.frequencyHz - sim::finderStartHz) / sim::bandStepHz;
        if (!transmitter.on || channel < 0 || channel >= static_cast<double>(cells.size())) {
            continue;
        }
        values::Bearing& cell = cells[static_cast<std::size_t>(channel)];
        const double error = spreadDeg * m_scenery.random().bell();
        cell.azimuthDeg = tenths(exact::wrapDeg(m_scenery.bearingDeg(transmitter) + error));
        cell.elevationDeg = tenths(m_scenery.random().uniform(-2, 6));
        cell.levelDb = tenths(m_scenery.levelDb(transmitter));
        cell.quality = tenths(bestQuality - std::min(bestQuality, 10 * std::max(error, -error)));
        strongest = strongest == nullptr || cell.levelDb > strongest->levelDb ? &cell : strongest;
    }
    bearings->SetCells(0, cells, nowUs());
    if (strongest != nullptr) {
        sim::setNumber(absolute("/AZIMUTH"), strongest->azimuthDeg);
        sim::setNumber(absolute("/ELEVATION"), strongest->elevationDeg);
        sim::setNumber(absolute("/QUALITY"), strongest->quality);
    }
}

void SimSource::moveVehicle()
{
    constexpr double baseAltitude = 310;
    constexpr double degreeSteps = 1e7;
    constexpr double compassSpreadDeg = 0.3;
    m_scenery.drive(static_cast<double>(vehicleMs) / 1000);
    const sim::Vehicle& vehicle = m_scenery.vehicle();
    sim::setNumber(absolute("/LOCATIONLATITUDE"), exact::rounded(vehicle.latitude(), degreeSteps));
    sim::setNumber(absolute("/LOCATIONLONGITUDE"), exact::rounded(vehicle.longitude(), degreeSteps));
    sim::setNumber(absolute("/TRUEHEADING"),
                   tenths(exact::wrapDeg(vehicle.headingDeg() + compassSpreadDeg * m_scenery.random().bell())));
    sim::setNumber(absolute("/VELOCITY"), tenths(vehicle.speed()));
    sim::setNumber(absolute("/ALTITUDE"), tenths(baseAltitude + vehicle.place().north / 100));
    sim::setNumber(absolute("/PITCH"), tenths(m_scenery.random().uniform(-2, 2)));
    sim::setNumber(absolute("/ROLL"), tenths(m_scenery.random().uniform(-3, 3)));
}

// Scanning and monitoring take turns; while monitoring, the operator tunes to one transmitter after the other.
void SimSource::operate()
{
    constexpr double shortestScanMs = 15'000;
    constexpr double longestScanMs = 25'000;
    constexpr double shortestTuningMs = 3'000;
    constexpr double longestTuningMs = 6'000;
    constexpr std::uint32_t mostTunings = 4;
    const bool first = m_nowMs == 0;
    if (m_tuningsLeft > 0) {
        --m_tuningsLeft;
        tune();
    } else if (m_monitoring || first) {
        startScan();
    } else {
        m_tuningsLeft = m_scenery.random().below(mostTunings);
        startMonitoring();
        tune();
    }
    const double pause = m_monitoring ? m_scenery.random().uniform(shortestTuningMs, longestTuningMs)
                                      : m_scenery.random().uniform(shortestScanMs, longestScanMs);
    m_activities.front().nextMs = m_nowMs + static_cast<unsigned long long>(pause);
}

void SimSource::startScan()
{
    m_monitoring = false;
    // The recorder moves the scan range to the IF span when it starts while a frequency is monitored.
    setOnReceivers("Scn/StartFreq", sim::bandStartHz);
    setOnReceivers("Scn/StopFreq", sim::bandStopHz);
    chooseOnReceivers("Scn/SEARCHSCANMODE", 1);
    chooseOnReceivers("Gen/DRVCOMMANDS", sim::scanKey);
    sim::chooseKey(absolute("/OPERATEMODE"), 0);
}

void SimSource::startMonitoring()
{
    m_monitoring = true;
    chooseOnReceivers("Scn/SEARCHSCANMODE", 0);
    chooseOnReceivers("Gen/DRVCOMMANDS", sim::monitorKey);
    sim::chooseKey(absolute("/OPERATEMODE"), 1);
}

void SimSource::tune()
{
    constexpr double wideHz = 50e3;
    constexpr double strongDb = -70;
    constexpr double attenuationDb = 10;
    const auto count = static_cast<std::uint32_t>(m_scenery.transmitters().size());
    m_tuned = m_scenery.random().below(count);
    const bool wide = tuned().widthHz > wideHz;
    sim::setNumber(absolute("/FREQUENCY"), tuned().frequencyHz);
    sim::chooseKey(absolute("/IFSPAN"), wide ? spanKey500kHz : spanKey100kHz);
    sim::setNumber(absolute("/DFBANDWIDTH"), tuned().widthHz);
    sim::setNumber(absolute("/RFAZIMUTHRULER"), tenths(m_scenery.bearingDeg(tuned())));
    setOnReceivers("Mon/BANDWIDTH", tuned().widthHz);
    chooseOnReceivers("Mon/DEMODULATION", wide ? 2 : 0);
    setOnReceivers("Mon/Attenuation", m_scenery.levelDb(tuned()) > strongDb ? attenuationDb : 0);
}

std::unique_ptr<Source> makeSimSource(const SimOptions& options, const std::vector<Instance>& instances)
{
    return std::make_unique<SimSource>(options, instances);
}

}  // namespace recstation
