// Making a receiver's values, and setting what it told.
#include "sources/rig/rigvalues.h"

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "attachedvalue.h"

namespace RecStation {

namespace {

constexpr std::int32_t RigPanoramaScanKey = 5;
constexpr double Unknown = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t MostModes = 64;  // Hamlib knows about thirty

const QString UnknownMode = QStringLiteral("UNKNOWN");

void setKnown(const values::ValuePtr<values::ValueNumeric<double>>& value, double number)
{
    if (!std::isnan(number) || !std::isnan(value->GetValue())) {  // not a number is another one each time
        value->SetValue(number);
    }
}

void selectItem(const values::ValuePtr<values::ValueSelection>& selection, const QString& name, double value,
                std::int32_t key)
{
    if (!selection->Select(name)) {
        selection->AddItem(std::make_unique<values::SelectionItem>(name, value, key).release());
        selection->Select(name);
    }
}

}  // namespace

RigValues::RigValues(const QString& deviceName, const QString& valuePath, bool withSpectrum)
    : m_scan(valuePath + QStringLiteral("/Scn/"))
{
    setText(valuePath + QStringLiteral("/Adm/DRIVERNAME"), forFileNames(deviceName));
    setText(valuePath + QStringLiteral("/Adm/DEVICE_TYPE"), QStringLiteral("Hamlib rigctld"));
    attachValue(m_frequency, QStringLiteral("/FREQUENCY"));
    attachValue(m_mode, valuePath + QStringLiteral("/Mon/DEMODULATION"));
    attachValue(m_bandwidth, valuePath + QStringLiteral("/Mon/BANDWIDTH"));
    attachValue(m_level, QStringLiteral("/LEVEL"));
    if (withSpectrum) {
        values::ValuePtr<values::ValueSelection> command;
        attachValue(command, valuePath + QStringLiteral("/Gen/DRVCOMMANDS"));
        selectItem(command, QStringLiteral("Panorama scan"), RigPanoramaScanKey, RigPanoramaScanKey);
        attachValue(m_spectrum, m_scan + QStringLiteral("RfSpectrum"));
        for (const char* name : {"StartFreq", "StopFreq", "StepFreq", "StartLevel", "StopLevel"}) {
            setNumber(m_scan + QLatin1String(name), 0);  // the first spectrum tells
        }
    }
    forget();
}

void RigValues::show(const RigAnswers& answers)
{
    if (answers.frequencyHz) {
        m_frequency->SetValue(*answers.frequencyHz);
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
    const std::size_t known = m_mode->GetItems().size();
    const QString name = mode.empty() || known > MostModes ? UnknownMode : QString::fromStdString(mode);
    const values::SelectionItem* current = m_mode->GetCurrentItem();
    if (current == nullptr || current->GetName() != name) {
        selectItem(m_mode, name, static_cast<double>(known), static_cast<std::int32_t>(known));
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
