// Making a receiver's values, and setting what it told.
#include "sources/rig/rigvalues.h"

#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace RecStation {

namespace {

constexpr double Unknown = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t MostModes = 64;

// Those of Hamlib's, each with its place as its key; others are added as they come.
constexpr std::array RigModes = {"USB",     "LSB",     "CW",  "CWR",    "RTTY",   "RTTYR", "AM",
                                 "FM",      "WFM",     "AMS", "PKTLSB", "PKTUSB", "PKTFM", "PKTAM",
                                 "ECSSUSB", "ECSSLSB", "FA",  "SAM",    "SAL",    "SAH",   "DSB"};

const QString UnknownMode = QStringLiteral("UNKNOWN");

void setKnown(const values::ValuePtr<values::ValueNumeric<double>>& value, double number)
{
    if (!std::isnan(number) || !std::isnan(value->GetValue())) {  // not a number is another one each time
        value->SetValue(number);
    }
}

}  // namespace

RigValues::RigValues(const QString& deviceName, const QString& valuePath, bool withSpectrum, double s9)
    : m_valuePath(valuePath)
{
    const SpectrumDevice device{
        .name = forFileNames(deviceName), .type = QStringLiteral("Hamlib rigctld"), .valuePath = valuePath};
    setDevice(valuePath, device.name, device.type);
    attachNumber(m_frequency, QStringLiteral("/FREQUENCY"));
    attachValue(m_mode, valuePath + QStringLiteral("/Mon/DEMODULATION"));
    addMode(UnknownMode);
    for (const char* mode : RigModes) {
        addMode(QLatin1String(mode));
    }
    attachValue(m_bandwidth, valuePath + QStringLiteral("/Mon/BANDWIDTH"));
    attachValue(m_level, QStringLiteral("/LEVEL"));
    if (withSpectrum) {
        m_spectrum.emplace(device);
        setNumber(valuePath + QStringLiteral("/Scn/StepFreq"), Unknown);
    }
    const QString level = valuePath + QStringLiteral("/Scn/StartLevel");
    m_tellsRange = !withSpectrum && values::Tree::Instance()->Find(level) == nullptr;
    if (withSpectrum || m_tellsRange) {
        beginRange(s9);
    }
    forget();
}

void RigValues::addMode(const QString& name)
{
    const std::size_t key = m_mode->GetItems().size();
    addItem(m_mode, name, static_cast<double>(key), static_cast<std::int32_t>(key));
}

// What the header is made of, until the first spectrum or frequency tells. The scale is that of a signal meter.
void RigValues::beginRange(double s9)
{
    constexpr double S0 = -54;
    constexpr double MostOverS9 = 60;
    setScanRange(m_valuePath, Unknown, Unknown);
    setScanLevels(m_valuePath, s9 + S0, s9 + MostOverS9);
}

void RigValues::show(const RigAnswers& answers)
{
    if (answers.frequencyHz) {
        m_frequency->SetValue(*answers.frequencyHz);
    }
    if (answers.frequencyHz && m_tellsRange) {
        setScanRange(m_valuePath, *answers.frequencyHz, *answers.frequencyHz);
    }
    if (answers.mode) {
        showMode(*answers.mode);
    }
    if (answers.bandwidthHz) {
        setKnown(m_bandwidth, *answers.bandwidthHz);
    }
    if (answers.levelDb) {
        setKnown(m_level, *answers.levelDb);
    }
}

void RigValues::showMode(const std::string& mode)
{
    const QString name = mode.empty() ? UnknownMode : QString::fromStdString(mode);
    const values::SelectionItem* current = m_mode->GetCurrentItem();
    if (current != nullptr && current->GetName() == name) {
        return;
    }
    if (!m_mode->Select(name)) {
        if (m_mode->GetItems().size() < MostModes) {
            addMode(name);
        }
        if (!m_mode->Select(name)) {
            m_mode->Select(UnknownMode);
        }
    }
}

void RigValues::show(const RigSpectrum& spectrum, unsigned long long time)
{
    auto channels = values::ChannelRange::Even(spectrum.lowHz, spectrum.stepHz(), spectrum.levelsDb.size());
    if (channels != m_channels) {
        m_spectrum->setPanorama(channels, spectrum.lowHz, spectrum.highHz, spectrum.stepHz());
        setScanLevels(m_valuePath, spectrum.lowestDb, spectrum.highestDb);
        m_channels = std::move(channels);
    }
    m_spectrum->showPart(0, spectrum.levelsDb, time);
}

void RigValues::forget()
{
    showMode({});
    setKnown(m_bandwidth, Unknown);
    setKnown(m_level, Unknown);
}

}  // namespace RecStation
