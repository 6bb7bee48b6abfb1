// The tables of keyword values and selection items, and their creation in the tree.
#include "simvalues.h"

#include <array>
#include <memory>

#include <values/recordingtext.h>

#include "scenery.h"

namespace RecStation::Sim {

namespace {

using values::ValueType;

constexpr std::array Rows = {
    KeywordValue{"RFSPECTRUM", "Scn/RfSpectrum", ValueType::LevelMap},
    KeywordValue{"DRVCOMMANDS", "Gen/DRVCOMMANDS", ValueType::Selection, ScanKey},
    KeywordValue{"SEARCHSCANMODE", "Scn/SEARCHSCANMODE", ValueType::Selection, 1},
    KeywordValue{"BANDWIDTH", "Mon/BANDWIDTH", ValueType::Numeric, 25e3, 100, 1e6},
    KeywordValue{"MODULATION", "Mon/DEMODULATION", ValueType::Selection, 0},
    KeywordValue{"SQUELCHVALUE", "Mon/SquelchValue", ValueType::Numeric, -95, -130, 0},
    KeywordValue{"SQUELCHSTATE", "Mon/SquelchState", ValueType::Bool},
    KeywordValue{"ATTENUATION", "Mon/Attenuation", ValueType::Numeric, 0, 0, 40},
    KeywordValue{"ANTENNA", "Mon/Antenna", ValueType::Selection, 0},
    KeywordValue{"FREQOFFSET", "Mon/FreqOffset", ValueType::Numeric, 0, -1e6, 1e6},
    KeywordValue{"RFYLIMIT", "Mon/RFYLIMIT", ValueType::Numeric, 0, -130, -20},
    KeywordValue{"STARTFREQ", "Scn/StartFreq", ValueType::Numeric, BandStartHz, 20e6, 3e9},
    KeywordValue{"STOPFREQ", "Scn/StopFreq", ValueType::Numeric, BandStopHz, 20e6, 3e9},
    KeywordValue{"STEPFREQ", "Scn/StepFreq", ValueType::Numeric, BandStepHz, 1e3, 1e6},
    KeywordValue{"DEVICENAME", "Adm/DRIVERNAME", ValueType::String},
    KeywordValue{"DEVICETYPE", "Adm/DEVICE_TYPE", ValueType::String},
    KeywordValue{"DFSPECTRUM", "/DfSpectrum", ValueType::BearingMap},
    KeywordValue{"AZIMUTHSTART", "/RFSTARTAZIMUTH", ValueType::Numeric, 0, 0, 360},
    KeywordValue{"AZIMUTHSTOP", "/RFSTOPAZIMUTH", ValueType::Numeric, 360, 0, 360},
    KeywordValue{"ELEVATIONSTART", "/RFSTARTELEVATION", ValueType::Numeric, -90, -90, 90},
    KeywordValue{"ELEVATIONSTOP", "/RFSTOPELEVATION", ValueType::Numeric, 90, -90, 90},
    KeywordValue{"STARTLEVEL", "Scn/StartLevel", ValueType::Numeric, -130, -150, 50},
    KeywordValue{"STOPLEVEL", "Scn/StopLevel", ValueType::Numeric, -20, -150, 50},
    KeywordValue{"LOCATIONLATITUDE", "/LOCATIONLATITUDE", ValueType::Numeric, OriginLatitude, -90, 90},
    KeywordValue{"LOCATIONLONGITUDE", "/LOCATIONLONGITUDE", ValueType::Numeric, OriginLongitude, -180, 180},
    KeywordValue{"RFAZIMUTHRULER", "/RFAZIMUTHRULER", ValueType::Numeric, 0, 0, 360},
    KeywordValue{"RFELEVATIONRULER", "/RFELEVATIONRULER", ValueType::Numeric, 0, -90, 90},
    KeywordValue{"IFSTARTLEVEL", "/IFSTARTLEVEL", ValueType::Numeric, -140, -150, 50},
    KeywordValue{"IFSTOPLEVEL", "/IFSTOPLEVEL", ValueType::Numeric, -30, -150, 50},
    KeywordValue{"IFLEVELTHRESHOLD", "/IFLEVELTHRESHOLD", ValueType::Numeric, -95, -150, 50},
    KeywordValue{"IFSPAN", "/IFSPAN", ValueType::Selection, 2},
    KeywordValue{"DFBANDWIDTH", "/DFBANDWIDTH", ValueType::Numeric, 25e3, 100, 1e6},
    KeywordValue{"AFBANDWIDTH", "/AFBANDWIDTH", ValueType::Numeric, 8e3, 100, 20e3},
    KeywordValue{"AZIMUTH", "/AZIMUTH", ValueType::Numeric, 0, 0, 360},
    KeywordValue{"LEVEL", "/LEVEL", ValueType::Numeric, NoiseFloorDb, -150, 50},
    KeywordValue{"FIELDSTRENGTH", "/FIELDSTRENGTH", ValueType::Numeric, NoiseFloorDb + FieldStrengthFactorDb, -20, 160},
    KeywordValue{"ELEVATION", "/ELEVATION", ValueType::Numeric, 0, -90, 90},
    KeywordValue{"QUALITY", "/QUALITY", ValueType::Numeric, 0, 0, 100},
    KeywordValue{"OPERATEMODE", "/OPERATEMODE", ValueType::Selection, 0},
    KeywordValue{"IFSPECTRUM", "/IfMapping", ValueType::LevelMap},
    KeywordValue{"TRUEHEADING", "/TRUEHEADING", ValueType::Numeric, 0, 0, 360},
    KeywordValue{"ALTITUDE", "/ALTITUDE", ValueType::Numeric, 310, -500, 9000},
    KeywordValue{"VELOCITY", "/VELOCITY", ValueType::Numeric, 0, 0, 100},
    KeywordValue{"PITCH", "/PITCH", ValueType::Numeric, 0, -90, 90},
    KeywordValue{"ROLL", "/ROLL", ValueType::Numeric, 0, -180, 180},
    KeywordValue{"FREQUENCY", "/FREQUENCY", ValueType::NumericWithOffset, 430e6, 20e6, 3e9},
    KeywordValue{"DEVICE_CAPTION", "/DEVICE_CAPTION", ValueType::String},
    KeywordValue{"DFSPECTRUMSAMPLE", "/DEVICE_CAPTION", ValueType::String},
};

struct ItemRow {
    const char* path;
    const char* name;
    double value;
    std::int32_t key;
};

constexpr std::array ItemRows = {
    ItemRow{"Gen/DRVCOMMANDS", "Scan", 0, ScanKey},
    ItemRow{"Gen/DRVCOMMANDS", "Monitor", 1, MonitorKey},
    ItemRow{"Gen/DRVCOMMANDS", "Direction finding", 2, DirectionFindingKey},
    ItemRow{"Scn/SEARCHSCANMODE", "Off", 0, 0},
    ItemRow{"Scn/SEARCHSCANMODE", "Panorama scan", 1, 1},
    ItemRow{"Mon/DEMODULATION", "FM", 0, 0},
    ItemRow{"Mon/DEMODULATION", "AM", 1, 1},
    ItemRow{"Mon/DEMODULATION", "IQ", 2, 2},
    ItemRow{"Mon/Antenna", "Roof, vertical", 0, 0},
    ItemRow{"Mon/Antenna", "Roof, horizontal", 1, 1},
    ItemRow{"/IFSPAN", "100 kHz", 100e3, 1},
    ItemRow{"/IFSPAN", "200 kHz", 200e3, 2},
    ItemRow{"/IFSPAN", "500 kHz", 500e3, 3},
    ItemRow{"/OPERATEMODE", "Scan", 0, 0},
    ItemRow{"/OPERATEMODE", "Monitor", 1, 1},
    ItemRow{"AntennaMode", "Omnidirectional", 0, 0},
    ItemRow{"AntennaMode", "DF", 1, 1},
};

void setBeginning(values::ValueBase& value, const KeywordValue& row)
{
    if (auto* number = dynamic_cast<values::ValueNumeric<double>*>(&value)) {
        number->SetLimits(row.lower, row.upper);
        number->SetValue(row.value);
    } else if (auto* selection = dynamic_cast<values::ValueSelection*>(&value)) {
        for (const ItemRow& item : ItemRows) {
            if (QLatin1String(item.path) == QLatin1String(row.path)) {
                selection->AddItem(new values::SelectionItem(QString::fromLatin1(item.name), item.value, item.key));
            }
        }
        selection->SelectKey(static_cast<std::int32_t>(row.value));
    }
}

QString absolutePath(const QString& valuePath, const char* path)
{
    return path[0] == '/' ? QString::fromLatin1(path) : valuePath + QLatin1Char('/') + QLatin1String(path);
}

void create(const QString& valuePath, const KeywordValue& row)
{
    const QString path = absolutePath(valuePath, row.path);
    if (values::Tree::Instance()->Find(path) != nullptr) {
        return;
    }
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    std::unique_ptr<values::ValueBase> value = values::MakeValue(row.type);
    setBeginning(*value, row);
    value->SetName(path.mid(slash + 1));
    values::Tree::Instance()->Insert(path.left(slash + 1), value.get());
    static_cast<void>(value.release());  // the tree's now
}

}  // namespace

std::span<const KeywordValue> keywordValues()
{
    return Rows;
}

void createDevice(const Instance& instance, int number)
{
    constexpr auto JobId = "/KDXServer/Dcd/DcdAttr/DcdID";
    for (const KeywordValue& row : Rows) {
        create(instance.valuePath, row);
    }
    create(instance.valuePath, {"", "AntennaMode", ValueType::Selection, instance.directionFinding ? 1.0 : 0.0});
    create(instance.valuePath, {"", JobId, ValueType::String});
    const bool finder = instance.directionFinding;
    setValue<values::Value<QString>>(QString::fromLatin1(JobId), QStringLiteral("Simulation"));
    setValue<values::Value<QString>>(QStringLiteral("/DEVICE_CAPTION"), QStringLiteral("Simulated vehicle"));
    setValue<values::Value<QString>>(absolutePath(instance.valuePath, "Adm/DRIVERNAME"),
                                     (finder ? QStringLiteral("DF %1") : QStringLiteral("RX %1")).arg(number));
    setValue<values::Value<QString>>(
        absolutePath(instance.valuePath, "Adm/DEVICE_TYPE"),
        finder ? QStringLiteral("Simulated direction finder") : QStringLiteral("Simulated receiver"));
    if (finder) {
        chooseKey(absolutePath(instance.valuePath, "Gen/DRVCOMMANDS"), DirectionFindingKey);
    }
}

void chooseKey(const QString& path, std::int32_t key)
{
    auto* selection = findValue<values::ValueSelection>(path);
    if (selection != nullptr && selection->GetCurrentKey() != key) {
        selection->SelectKey(key);
    }
}

}  // namespace RecStation::Sim
