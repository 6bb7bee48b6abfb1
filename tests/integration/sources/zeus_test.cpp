// A yacht's real log, recorded and read back, against what the text says when it is read without the code under test.
#include "recordings.h"

namespace {

using testing::SizeIs;

// What the log says in its order. A number that stays the same is no change, so it is no record.
struct Extract {
    std::vector<double> latitudes;
    std::vector<double> longitudes;
    std::vector<double> altitudes;
    std::set<long long> speeds;  // micrometres a second; those without a time change places with those that have one
    std::vector<double> headings;
    std::size_t sentences = 0;

    static void add(std::vector<double>& changes, double number)
    {
        if (changes.empty() || std::abs(changes.back() - number) > 1e-9) {
            changes.push_back(number);
        }
    }
};

double degrees(const QString& field, int degreeDigits)
{
    return field.left(degreeDigits).toDouble() + field.mid(degreeDigits).toDouble() / 60;
}

// The log's GGA, GLL, RMC, VTG and HDG all are valid, north and east; the variation is 1.3 degrees east throughout.
Extract extract(const QString& path)
{
    Extract out;
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    while (!file.atEnd()) {
        const QStringList fields = QString::fromLatin1(file.readLine()).split(QLatin1Char(','));
        const QString type = fields[0].mid(3);
        const bool gga = type == QLatin1String("GGA");
        const bool gll = type == QLatin1String("GLL");
        const bool rmc = type == QLatin1String("RMC");
        if (gga || gll || rmc) {
            const int first = gga ? 2 : gll ? 1 : 3;
            EXPECT_EQ(fields[first + 1] + fields[first + 3], "NE");
            Extract::add(out.latitudes, degrees(fields[first], 2));
            Extract::add(out.longitudes, degrees(fields[first + 2], 3));
        }
        if (gga) {
            Extract::add(out.altitudes, fields[9].toDouble());
        }
        if (rmc || type == QLatin1String("VTG")) {
            out.speeds.insert(std::llround(fields[rmc ? 7 : 5].toDouble() * 1852e6 / 3600));
        }
        if (type == QLatin1String("HDG")) {
            EXPECT_EQ(fields[4], "1.3");
            Extract::add(out.headings, fields[1].toDouble() + 1.3);
        }
        out.sentences += gga || gll || rmc || type == QLatin1String("VTG") || type == QLatin1String("HDG") ? 1U : 0U;
    }
    return out;
}

class Zeus : public RecordingTest {
protected:
    void SetUp() override
    {
        m_log = realData("bundg_zeus_9.log");
        if (m_log.isEmpty()) {
            GTEST_SKIP() << "no real log: bundg_zeus_9.log is missing";
        }
    }

    QString m_log;
};

void expectNumbers(const RecordedFile& file, std::int32_t code, const std::vector<double>& expected)
{
    const auto recorded = file.numbers(code);
    ASSERT_EQ(recorded.size(), expected.size()) << "type " << code;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_NEAR(recorded[i].number, expected[i], 1e-9) << "type " << code << ", number " << i;
    }
}

TEST_F(Zeus, EveryHeadingAndPositionComesBack)
{
    const Result result = run({"nmea", m_log});
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    const Extract expected = extract(m_log);
    ASSERT_GT(expected.headings.size(), 1000U);
    const RecordedFile file = readRecordedFile(result.path("receiver"));
    expectNumbers(file, Code::TrueHeading, expected.headings);
    expectNumbers(file, Code::Latitude, expected.latitudes);
    expectNumbers(file, Code::Longitude, expected.longitudes);
    expectNumbers(file, Code::Altitude, expected.altitudes);
    std::set<long long> speeds;
    for (const auto& speed : file.numbers(Code::Speed)) {
        speeds.insert(std::llround(speed.number * 1e6));
    }
    EXPECT_EQ(speeds, expected.speeds);
    const auto& source = result.summary.at("sources")[0];
    EXPECT_EQ(source.at("used"), expected.sentences);
    EXPECT_EQ(source.at("skipped"), 4999 - expected.sentences);
    EXPECT_EQ(source.at("bad"), 0);
}

TEST_F(Zeus, TimesAreThoseOfTheSentences)
{
    const Result result = run({"nmea", m_log});
    const RecordedFile file = readRecordedFile(result.path("receiver"));
    const QDateTime first(QDate(2018, 8, 20), QTime(9, 47, 36), Qt::UTC);
    EXPECT_EQ(file.startUs, static_cast<unsigned long long>(first.toMSecsSinceEpoch()) * 1000);
    EXPECT_EQ(result.summary.at("recordedMs"), 148'000);
    unsigned long long before = 0;
    for (const Record& record : file.records) {
        EXPECT_GT(record.timeMs, before);
        before = record.timeMs;
    }
    // Positions come about every second. The first second also holds the initial states.
    const auto latitudes = file.numbers(Code::Latitude);
    for (std::size_t i = 2; i < latitudes.size(); ++i) {
        EXPECT_LT(latitudes[i].timeUs % 1'000'000, 20'000U);
    }
    // The compass tells ten headings a second, which spread over it.
    const auto headings = file.numbers(Code::TrueHeading);
    for (std::size_t i = 21; i < headings.size() - 20; ++i) {
        EXPECT_LT(headings[i].timeUs - headings[i - 20].timeUs, 8'000'000U) << i;
        EXPECT_GT(headings[i].timeUs - headings[i - 20].timeUs, 1'000'000U) << i;
    }
}

TEST_F(Zeus, TheStandardInputGivesTheSameRecords)
{
    const RecordedFile piped = readRecordedFile(run({"nmea", "-"}, TestSupport::readBytes(m_log)).path("receiver"));
    const RecordedFile file = readRecordedFile(run({"nmea", m_log}).path("receiver"));
    ASSERT_EQ(piped.records.size(), file.records.size());
    for (std::size_t i = 0; i < file.records.size(); ++i) {
        EXPECT_EQ(piped.records[i].timeMs, file.records[i].timeMs);
        EXPECT_EQ(piped.records[i].text, file.records[i].text);
    }
}

TEST_F(Zeus, DamageIsReportedAndStrictRefusesIt)
{
    QByteArray bytes = TestSupport::readBytes(m_log);
    bytes.replace("$SDHDG,230.0,,,1.3,E*36", "$SDHDG,231.0,,,1.3,E*36");
    const QString damaged = write("damaged.log", bytes);
    const Result result = run({"nmea", damaged});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.messages, testing::HasSubstr("nmea: line 10: the checksum is wrong"));
    EXPECT_GE(result.summary.at("sources")[0].at("bad"), 1);
    const Result strict = run({"nmea", "--strict", damaged});
    EXPECT_EQ(strict.exitCode, 2);
    EXPECT_THAT(strict.summary.at("failure").get<std::string>(), testing::HasSubstr("line 10"));
}

}  // namespace
