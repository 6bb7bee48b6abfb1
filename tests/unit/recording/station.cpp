// The values of all keywords, their switches, the collected traces, the files recorded.
#include "station.h"

#include <startup/cfgcenter.h>

namespace RecorderTests {

Environment::Environment(const char* name, const QByteArray& value)
    : m_name(name), m_wasSet(qEnvironmentVariableIsSet(name)), m_before(qgetenv(name))
{
    qputenv(name, value);
}

Environment::~Environment()
{
    if (m_wasSet) {
        qputenv(m_name, m_before);
    } else {
        qunsetenv(m_name);
    }
}

Station::Station()
{
    configure(QString());
}

Station::~Station()
{
    CfgCenter::Clear();
    values::HandlerBase::SetDataCompressMode(true);
}

void Station::insert(const QString& path, std::unique_ptr<values::ValueBase> value)
{
    const int leaf = path.lastIndexOf('/') + 1;
    value->SetName(path.mid(leaf));
    tree.Insert(path.left(leaf), value.get());
    static_cast<void>(value.release());  // the tree's now
}

Selection& Station::addSelection(const QString& path,
                                 std::initializer_list<std::tuple<const char*, double, std::int32_t>> items)
{
    auto& selection = add<Selection>(path);
    for (const auto& [name, value, key] : items) {
        selection.AddItem(std::make_unique<values::SelectionItem>(name, value, key).release());
    }
    selection.Select(selection.GetItems().front()->GetName());
    return selection;
}

void Station::addAllKeywords()
{
    for (const char* name : {"Mon/BANDWIDTH", "Mon/SquelchValue", "Mon/Attenuation", "Mon/FreqOffset", "Mon/RFYLIMIT",
                             "Scn/StartFreq", "Scn/StopFreq", "Scn/StepFreq", "Scn/StartLevel", "Scn/StopLevel"}) {
        add<Number>(QString("/Devices/Rx1/") + name);
    }
    for (const char* path :
         {"/RFSTARTAZIMUTH", "/RFSTOPAZIMUTH", "/RFSTARTELEVATION", "/RFSTOPELEVATION", "/LOCATIONLATITUDE",
          "/LOCATIONLONGITUDE", "/RFAZIMUTHRULER", "/RFELEVATIONRULER", "/IFSTARTLEVEL", "/IFSTOPLEVEL",
          "/IFLEVELTHRESHOLD", "/DFBANDWIDTH", "/AFBANDWIDTH", "/FIELDSTRENGTH", "/TRUEHEADING"}) {
        add<Number>(path);
    }
    for (const char* path :
         {"/AZIMUTH", "/LEVEL", "/ELEVATION", "/QUALITY", "/ALTITUDE", "/VELOCITY", "/PITCH", "/ROLL"}) {
        add<Number>(path);
    }
    add<LevelMap>("/Devices/Rx1/Scn/RfSpectrum");
    add<LevelMap>("/IfMapping");
    add<BearingMap>("/DfSpectrum");
    add<OffsetNumber>("/FREQUENCY");
    add<Flag>("/Devices/Rx1/Mon/SquelchState");
    add<Text>("/Devices/Rx1/Mon/Antenna");
    add<Text>("/Devices/Rx1/Adm/DRIVERNAME").SetValue("RX 1");
    add<Text>("/Devices/Rx1/Adm/DEVICE_TYPE").SetValue("Monitoring receiver");
    add<Text>("/DEVICE_CAPTION").SetValue("North Site");
    addSelection(
        "/Devices/Rx1/Gen/DRVCOMMANDS",
        {{"Scan", 0, 5}, {"FFM", 0, 3}, {"IF", 0, 23}, {"IF or DF", 0, 24}, {"Search", 0, 27}, {"PScan", 0, 42}});
    addSelection("/Devices/Rx1/Scn/SEARCHSCANMODE", {{"Search", 0, 0}, {"Memory", 0, 1}});
    addSelection("/Devices/Rx1/Mon/DEMODULATION", {{"AM", 0, 0}, {"FM", 0, 1}});
    addSelection("/OPERATEMODE", {{"Normal", 0, 0}, {"Gate", 0, 1}});
    addSelection("/IFSPAN", {{"0", 0, 0}, {"2 MHz", 2e6, 1}, {"10 MHz", 1e7, 2}});
}

QStringList Station::files() const
{
    return QDir(m_directory.path()).entryList(QDir::Files, QDir::Name);
}

void Station::configure(const QString& keys, const QString& recordedValues) const
{
    QString toml = QString(
                       "[Rx]\nValuePath = \"/Devices/Rx1\"\nStatusValuePath = \"/Status/Rx1\"\nRecordingPath = "
                       "\"%1\"\n%2\n")
                       .arg(m_directory.path(), keys);
    if (!recordedValues.isEmpty()) {
        toml += "[Rx.Values]\n" + recordedValues + '\n';
    }
    CfgCenter::LoadText(toml, "station.toml");
}

void Station::switchOn(const QString& recorder) const
{
    value<Selection>(recorder + "/REC_STATUS").Select("On");
}

void Station::switchOff(const QString& recorder) const
{
    value<Selection>(recorder + "/REC_STATUS").Select("Off");
}

ParsedRecording parsed(const QString& file)
{
    return TestSupport::parseRecording(TestSupport::readFile(file));
}

std::vector<ParsedRecording::Record> recordsOf(const ParsedRecording& recording, std::int32_t typeId)
{
    std::vector<ParsedRecording::Record> records;
    std::copy_if(recording.records.begin(), recording.records.end(), std::back_inserter(records),
                 [typeId](const ParsedRecording::Record& record) { return record.code == typeId; });
    return records;
}

std::vector<std::string> dataOf(const std::vector<ParsedRecording::Record>& records)
{
    std::vector<std::string> texts;
    std::transform(records.begin(), records.end(), std::back_inserter(texts),
                   [](const ParsedRecording::Record& record) { return record.data; });
    return texts;
}

std::vector<ParsedRecording::Record> changesIn(const ParsedRecording& recording)
{
    // Initial states stand one after the other from 10 ms on; changes get the time they came at, 11 ms at least.
    // So tests let some time pass first, and then this finds the border.
    std::vector<ParsedRecording::Record> records;
    std::copy_if(recording.records.begin(), recording.records.end(), std::back_inserter(records),
                 [](const ParsedRecording::Record& record) { return record.time >= 100; });
    return records;
}

}  // namespace RecorderTests
