// The spectrum, level and settings of a receiver, set from frames of IQ samples.
#include "sources/iq/iqvalues.h"

#include <cmath>
#include <limits>
#include <memory>

#include <QFileInfo>

#include <values/selection.h>

#include "attachedvalue.h"

namespace RecStation {

namespace {

constexpr std::int32_t PanoramaScanKey = 5;
constexpr std::int32_t FixedFrequencyKey = 23;

// What a display shows at first: from below the noise of 16-bit samples up to full scale.
constexpr double LowestShownDb = -140;
constexpr double HighestShownDb = 0;

void setFrequency(const QString& path, double frequencyHz)
{
    setValue<values::ValueNumericWithOffset<double>>(path, frequencyHz);
}

void select(const QString& path, const QString& name, double number, std::int32_t key)
{
    values::ValuePtr<values::ValueSelection> value;
    attachValue(value, path);
    value->AddItem(std::make_unique<values::SelectionItem>(name, number, key).release());
    value->Select(name);
}

QString deviceName(const IqPlan& plan)
{
    return plan.file == QLatin1String("-") ? QStringLiteral("IQ input") : QFileInfo(plan.file).completeBaseName();
}

}  // namespace

IqValues::IqValues(const IqPlan& plan, const QString& valuePath)
{
    const QString scan = valuePath + QStringLiteral("/Scn/");
    const double startHz = plan.centreHz - plan.rateHz / 2;
    const double stepHz = plan.rateHz / static_cast<double>(plan.fftSize);
    setText(valuePath + QStringLiteral("/Adm/DRIVERNAME"), deviceName(plan));
    setText(valuePath + QStringLiteral("/Adm/DEVICE_TYPE"),
            QStringLiteral("IQ samples %1").arg(QLatin1String(sampleFormatName(plan.format))));
    if (plan.ifSpectrum) {
        select(valuePath + QStringLiteral("/Gen/DRVCOMMANDS"), QStringLiteral("Fixed frequency"), FixedFrequencyKey,
               FixedFrequencyKey);
    } else {
        select(valuePath + QStringLiteral("/Gen/DRVCOMMANDS"), QStringLiteral("Panorama scan"), PanoramaScanKey,
               PanoramaScanKey);
    }
    setFrequency(QStringLiteral("/FREQUENCY"), plan.centreHz);
    select(QStringLiteral("/IFSPAN"), QStringLiteral("%1 kHz").arg(plan.rateHz / 1000), plan.rateHz, 0);
    setNumber(scan + QStringLiteral("StartFreq"), startHz);
    setNumber(scan + QStringLiteral("StopFreq"), plan.centreHz + plan.rateHz / 2);
    setNumber(scan + QStringLiteral("StepFreq"), stepHz);
    setNumber(scan + QStringLiteral("StartLevel"), LowestShownDb);
    setNumber(scan + QStringLiteral("StopLevel"), HighestShownDb);
    attachValue(m_level, QStringLiteral("/LEVEL"));
    m_level->SetValue(std::numeric_limits<double>::quiet_NaN());  // not measured yet
    attachValue(m_spectrum, plan.ifSpectrum ? QStringLiteral("/IfMapping") : scan + QStringLiteral("RfSpectrum"));
    m_spectrum->SetChannelRange(values::ChannelRange::Even(startHz, stepHz, plan.fftSize));
}

void IqValues::show(const IqFrame& frame, unsigned long long time)
{
    // The spectrum first: a recorder takes over its time for the plain values that follow.
    m_spectrum->SetCells(0, frame.levelsDb, time);
    // To 0.01 dB like the spectrum's cells; more digits say nothing.
    m_level->SetValue(std::round(frame.levelDb * 100) / 100);
}

}  // namespace RecStation
