// MappingGenerator on random recordings of a live bearing map: what is replayed is what the map held.
#include "bearingrecording.h"

namespace {

using namespace ReplayTests;

/// A bearing map that is used at random, with the text of every change and the state after it.
class LiveStation final : public IObserver {
public:
    explicit LiveStation(std::uint32_t seed) : m_dice(seed)
    {
        m_map.SetChannelRange(values::ChannelRange::Even(1e8, 25'000, 4));
        m_map.CommandRecordingOn();
        m_map.AddObserver(this);
        note(DfSpectrum, m_map.GetObjectStateStringForRecording());
    }
    ~LiveStation() override { m_map.RemoveObserver(this); }
    LiveStation(const LiveStation&) = delete;
    LiveStation& operator=(const LiveStation&) = delete;

    void Update(void* /*subject*/, TChangeCode code) override
    {
        EXPECT_EQ(code, TChangeCode::CommandsPending);
        note(DfSpectrum, m_map.GetStringForRecording(true));
    }
    void step()
    {
        m_now += m_dice.oneIn(4) ? 0 : m_dice.below(40);
        if (m_dice.oneIn(5)) {
            note(Level, "3;" + std::to_string(m_dice.below(100)) + ",0,100");
        } else if (m_dice.oneIn(8)) {
            m_map.SetChannelRange(range());
        } else {
            measure();
        }
    }

    std::vector<StoredRecord> records;
    std::vector<std::string> states;  ///< after each record

private:
    void note(std::int32_t code, const std::string& text)
    {
        records.push_back({m_now, code, text, carriesRange(text)});
        states.push_back(m_map.GetObjectStateStringForRecording());
    }
    values::ChannelRange range()
    {
        const std::size_t count = 1 + m_dice.below(12);
        if (m_dice.oneIn(2)) {
            return values::ChannelRange::Even(1e8 + 1e6 * static_cast<double>(m_dice.below(50)), 12'500, count);
        }
        std::vector<double> channels(count);
        for (double& hz : channels) {
            hz = 1e8 + 0.1 * static_cast<double>(m_dice.below(1'000'000));
        }
        return values::ChannelRange::List(channels);
    }
    void measure()
    {
        const std::size_t first = m_dice.below(m_map.size());
        std::vector<values::Bearing> cells(1 + m_dice.below(m_map.size() - first));
        for (values::Bearing& cell : cells) {
            cell.azimuthDeg = measurement(3600);
            cell.elevationDeg = measurement(900);
            cell.levelDb = measurement(1200);
            cell.quality = measurement(1000);
        }
        m_map.SetCells(first, cells, m_dice.below(1'000'000));
    }
    double measurement(std::size_t count)
    {
        return m_dice.oneIn(6) ? std::numeric_limits<double>::quiet_NaN()
                               : static_cast<double>(m_dice.below(count)) / 10;
    }

    Dice m_dice;
    LiveMap m_map;
    std::uint64_t m_now = 12;
};

struct Case {
    std::uint32_t seed = 0;
    bool compressed = true;
};

void PrintTo(const Case& one, std::ostream* out)
{
    *out << "seed " << one.seed << (one.compressed ? ", compressed" : ", not compressed");
}

class RandomRecordingTest : public MappingTest, public testing::WithParamInterface<Case> {
protected:
    static constexpr int Steps = 50;
    static constexpr int Spans = 12;

    void SetUp() override
    {
        values::HandlerBase::SetDataCompressMode(GetParam().compressed);
        LiveStation station(GetParam().seed);
        for (int i = 0; i < Steps; ++i) {
            station.step();
        }
        m_records = station.records;
        m_states = station.states;
        record(m_records);
        ASSERT_TRUE(load());
        m_end = m_records.back().time;
    }
    void TearDown() override { values::HandlerBase::SetDataCompressMode(m_compressMode); }

    std::string replayed(std::uint64_t start, std::uint64_t stop)
    {
        BearingMap map;
        request(map, start, stop);
        return stateOf(map);
    }
    [[nodiscard]] std::string liveAt(std::uint64_t time) const
    {
        const auto behind = std::find_if(m_records.begin(), m_records.end(),
                                         [time](const StoredRecord& record) { return record.time > time; });
        return m_states.at(static_cast<std::size_t>(behind - m_records.begin()) - 1);
    }
    [[nodiscard]] std::uint64_t firstDefinition() const { return m_records.front().time; }

    const bool m_compressMode = values::HandlerBase::GetDataCompressMode();
    Dice m_dice{GetParam().seed + 1000};
    std::vector<StoredRecord> m_records;
    std::vector<std::string> m_states;
    std::uint64_t m_end = 0;
};

std::vector<Case> cases()
{
    std::vector<Case> all;
    for (std::uint32_t seed = 1; seed <= 12; ++seed) {
        all.push_back({seed, true});
        all.push_back({seed, false});
    }
    return all;
}

}  // namespace

TEST_P(RandomRecordingTest, FromTheFirstDefinitionTheMapIsTheLiveOneAtTheEndOfTheSpan)
{
    for (int i = 0; i < Spans; ++i) {
        const std::uint64_t stop = firstDefinition() + m_dice.below(m_end + 50);
        ASSERT_EQ(replayed(firstDefinition(), stop), liveAt(stop)) << "to " << stop;
    }
}

TEST_P(RandomRecordingTest, FromLaterTheMapIsTheRangeInForceWithTheChangesOfTheSpan)
{
    for (int i = 0; i < Spans; ++i) {
        const std::uint64_t start = m_records[m_dice.below(m_records.size())].time;
        const std::uint64_t stop = start + m_dice.below(m_end);
        std::vector<std::string> texts(1);
        for (const StoredRecord& record : m_records) {
            if (record.isDefinition && record.time <= start) {
                texts.front() = record.text;
            }
        }
        for (const StoredRecord& record : m_records) {
            if (record.code == DfSpectrum && record.time >= start && record.time <= stop) {
                texts.push_back(record.text);
            }
        }
        ASSERT_EQ(replayed(start, stop), stateAfter(texts)) << start << " to " << stop;
    }
}

TEST_P(RandomRecordingTest, FromADefinitionTheMapIsTheLiveOneAtTheEndOfTheSpan)
{
    for (const StoredRecord& record : m_records) {
        if (record.isDefinition) {
            const std::uint64_t stop = record.time + m_dice.below(m_end);
            ASSERT_EQ(replayed(record.time, stop), liveAt(stop)) << record.time << " to " << stop;
        }
    }
}

TEST_P(RandomRecordingTest, AnySpanIsReplayedStepByStep)
{
    StepReplay steps(m_records);
    for (int i = 0; i < 3 * Spans; ++i) {
        const std::uint64_t start = m_dice.oneIn(6) ? 0 : m_dice.below(m_end + 100);
        const std::uint64_t stop = m_dice.below(m_end + 100);
        ASSERT_EQ(replayed(start, stop), stateAfter(steps.texts(start, stop))) << start << " to " << stop;
    }
}

TEST_P(RandomRecordingTest, TheReportedSpanAppliesEveryTextOnce)
{
    BearingMap map;
    const ChangeCounter changes(map);
    m_generator.RequestMapping(map, m_start, m_stop);

    BearingMap expected;
    const ChangeCounter expectedChanges(expected);
    for (const StoredRecord& record : m_records) {
        if (record.code == DfSpectrum) {
            expected.ApplyRecordedState(record.text, 0, true);
        }
    }
    EXPECT_EQ(changes.stamps(), expectedChanges.stamps());
    EXPECT_EQ(stateOf(map), m_states.back());
}

INSTANTIATE_TEST_SUITE_P(Cases, RandomRecordingTest, testing::ValuesIn(cases()));

namespace {

/// Recordings whose flags, texts and time tables are any that a file can hold.
class RandomDamageTest : public MappingTest, public testing::WithParamInterface<std::uint32_t> {
protected:
    std::vector<StoredRecord> randomRecords()
    {
        std::vector<StoredRecord> records;
        std::uint64_t time = 8;
        for (std::size_t i = 0; i < 40; ++i) {
            time += m_dice.oneIn(2) ? 1 : 1 + m_dice.below(20);
            const std::string number = std::to_string(i + 1);
            std::string text = "7;" + number + "|51;0," + number + "/";
            if (m_dice.oneIn(5)) {
                text = "7;" + number + "|34;" + number + ",1,2|50;//";
            }
            records.push_back({time, m_dice.oneIn(4) ? Level : DfSpectrum, text, m_dice.oneIn(6), !m_dice.oneIn(5)});
        }
        records.at(5).isDefinition = true;
        records.front().indexed = true;
        return records;
    }
    /// Lays the file out with a time table that lacks the records that are not indexed.
    void lay(const std::vector<StoredRecord>& records) const
    {
        TestSupport::ByteBuilder file(TestSupport::headerArea());
        HeaderFields header{.startMs = StartMs, .stopMs = StopMs, .firstRecord = file.position()};
        TestSupport::ByteBuilder times;
        Times definitions;
        for (const StoredRecord& record : records) {
            if (record.indexed) {
                times.time(record.time).number(file.position());
            }
            if (record.isDefinition) {
                definitions.insert(record.time);
            }
            file.raw(TestSupport::recordBytes(record.code, record.text));
        }
        header.timeTable = file.position();
        file.raw(times.bytes());
        header.channelRangeTable = file.position();
        file.raw(rangeTable(definitions)).overwrite(0, header.bytes());
        TestSupport::writeFile(filePath(Name), file.bytes());
    }

    Dice m_dice{GetParam()};
};

}  // namespace

TEST_P(RandomDamageTest, ATimeTableThatLacksRecordsIsReplayedStepByStep)
{
    const std::vector<StoredRecord> records = randomRecords();
    lay(records);
    ASSERT_TRUE(load());
    StepReplay steps(records);
    for (int i = 0; i < 60; ++i) {
        const std::uint64_t start = m_dice.below(records.back().time + 20);
        const std::uint64_t stop = m_dice.below(records.back().time + 20);
        BearingMap map;
        const ChangeCounter changes(map);
        request(map, start, stop);
        BearingMap expected;
        const ChangeCounter expectedChanges(expected);
        for (const std::string& text : steps.texts(start, stop)) {
            expected.ApplyRecordedState(text, 0, true);
        }
        ASSERT_EQ(stateOf(map), stateOf(expected)) << start << " to " << stop;
        ASSERT_EQ(changes.stamps(), expectedChanges.stamps()) << start << " to " << stop;
    }
}

TEST_P(RandomDamageTest, WithoutAnyTimeTheWalkEndsAtTheTimeTable)
{
    std::vector<StoredRecord> records = randomRecords();
    for (StoredRecord& record : records) {
        record.indexed = false;
    }
    lay(records);
    ASSERT_TRUE(load());
    StepReplay steps(records);
    BearingMap map;
    m_generator.RequestMapping(map, m_start, m_stop);
    EXPECT_EQ(stateOf(map), stateAfter(steps.texts(0, StopMs - StartMs, true)));
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomDamageTest, testing::Range(1U, 25U));
