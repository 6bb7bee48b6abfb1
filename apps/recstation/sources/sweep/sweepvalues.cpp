// The RF spectrum and scan range of a receiver, set sweep by sweep.
#include "sources/sweep/sweepvalues.h"

#include <memory>

#include <values/selection.h>

#include "attachedvalue.h"

namespace RecStation {

namespace {

constexpr std::int32_t PanoramaScanKey = 5;

// What a display shows at first.
constexpr double LowestShownDb = -140;
constexpr double HighestShownDb = 0;

void selectMode(const QString& path, const QString& name, std::int32_t key)
{
    values::ValuePtr<values::ValueSelection> value;
    attachValue(value, path);
    value->AddItem(std::make_unique<values::SelectionItem>(name, key, key).release());
    value->Select(name);
}

}  // namespace

SweepValues::SweepValues(const QString& deviceName, const QString& valuePath)
    : m_scan(valuePath + QStringLiteral("/Scn/"))
{
    setText(valuePath + QStringLiteral("/Adm/DRIVERNAME"), forFileNames(deviceName));
    setText(valuePath + QStringLiteral("/Adm/DEVICE_TYPE"), QStringLiteral("Sweep"));
    selectMode(valuePath + QStringLiteral("/Gen/DRVCOMMANDS"), QStringLiteral("Panorama scan"), PanoramaScanKey);
    setNumber(m_scan + QStringLiteral("StartLevel"), LowestShownDb);
    setNumber(m_scan + QStringLiteral("StopLevel"), HighestShownDb);
    attachValue(m_spectrum, m_scan + QStringLiteral("RfSpectrum"));
}

void SweepValues::setLayout(const SweepLayout& layout)
{
    setNumber(m_scan + QStringLiteral("StartFreq"), layout.lowHz());
    setNumber(m_scan + QStringLiteral("StopFreq"), layout.highHz());
    setNumber(m_scan + QStringLiteral("StepFreq"), layout.stepHz());
    m_spectrum->SetChannelRange(layout.range());
}

void SweepValues::show(const Sweep& sweep)
{
    m_spectrum->SetCells(0, sweep.cells, sweep.time);
}

}  // namespace RecStation
