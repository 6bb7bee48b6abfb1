// Random changes of all kinds of values through the real plug-in: what stands in the files is what was noted beside.
#include <random>

#include "loaded_recorder.h"
#include "station.h"

namespace RecorderTests {
namespace {

struct Expected {
    std::int32_t typeId;
    std::uint64_t time;
    std::string text;
    bool rangeDef;

    bool operator==(const Expected&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Expected& record)
{
    return out << "type " << record.typeId << " at " << record.time << (record.rangeDef ? " range " : " ")
               << record.text;
}

/// Notes what a recorder is to write, from the notifications that reach it as an observer of its own. It knows the
/// rules by itself: which time, which type, which flag.
class Notes final : public IObserver {
public:
    explicit Notes(const ManualClock& clock) : m_clock(clock) {}
    ~Notes() override
    {
        for (const auto& [value, typeId] : m_types) {
            value->RemoveObserver(this);
        }
    }

    void watch(values::ValueBase& value, std::int32_t typeId)
    {
        m_types.emplace(&value, typeId);
        value.AddObserver(this);
    }
    void unwatch(values::ValueBase& value)
    {
        m_types.erase(&value);
        value.RemoveObserver(this);
    }

    void begin(std::size_t initialStates)
    {
        m_override = 0;  // while idle nobody took the time of a map
        m_start = now();
        m_moved = false;
        m_last = 9 + initialStates;
        records.clear();
    }
    void Update(void* subject, TChangeCode code) override
    {
        auto& value = *static_cast<values::ValueBase*>(subject);
        takeOwnTime(value);
        if (code == TChangeCode::Removed) {
            return;
        }
        const std::uint64_t elapsed = (now() > m_start ? now() - m_start : m_start - now()) / Millisecond;
        const std::uint64_t time = std::max({elapsed, std::uint64_t{11}, m_last + (m_last >= elapsed ? 1 : 0)});
        m_last = time;
        const std::int32_t typeId = m_types.at(&value);
        const std::string text = value.GetStringForRecording(true);
        const bool mayDefine = typeId == 1 || typeId == 2 || typeId == 32 || typeId == 48;
        records.push_back({typeId, time, text,
                           mayDefine && code == TChangeCode::CommandsPending && text.find("34;") != std::string::npos});
    }

    std::vector<Expected> records;

private:
    [[nodiscard]] unsigned long long now() const { return m_override != 0 ? m_override : m_clock.now; }
    void takeOwnTime(values::ValueBase& value)
    {
        const auto type = value.GetType();
        if (type != values::ValueType::LevelMap && type != values::ValueType::BearingMap) {
            return;
        }
        const unsigned long long own = dynamic_cast<values::MappingBase&>(value).GetTimeStamp();
        if (own == 0) {
            return;
        }
        m_override = own;
        if (!m_moved) {
            m_start = own;
            m_moved = true;
        }
    }

    const ManualClock& m_clock;
    std::map<values::ValueBase*, std::int32_t> m_types;
    unsigned long long m_override = 0;
    unsigned long long m_start = 0;
    bool m_moved = false;
    std::uint64_t m_last = 0;
};

/// Makes random changes of the values of a station.
class Device {
public:
    Device(Station& station, unsigned seed) : m_station(station), m_random(seed) {}

    void change()
    {
        m_station.clock.now += below(4) == 0 ? 0 : below(20'000'000);
        switch (below(9)) {
            case 0:
                return changeNumber("/LEVEL");
            case 1:
                return changeNumber("/Devices/Rx1/Scn/StartFreq");
            case 2:
                return m_station.value<Number>("/Devices/Rx1/Mon/RFYLIMIT").SetLimits(number(), number());
            case 3:
                return changeFrequency();
            case 4:
                return m_station.value<Flag>("/Devices/Rx1/Mon/SquelchState").SetValue(below(2) == 1);
            case 5:
                return m_station.value<Text>("/DEVICE_CAPTION").SetValue(caption());
            case 6:
                m_station.value<Selection>("/IFSPAN").SelectKey(static_cast<std::int32_t>(below(3)));
                return;
            case 7:
                return changeSpectrum(m_station.value<LevelMap>("/Devices/Rx1/Scn/RfSpectrum"));
            default:
                return changeSpectrum(m_station.value<LevelMap>("/Level2"));
        }
    }

    void changeBearings(BearingMap& map)
    {
        const values::Bearing bearing{number(), number(), number(), below(2) == 0 ? number() : std::nan("")};
        map.SetCell(below(map.size()), bearing, ownTime());
    }

    [[nodiscard]] std::size_t below(std::size_t limit) { return m_random() % limit; }

private:
    [[nodiscard]] double number() { return (static_cast<double>(m_random()) - 2e9) / 64; }
    [[nodiscard]] QString text()
    {
        static const QString characters = "x134;|\\ äß€\"#\n";
        QString made;
        for (std::size_t length = below(12); length > 0; --length) {
            made += characters[static_cast<int>(below(static_cast<std::size_t>(characters.size())))];
        }
        return made;
    }
    /// It stands in the names of files.
    [[nodiscard]] QString caption()
    {
        QString made = text();
#if defined(_WIN32)
        for (const char* refused : {"|", "\\", "\"", "\n", "€"}) {
            made.remove(QString::fromUtf8(refused));
        }
#endif
        return made;
    }
    [[nodiscard]] unsigned long long ownTime()
    {
        return below(3) == 0 ? 0 : m_station.clock.now + below(2'000'000) - 1'000'000;
    }
    void changeNumber(const QString& path)
    {
        m_station.value<Number>(path).SetValue(number());
    }
    void changeFrequency()
    {
        auto& frequency = m_station.value<OffsetNumber>("/FREQUENCY");
        if (below(2) == 0) {
            frequency.SetValue(number());
        } else {
            frequency.SetOffset(number());
        }
    }
    void changeSpectrum(LevelMap& map)
    {
        if (below(6) == 0) {
            map.SetChannelRange(below(2) == 0 ? values::ChannelRange::Even(number(), number(), 1 + below(40))
                                              : values::ChannelRange::List({number(), number(), 34}));
            return;
        }
        values::HandlerBase::SetDataCompressMode(below(4) != 0);
        std::vector<float> cells(1 + below(map.size()));
        for (float& cell : cells) {
            cell = static_cast<float>(below(10'000)) / -64;
        }
        map.SetCells(below(map.size() - cells.size() + 1), cells, ownTime());
    }

    Station& m_station;
    std::mt19937 m_random;
};

/// A station whose recorder records some of every kind of value, and their types in the order of the keywords.
class RandomRecording : public testing::TestWithParam<unsigned> {
protected:
    RandomRecording()
    {
        station.addAllKeywords();
        station.add<LevelMap>("/Level2");
        for (const char* path : {"/Devices/Rx1/Scn/RfSpectrum", "/Level2"}) {
            station.value<LevelMap>(path).SetChannelRange(values::ChannelRange::Even(88e6, 25e3, 16));
        }
        station.value<BearingMap>("/DfSpectrum").SetChannelRange(values::ChannelRange::Even(88e6, 25e3, 8));
    }
    /// @param spectrum a line of the recorder's configuration, for the value at a path
    void record(const QString& spectrum, const char* spectrumPath, std::int32_t spectrumId)
    {
        station.configure(QString(),
                          "LEVEL = \"/LEVEL\"\nSTARTFREQ = \"Scn/StartFreq\"\n"
                          "RFYLIMIT = \"Mon/RFYLIMIT\"\nFREQUENCY = \"/FREQUENCY\"\n"
                          "SQUELCHSTATE = \"Mon/SquelchState\"\n"
                          "DEVICE_CAPTION = \"/DEVICE_CAPTION\"\nIFSPAN = \"/IFSPAN\"\n"
                          "AZIMUTH = \"/Level2\"\n" +
                              spectrum);
        recorder = makeLoadedRecorder("Rx");
        for (const auto& [path, typeId] :
             std::initializer_list<std::pair<const char*, std::int32_t>>{{"/LEVEL", 36},
                                                                         {"/Devices/Rx1/Scn/StartFreq", 11},
                                                                         {"/Devices/Rx1/Mon/RFYLIMIT", 16},
                                                                         {"/FREQUENCY", 46},
                                                                         {"/Devices/Rx1/Mon/SquelchState", 17},
                                                                         {"/DEVICE_CAPTION", 47},
                                                                         {"/IFSPAN", 32},
                                                                         {"/Level2", 35},
                                                                         {spectrumPath, spectrumId}}) {
            watch(path, typeId);
        }
    }
    void watch(const char* path, std::int32_t typeId) { notes.watch(*station.tree.Find(path), typeId); }
    /// Compares the records after the initial states with the notes.
    void expectRecorded(std::size_t initialStates)
    {
        station.switchOff();
        const ParsedRecording recording = parsed(station.fileName());
        std::vector<Expected> found;
        for (std::size_t i = initialStates; i < recording.records.size(); ++i) {
            const auto& record = recording.records[i];
            const bool rangeDef = std::find(recording.rangeDefs.begin(), recording.rangeDefs.end(), record.time) !=
                                  recording.rangeDefs.end();
            found.push_back({record.code, record.time, record.data, rangeDef});
        }
        ASSERT_EQ(found.size(), notes.records.size());
        for (std::size_t i = 0; i < found.size(); ++i) {
            ASSERT_EQ(found[i], notes.records[i]) << "record " << i;
        }
    }

    Station station;
    Notes notes{station.clock};
    LoadedRecorder recorder;
};

INSTANTIATE_TEST_SUITE_P(Seeds, RandomRecording, testing::Range(1U, 21U));

TEST_P(RandomRecording, HoldsEveryChangeInOrderWithItsTime)
{
    record("RFSPECTRUM = \"Scn/RfSpectrum\"\n", "/Devices/Rx1/Scn/RfSpectrum", 1);
    Device device(station, GetParam());
    for (int file = 0; file < 3; ++file) {
        notes.begin(9);
        station.switchOn();
        for (int i = 0; i < 300; ++i) {
            device.change();
        }
        expectRecorded(9);
        device.change();  // nobody records it
        station.clock.now += Second;
    }
}

TEST_P(RandomRecording, HoldsBearingsWithTheirOwnTimes)
{
    record("DFSPECTRUM = \"/DfSpectrum\"\n", "/DfSpectrum", 20);
    Device device(station, GetParam());
    auto& bearings = station.value<BearingMap>("/DfSpectrum");
    for (int file = 0; file < 2; ++file) {
        notes.begin(9);
        station.switchOn();
        for (int i = 0; i < 300; ++i) {
            if (device.below(3) == 0) {
                device.changeBearings(bearings);
            } else if (device.below(2) == 0) {
                station.clock.now += device.below(50'000);
                station.value<Number>("/LEVEL").SetValue(i);
            }
        }
        expectRecorded(9);
    }
}

TEST_P(RandomRecording, HoldsNothingOfAValueThatWasRemoved)
{
    record("RFSPECTRUM = \"Scn/RfSpectrum\"\n", "/Devices/Rx1/Scn/RfSpectrum", 1);
    Device device(station, GetParam());
    notes.begin(9);
    station.switchOn();
    for (int i = 0; i < 50; ++i) {
        device.change();
    }
    notes.unwatch(station.value<Number>("/LEVEL"));
    station.tree.Remove("/LEVEL");
    station.add<Number>("/LEVEL");
    for (int i = 0; i < 50; ++i) {
        device.change();
    }
    expectRecorded(9);
}

}  // namespace
}  // namespace RecorderTests
