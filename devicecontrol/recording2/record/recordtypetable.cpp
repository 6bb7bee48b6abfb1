// The table of the 48 keywords itself, and the values attached to them.
#include "recordtypetable.h"

#include <utility>

namespace Recording2 {

const std::array<RecordType, 48> RecordTypeTable{{
    {"RFSPECTRUM", "Scn/RfSpectrum", 1},
    {"DRVCOMMANDS", "Gen/DRVCOMMANDS", 3},
    {"SEARCHSCANMODE", "Scn/SEARCHSCANMODE", 4},
    {"BANDWIDTH", "Mon/BANDWIDTH", 5},
    {"MODULATION", "Mon/DEMODULATION", 6},
    {"SQUELCHVALUE", "Mon/SquelchValue", 7},
    {"SQUELCHSTATE", "Mon/SquelchState", 17},
    {"ATTENUATION", "Mon/Attenuation", 8},
    {"ANTENNA", "Mon/Antenna", 9},
    {"FREQOFFSET", "Mon/FreqOffset", 10},
    {"RFYLIMIT", "Mon/RFYLIMIT", 16},
    {"STARTFREQ", "Scn/StartFreq", 11},
    {"STOPFREQ", "Scn/StopFreq", 12},
    {"STEPFREQ", "Scn/StepFreq", 13},
    {"DEVICENAME", "Adm/DRIVERNAME", 18},
    {"DEVICETYPE", "Adm/DEVICE_TYPE", 19},
    {"DFSPECTRUM", "/DfSpectrum", 20},
    {"AZIMUTHSTART", "/RFSTARTAZIMUTH", 21},
    {"AZIMUTHSTOP", "/RFSTOPAZIMUTH", 22},
    {"ELEVATIONSTART", "/RFSTARTELEVATION", 23},
    {"ELEVATIONSTOP", "/RFSTOPELEVATION", 24},
    {"STARTLEVEL", "Scn/StartLevel", 14},
    {"STOPLEVEL", "Scn/StopLevel", 15},
    {"LOCATIONLATITUDE", "/LOCATIONLATITUDE", 25},
    {"LOCATIONLONGITUDE", "/LOCATIONLONGITUDE", 26},
    {"RFAZIMUTHRULER", "/RFAZIMUTHRULER", 27},
    {"RFELEVATIONRULER", "/RFELEVATIONRULER", 28},
    {"IFSTARTLEVEL", "/IFSTARTLEVEL", 29},
    {"IFSTOPLEVEL", "/IFSTOPLEVEL", 30},
    {"IFLEVELTHRESHOLD", "/IFLEVELTHRESHOLD", 31},
    {"IFSPAN", "/IFSPAN", 32},
    {"DFBANDWIDTH", "/DFBANDWIDTH", 33},
    {"AFBANDWIDTH", "/AFBANDWIDTH", 34},
    {"AZIMUTH", "/AZIMUTH", 35},
    {"LEVEL", "/LEVEL", 36},
    {"FIELDSTRENGTH", "/FIELDSTRENGTH", 37},
    {"ELEVATION", "/ELEVATION", 38},
    {"QUALITY", "/QUALITY", 39},
    {"OPERATEMODE", "/OPERATEMODE", 40},
    {"IFSPECTRUM", "/IfMapping", 2},
    {"TRUEHEADING", "/TRUEHEADING", 41},
    {"ALTITUDE", "/ALTITUDE", 42},
    {"VELOCITY", "/VELOCITY", 43},
    {"PITCH", "/PITCH", 44},
    {"ROLL", "/ROLL", 45},
    {"FREQUENCY", "/FREQUENCY", 46},
    {"DEVICE_CAPTION", "/DEVICE_CAPTION", 47},
    {"DFSPECTRUMSAMPLE", "/DEVICE_CAPTION", 48},
}};

void CValueTableMap::Set(const QString& keyword, const QString& valuePath)
{
    m_entries[keyword] = std::make_unique<CValueTable>(valuePath);
}

CValueTable* CValueTableMap::Find(const QString& keyword) const
{
    const auto entry = m_entries.find(keyword);
    return entry == m_entries.end() ? nullptr : entry->second.get();
}

void CValueTableMap::MoveTo(CValueTableMap& other, const QString& keyword)
{
    const auto entry = m_entries.find(keyword);
    if (entry != m_entries.end()) {
        other.m_entries[keyword] = std::move(entry->second);
        m_entries.erase(entry);
    }
}

}  // namespace Recording2
