// The simulated receiver and direction finder: keywords, spectra, bearings, the drive, and the seed.
#include "sources/sim/simsource.h"

#include <QCryptographicHash>

#include "scheduler.h"
#include "sources/sim/scenery.h"
#include "sources/sim/simvalues.h"
#include "support/testing.h"

namespace RecStation {
namespace {

std::vector<Instance> receiverAndFinder()
{
    Instance receiver;
    receiver.name = QStringLiteral("receiver");
    receiver.valuePath = QStringLiteral("/Devices/Rx1");
    Instance finder;
    finder.name = QStringLiteral("df");
    finder.valuePath = QStringLiteral("/Devices/Df1");
    finder.directionFinding = true;
    return {receiver, finder};
}

// Sees every change of every value, as a recorder would.
class Witness final : public IObserver {
public:
    Witness(const values::Tree& tree, const SimulatedClock& clock) : m_clock(clock)
    {
        for (const QString& path : tree.Paths()) {
            values::ValueBase* value = tree.Find(path);
            value->CommandRecordingOn();
            value->AddObserver(this);
            add(path, value->GetObjectStateStringForRecording());
        }
    }

    void Update(void* subject, TChangeCode /*code*/) override
    {
        auto* value = static_cast<values::ValueBase*>(subject);
        add(value->GetPath(), value->GetStringForRecording(true));
        ++changes[value->GetPath().toStdString()];
        times[value->GetPath().toStdString()].push_back(m_clock.CurrentTime());
    }

    [[nodiscard]] std::string hash() const { return m_hash.result().toHex().toStdString(); }

    std::map<std::string, int> changes;
    std::map<std::string, std::vector<unsigned long long>> times;

private:
    void add(const QString& path, const std::string& text)
    {
        m_hash.addData(QStringLiteral("%1 %2 ").arg(m_clock.CurrentTime()).arg(path).toUtf8());
        m_hash.addData(QByteArray::fromStdString(text) + '\n');
    }

    const SimulatedClock& m_clock;
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
};

class SimSourceTest : public testing::Test {
protected:
    SimSourceTest()
    {
        m_options.durationSeconds = 60;
        m_options.seed = 1;
    }

    // A run in a tree of its own.
    struct Run {
        explicit Run(const SimOptions& options)
        {
            scheduler.add(makeSimSource(options, receiverAndFinder()));
            scheduler.prepare();
            clock.set(options.startTime);
            witness = std::make_unique<Witness>(tree, clock);
        }

        void toEnd()
        {
            while (scheduler.nextTime()) {
                scheduler.step();
            }
        }

        SimulatedClock clock;
        std::unique_ptr<Witness> witness;
        values::Tree tree;
        Scheduler scheduler{clock};
    };

    static std::string hashOf(const SimOptions& options)
    {
        Run run(options);
        run.toEnd();
        return run.witness->hash();
    }

    SimOptions m_options;
};

TEST_F(SimSourceTest, EveryKeywordHasAValueOfTheTypeThatTheRecorderExpects)
{
    using values::ValueType;
    const Run run(m_options);
    const std::set<std::string> selections = {"DRVCOMMANDS", "SEARCHSCANMODE", "MODULATION",
                                              "ANTENNA",     "IFSPAN",         "OPERATEMODE"};
    const std::set<std::string> texts = {"DEVICENAME", "DEVICETYPE", "DEVICE_CAPTION", "DFSPECTRUMSAMPLE"};
    std::set<std::string> keywords;
    for (const Sim::KeywordValue& row : Sim::keywordValues()) {
        const std::string keyword = row.keyword;
        keywords.insert(keyword);
        for (const QString root : {"/Devices/Rx1/", "/Devices/Df1/"}) {
            const QString path = row.path[0] == '/' ? QString::fromLatin1(row.path) : root + QLatin1String(row.path);
            const values::ValueBase* value = run.tree.Find(path);
            ASSERT_NE(value, nullptr) << path.toStdString();
            EXPECT_EQ(value->GetType(), row.type) << keyword;
            EXPECT_EQ(value->GetType() == ValueType::Selection, selections.count(keyword) == 1) << keyword;
            EXPECT_EQ(value->GetType() == ValueType::String, texts.count(keyword) == 1) << keyword;
            EXPECT_EQ(value->GetType() == ValueType::NumericWithOffset, keyword == "FREQUENCY") << keyword;
            EXPECT_EQ(value->GetType() == ValueType::BearingMap, keyword == "DFSPECTRUM") << keyword;
        }
    }
    EXPECT_EQ(keywords.size(), 48U);
    EXPECT_NE(Sim::findValue<values::ValueSelection>("/Devices/Rx1/AntennaMode"), nullptr);
}

TEST_F(SimSourceTest, ASeedGivesTheSameTextsOnEveryMachine)
{
    m_options.durationSeconds = 45;
    EXPECT_EQ(hashOf(m_options), "efcf5ee13facb7f89f595a2310c0fc1d0f4af3e0ca3b9a4e047630b2d93e5ec2");
}

TEST_F(SimSourceTest, AnotherSeedGivesOtherTexts)
{
    SimOptions other = m_options;
    other.seed = 2;
    EXPECT_NE(hashOf(m_options), hashOf(other));
}

TEST_F(SimSourceTest, ItLastsAsLongAsAskedFrom)
{
    Run run(m_options);
    EXPECT_EQ(run.scheduler.nextTime(), m_options.startTime);
    run.toEnd();
    EXPECT_EQ(run.clock.CurrentTime(), m_options.startTime + 60'000'000);
}

TEST_F(SimSourceTest, RfAndIfSpectraTakeTurnsWithTheMode)
{
    Run run(m_options);
    int rf = 0;
    int inIf = 0;
    while (run.scheduler.nextTime()) {
        const int rfBefore = run.witness->changes["/Devices/Rx1/Scn/RfSpectrum"];
        const int ifBefore = run.witness->changes["/IfMapping"];
        run.scheduler.step();
        const auto key = Sim::findValue<values::ValueSelection>("/Devices/Rx1/Gen/DRVCOMMANDS")->GetCurrentKey();
        const bool rfChanged = run.witness->changes["/Devices/Rx1/Scn/RfSpectrum"] != rfBefore;
        const bool ifChanged = run.witness->changes["/IfMapping"] != ifBefore;
        EXPECT_TRUE(!rfChanged || key == Sim::ScanKey);
        EXPECT_TRUE(!ifChanged || key == Sim::MonitorKey);
        rf += rfChanged ? 1 : 0;
        inIf += ifChanged ? 1 : 0;
    }
    EXPECT_GT(rf, 50);
    EXPECT_GT(inIf, 20);
}

TEST_F(SimSourceTest, TheBandShowsNoiseAndCarriers)
{
    m_options.durationSeconds = 5;
    Run run(m_options);
    run.toEnd();
    const auto* spectrum = Sim::findValue<Sim::LevelMap>("/Devices/Rx1/Scn/RfSpectrum");
    ASSERT_EQ(spectrum->size(), 1601U);
    double sum = 0;
    for (const float cell : spectrum->GetCells()) {
        sum += static_cast<double>(cell);
    }
    EXPECT_NEAR(sum / 1601, -107, 1.5);
    const std::size_t carrier = static_cast<std::size_t>((431.7e6 - Sim::BandStartHz) / Sim::BandStepHz + 0.5);
    EXPECT_GT(spectrum->GetCells()[carrier], -80.0F);
}

TEST_F(SimSourceTest, BearingsPointAtTheTransmittersAndCarryTheirOwnTime)
{
    m_options.durationSeconds = 5;
    Run run(m_options);
    run.toEnd();
    const auto* bearings = Sim::findValue<Sim::BearingMap>("/DfSpectrum");
    EXPECT_EQ(bearings->GetTimeStamp(), m_options.startTime + 5'000'000);
    // The carrier at 431.7 MHz stands 2400 m east and 2900 m north of the start; the vehicle drives north at first.
    const auto& cell = bearings->GetCells()[68];
    EXPECT_NEAR(cell.azimuthDeg, 40, 8);
    EXPECT_GT(cell.quality, 40);
    EXPECT_TRUE(std::isnan(bearings->GetCells()[0].azimuthDeg));
}

TEST_F(SimSourceTest, TheVehicleMovesAndTurns)
{
    m_options.durationSeconds = 200;
    Run run(m_options);
    run.toEnd();
    const auto* latitude = Sim::findValue<values::ValueNumeric<double>>("/LOCATIONLATITUDE");
    const auto* longitude = Sim::findValue<values::ValueNumeric<double>>("/LOCATIONLONGITUDE");
    const double metres = std::hypot((latitude->GetValue() - Sim::OriginLatitude) * 111'200,
                                     (longitude->GetValue() - Sim::OriginLongitude) * 72'290);
    EXPECT_GT(metres, 500);
    EXPECT_LT(metres, 1'700);
    EXPECT_GT(run.witness->changes["/TRUEHEADING"], 1);
}

TEST_F(SimSourceTest, TheFinderStaysInItsModeAndItsAntennaOnDirectionFinding)
{
    Run run(m_options);
    run.toEnd();
    const auto* mode = Sim::findValue<values::ValueSelection>("/Devices/Df1/Gen/DRVCOMMANDS");
    const auto* antenna = Sim::findValue<values::ValueSelection>("/Devices/Df1/AntennaMode");
    EXPECT_EQ(mode->GetCurrentKey(), Sim::DirectionFindingKey);
    EXPECT_EQ(antenna->GetText(), "DF");
}

TEST_F(SimSourceTest, AValueThatIsTakenAwayStaysAway)
{
    Run run(m_options);
    for (const char* path : {"/DfSpectrum", "/IfMapping", "/LEVEL", "/IFSPAN"}) {
        run.tree.Remove(QString::fromLatin1(path));
    }
    run.toEnd();
    EXPECT_EQ(run.tree.Find("/LEVEL"), nullptr);
}

}  // namespace
}  // namespace RecStation
