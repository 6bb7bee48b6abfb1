// Making a receiver's values, and setting what it told.
#include "sources/rig/rigvalues.h"

#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "attachedvalue.h"

namespace RecStation {

namespace {

constexpr std::int32_t RigPanoramaScanKey = 5;
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

void addItem(const values::ValuePtr<values::ValueSelection>& selection, const QString& name)
{
    const std::size_t key = selection->GetItems().size();
    selection->AddItem(
        std::make_unique<values::SelectionItem>(name, static_cast<double>(key), static_cast<std::int32_t>(key))
            .release());
}

}  // namespace

RigValues::RigValues(const QString& deviceName, const QString& valuePath, bool withSpectrum, double s9)
    : m_scan(valuePath + QStringLiteral("/Scn/"))
{
    setText(valuePath + QStringLiteral("/Adm/DRIVERNAME"), forFileNames(deviceName));
    setText(valuePath + QStringLiteral("/Adm/DEVICE_TYPE"), QStringLiteral("Hamlib rigctld"));
    const QString frequency = QStringLiteral("/FREQUENCY");
    const bool told = values::Tree::Instance() != nullptr && values::Tree::Instance()->Find(frequency) != nullptr;
    attachValue(m_frequency, frequency);
    if (!told) {
        m_frequency->SetValue(Unknown);
    }
    attachValue(m_mode, valuePath + QStringLiteral("/Mon/DEMODULATION"));
    addItem(m_mode, UnknownMode);
    for (const char* mode : RigModes) {
        addItem(m_mode, QLatin1String(mode));
    }
    attachValue(m_bandwidth, valuePath + QStringLiteral("/Mon/BANDWIDTH"));
    attachValue(m_level, QStringLiteral("/LEVEL"));
    if (withSpectrum) {
        values::ValuePtr<values::ValueSelection> command;
        attachValue(command, valuePath + QStringLiteral("/Gen/DRVCOMMANDS"));
        const QString scan = QStringLiteral("Panorama scan");
        command->AddItem(
            std::make_unique<values::SelectionItem>(scan, RigPanoramaScanKey, RigPanoramaScanKey).release());
        command->Select(scan);
        attachValue(m_spectrum, m_scan + QStringLiteral("RfSpectrum"));
        setNumber(m_scan + QStringLiteral("StepFreq"), Unknown);
    }
    const values::Tree* tree = values::Tree::Instance();
    m_tellsRange = !withSpectrum && tree->Find(m_scan + QStringLiteral("StartLevel")) == nullptr;
    if (withSpectrum || m_tellsRange) {
        beginRange(s9);
    }
    forget();
}

// What the header is made of, until the first spectrum or frequency tells. The scale is that of a signal meter.
void RigValues::beginRange(double s9)
{
    constexpr double S0 = -54;
    constexpr double MostOverS9 = 60;
    setNumber(m_scan + QStringLiteral("StartFreq"), Unknown);
    setNumber(m_scan + QStringLiteral("StopFreq"), Unknown);
    setNumber(m_scan + QStringLiteral("StartLevel"), s9 + S0);
    setNumber(m_scan + QStringLiteral("StopLevel"), s9 + MostOverS9);
}

void RigValues::show(const RigAnswers& answers)
{
    if (answers.frequencyHz) {
        m_frequency->SetValue(*answers.frequencyHz);
    }
    if (answers.frequencyHz && m_tellsRange) {
        setNumber(m_scan + QStringLiteral("StartFreq"), *answers.frequencyHz);
        setNumber(m_scan + QStringLiteral("StopFreq"), *answers.frequencyHz);
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
            addItem(m_mode, name);
        }
        if (!m_mode->Select(name)) {
            m_mode->Select(UnknownMode);
        }
    }
}

void RigValues::show(const RigSpectrum& spectrum, unsigned long long time)
{
    if (spectrum.lowHz != m_lowHz || spectrum.highHz != m_highHz || spectrum.levelsDb.size() != m_cells) {
        layOut(spectrum);
    }
    m_spectrum->SetCells(0, spectrum.levelsDb, time);
}

void RigValues::layOut(const RigSpectrum& spectrum)
{
    m_lowHz = spectrum.lowHz;
    m_highHz = spectrum.highHz;
    m_cells = spectrum.levelsDb.size();
    setNumber(m_scan + QStringLiteral("StartFreq"), m_lowHz);
    setNumber(m_scan + QStringLiteral("StopFreq"), m_highHz);
    setNumber(m_scan + QStringLiteral("StepFreq"), spectrum.stepHz());
    setNumber(m_scan + QStringLiteral("StartLevel"), spectrum.lowestDb);
    setNumber(m_scan + QStringLiteral("StopLevel"), spectrum.highestDb);
    m_spectrum->SetChannelRange(values::ChannelRange::Even(m_lowHz, spectrum.stepHz(), m_cells));
}

void RigValues::forget()
{
    showMode({});
    setKnown(m_bandwidth, Unknown);
    setKnown(m_level, Unknown);
}

void RigValues::forgetSpectrum(unsigned long long time)
{
    if (m_cells > 0) {
        m_spectrum->SetCells(0, std::vector<float>(m_cells, std::numeric_limits<float>::quiet_NaN()), time);
    }
}

}  // namespace RecStation
