// Making a receiver's values, and setting its spectrum, level and settings.
#include "published/spectrumvalues.h"

#include <cmath>
#include <limits>
#include <vector>

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
    addItem(value, name, number, key);
    value->Select(name);
}

}  // namespace

SpectrumValues::SpectrumValues(const SpectrumDevice& device) : m_valuePath(device.valuePath)
{
    setDevice(m_valuePath, device.name, device.type);
    const QString mode = m_valuePath + QStringLiteral("/Gen/DRVCOMMANDS");
    if (device.ifSpectrum) {
        selectItem(mode, QStringLiteral("Fixed frequency"), FixedFrequencyKey, FixedFrequencyKey);
    } else {
        selectItem(mode, QStringLiteral("Panorama scan"), PanoramaScanKey, PanoramaScanKey);
    }
    setScanLevels(m_valuePath, LowestShownDb, HighestShownDb);
    attachValue(m_spectrum,
                device.ifSpectrum ? QStringLiteral("/IfMapping") : m_valuePath + QStringLiteral("/Scn/RfSpectrum"));
}

void SpectrumValues::setBand(double centreHz, double rateHz, std::size_t channels)
{
    setValue<values::ValueNumericWithOffset<double>>(QStringLiteral("/FREQUENCY"), centreHz);
    selectItem(QStringLiteral("/IFSPAN"), QStringLiteral("%1 kHz").arg(rateHz / 1000), rateHz, 0);
    if (!m_level) {
        attachValue(m_level, QStringLiteral("/LEVEL"));
        m_level->SetValue(std::numeric_limits<double>::quiet_NaN());  // not measured yet
    }
    const double startHz = centreHz - rateHz / 2;
    const double stepHz = rateHz / static_cast<double>(channels);
    setPanorama(values::ChannelRange::Even(startHz, stepHz, channels), startHz, centreHz + rateHz / 2, stepHz);
}

void SpectrumValues::setPanorama(const values::ChannelRange& channels, double lowHz, double highHz, double stepHz)
{
    setScanRange(m_valuePath, lowHz, highHz);
    setNumber(m_valuePath + QStringLiteral("/Scn/StepFreq"), stepHz);
    m_spectrum->SetChannelRange(channels);
}

void SpectrumValues::show(std::span<const float> levelsDb, double levelDb, unsigned long long time)
{
    // The spectrum first: a recorder takes over its time for the plain values that follow.
    showPart(0, levelsDb, time);
    // To 0.01 dB like the spectrum's cells; more digits say nothing.
    m_level->SetValue(std::round(levelDb * 100) / 100);
}

void SpectrumValues::showPart(std::size_t first, std::span<const float> levelsDb, unsigned long long time)
{
    m_spectrum->SetCells(first, levelsDb, time);
}

void SpectrumValues::forget(unsigned long long time)
{
    const std::vector<float> unknown(m_spectrum->GetChannelRange().size(), std::numeric_limits<float>::quiet_NaN());
    showPart(0, unknown, time);
    if (m_level) {
        m_level->SetValue(std::numeric_limits<double>::quiet_NaN());
    }
}

}  // namespace RecStation
