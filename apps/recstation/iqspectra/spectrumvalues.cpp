// The spectrum, level and settings of a receiver, set from frames of IQ samples.
#include "iqspectra/spectrumvalues.h"

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include <values/selection.h>

#include "attachedvalue.h"

namespace RecStation {

namespace {

constexpr std::int32_t PanoramaScanKey = 5;
constexpr std::int32_t FixedFrequencyKey = 23;

// What a display shows at first: from below the noise of 16-bit samples up to full scale.
constexpr double LowestShownDb = -140;
constexpr double HighestShownDb = 0;

void selectItem(const QString& path, const QString& name, double number, std::int32_t key)
{
    values::ValuePtr<values::ValueSelection> value;
    attachValue(value, path);
    value->AddItem(std::make_unique<values::SelectionItem>(name, number, key).release());
    value->Select(name);
}

}  // namespace

SpectrumValues::SpectrumValues(const SpectrumDevice& device) : m_scan(device.valuePath + QStringLiteral("/Scn/"))
{
    setText(device.valuePath + QStringLiteral("/Adm/DRIVERNAME"), device.name);
    setText(device.valuePath + QStringLiteral("/Adm/DEVICE_TYPE"), device.type);
    const QString mode = device.valuePath + QStringLiteral("/Gen/DRVCOMMANDS");
    if (device.ifSpectrum) {
        selectItem(mode, QStringLiteral("Fixed frequency"), FixedFrequencyKey, FixedFrequencyKey);
    } else {
        selectItem(mode, QStringLiteral("Panorama scan"), PanoramaScanKey, PanoramaScanKey);
    }
    setNumber(m_scan + QStringLiteral("StartLevel"), LowestShownDb);
    setNumber(m_scan + QStringLiteral("StopLevel"), HighestShownDb);
    attachValue(m_spectrum, device.ifSpectrum ? QStringLiteral("/IfMapping") : m_scan + QStringLiteral("RfSpectrum"));
}

void SpectrumValues::setBand(double centreHz, double rateHz, std::size_t channels)
{
    setValue<values::ValueNumericWithOffset<double>>(QStringLiteral("/FREQUENCY"), centreHz);
    selectItem(QStringLiteral("/IFSPAN"), QStringLiteral("%1 kHz").arg(rateHz / 1000), rateHz, 0);
    const double startHz = centreHz - rateHz / 2;
    const double stepHz = rateHz / static_cast<double>(channels);
    setScan(startHz, centreHz + rateHz / 2, stepHz);
    if (!m_level) {
        attachValue(m_level, QStringLiteral("/LEVEL"));
        m_level->SetValue(std::numeric_limits<double>::quiet_NaN());  // not measured yet
    }
    m_spectrum->SetChannelRange(values::ChannelRange::Even(startHz, stepHz, channels));
}

void SpectrumValues::setPanorama(const values::ChannelRange& channels, double lowHz, double highHz, double stepHz)
{
    setScan(lowHz, highHz, stepHz);
    m_spectrum->SetChannelRange(channels);
}

void SpectrumValues::setScan(double lowHz, double highHz, double stepHz)
{
    setNumber(m_scan + QStringLiteral("StartFreq"), lowHz);
    setNumber(m_scan + QStringLiteral("StopFreq"), highHz);
    setNumber(m_scan + QStringLiteral("StepFreq"), stepHz);
}

void SpectrumValues::show(const IqFrame& frame, unsigned long long time)
{
    // The spectrum first: a recorder takes over its time for the plain values that follow.
    m_spectrum->SetCells(0, frame.levelsDb, time);
    // To 0.01 dB like the spectrum's cells; more digits say nothing.
    m_level->SetValue(std::round(frame.levelDb * 100) / 100);
}

void SpectrumValues::showPart(std::size_t first, std::span<const float> levelsDb, unsigned long long time)
{
    m_spectrum->SetCells(first, levelsDb, time);
}

void SpectrumValues::forget(unsigned long long time)
{
    const std::vector<float> unknown(m_spectrum->GetChannelRange().size(), std::numeric_limits<float>::quiet_NaN());
    m_spectrum->SetCells(0, unknown, time);
    if (m_level) {
        m_level->SetValue(std::numeric_limits<double>::quiet_NaN());
    }
}

}  // namespace RecStation
