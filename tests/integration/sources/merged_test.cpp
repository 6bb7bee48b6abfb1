// Several sources in one run: their changes merged by time, every record at its own.
#include <vector>

#include <gmock/gmock.h>

#include <values/maps.h>

#include "recordings.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

constexpr std::int32_t rfSpectrum = 1;
constexpr std::int32_t dfSpectrum = 20;
constexpr std::int32_t latitudeType = 25;
constexpr std::int32_t headingType = 41;
constexpr unsigned long long second = 1'000'000;
constexpr unsigned long long eight = 1'795'248'000'000'000;  // 2026-11-21 08:00:00 UTC

QByteArray drive(int seconds)
{
    QByteArray log;
    for (int i = 0; i < seconds; ++i) {
        log += QStringLiteral("$GPRMC,0800%1,A,52%2.0000,N,01330.0000,E,10.0,90.0,211126,,,A\n$HEHDT,%3,T\n")
                   .arg(i, 2, 10, QLatin1Char('0'))
                   .arg(i, 2, 10, QLatin1Char('0'))
                   .arg(100 + i)
                   .toLatin1();
    }
    return log;
}

void expectAscendingTimes(const RecordedFile& file)
{
    unsigned long long before = 0;
    for (const Record& record : file.records) {
        EXPECT_GT(record.timeMs, before);
        before = record.timeMs;
    }
}

std::vector<unsigned long long> timesOf(const RecordedFile& file, std::int32_t code)
{
    std::vector<unsigned long long> times;
    for (const Record& record : file.records) {
        if (record.code == code) {
            times.push_back(file.startUs + record.timeMs * 1000);
        }
    }
    return times;
}

class Merged : public RecordingTest {
protected:
    // Positions every second and headings half a second later, whatever else is recorded.
    void expectDrive(const RecordedFile& file, int seconds)
    {
        expectAscendingTimes(file);
        EXPECT_EQ(file.startUs, eight);
        const auto latitudes = file.numbers(latitudeType);
        const auto headings = file.numbers(headingType);
        ASSERT_THAT(latitudes, SizeIs(seconds));
        ASSERT_THAT(headings, SizeIs(seconds));
        for (std::size_t i = 1; i + 1 < latitudes.size(); ++i) {
            EXPECT_NEAR(static_cast<double>(latitudes[i].timeUs), static_cast<double>(eight + i * second), 10'000);
            EXPECT_NEAR(latitudes[i].number, 52 + static_cast<double>(i) / 60, 1e-12);
            EXPECT_NEAR(static_cast<double>(headings[i].timeUs), static_cast<double>(eight + i * second + second / 2),
                        10'000);
            EXPECT_EQ(headings[i].number, 100 + static_cast<double>(i));
        }
    }
};

TEST_F(Merged, PositionsBetweenSweepsHaveTheirOwnTimes)
{
    QByteArray csv;
    for (const char* time : {"08:00:05", "08:00:15", "08:00:25"}) {
        csv += QByteArray("2026-11-21, ") + time + ", 0, 4, 1, 1, -1, -2, -3, -4\n";
    }
    const Result result =
        run({QStringLiteral("sweep"), write("night.csv", csv), QStringLiteral("nmea"), write("drive.log", drive(40))});
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    ASSERT_THAT(result.summary.at("files"), SizeIs(1));
    const RecordedFile file = readRecordedFile(result.path("receiver"));
    expectDrive(file, 40);
    const auto sweeps = timesOf(file, rfSpectrum);
    ASSERT_THAT(sweeps, SizeIs(4));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(static_cast<double>(sweeps[i + 1]), static_cast<double>(eight + (5 + 10 * i) * second), 10'000);
    }
}

TEST_F(Merged, BearingsAndPositionsComeTogetherInTheDirectionFindersRecording)
{
    const QString log =
        write("log.csv", "date,time,frequency,azimuth\n2026-11-21,08:00:10.25,150,7\n2026-11-21,08:00:20.5,151,8\n");
    const Result result = run({QStringLiteral("bearings"), log, QStringLiteral("nmea"), write("drive.log", drive(40))});
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    ASSERT_THAT(result.summary.at("files"), SizeIs(1));
    EXPECT_THAT(result.messages, Not(HasSubstr("no position")));  // nmea tells it
    const RecordedFile file = readRecordedFile(result.path("df"));
    expectDrive(file, 40);
    const auto bearings = timesOf(file, dfSpectrum);
    ASSERT_THAT(bearings, SizeIs(3));
    EXPECT_NEAR(static_cast<double>(bearings[1]), static_cast<double>(eight + 10'250'000), 10'000);
    EXPECT_NEAR(static_cast<double>(bearings[2]), static_cast<double>(eight + 20'500'000), 10'000);
}

TEST_F(Merged, SourcesThatLieApartAreRefusedWithTheirSpansUnlessAGapIsAllowed)
{
    const QString csv = write("night.csv",
                              "2014-05-01, 08:00:00, 0, 4, 1, 1, -1, -2, -3, -4\n"
                              "2014-05-01, 08:20:00, 0, 4, 1, 1, -1, -2, -3, -4\n");
    const QStringList arguments{QStringLiteral("sweep"), csv, QStringLiteral("nmea"), write("drive.log", drive(10))};
    const Result refused = run(arguments);
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_THAT(refused.summary.at("failure").get<std::string>(),
                testing::AllOf(HasSubstr("sweep (2014-05-01 08:00:00 UTC to 2014-05-01 08:20:00 UTC)"),
                               HasSubstr("nmea (2026-11-21 08:00:00 UTC to 2026-11-21 08:00:09 UTC)"),
                               HasSubstr("--allow-gap")));
    EXPECT_THAT(refused.summary.at("files"), SizeIs(0));
    const Result allowed = run(arguments + QStringList(QStringLiteral("--allow-gap")));
    EXPECT_EQ(allowed.exitCode, 0) << allowed.messages;
    EXPECT_THAT(allowed.summary.at("files"), SizeIs(1));
    const Result parted = run(arguments + QStringList(QStringLiteral("--split-on-gap=1h")));
    EXPECT_EQ(parted.exitCode, 0) << parted.messages;
    EXPECT_THAT(parted.summary.at("files"), SizeIs(2));
}

TEST_F(Merged, ADriveBehindALaterOneIsARecordingOfItsOwnWhereGapsPartThem)
{
    const QByteArray later = drive(10).replace("GPRMC,08", "GPRMC,09");
    const Result result =
        run({QStringLiteral("nmea"), write("drives.log", later + drive(10)), QStringLiteral("--split-on-gap")});
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    ASSERT_THAT(result.summary.at("files"), SizeIs(2));
    EXPECT_THAT(result.messages,
                HasSubstr("the time leaps from 2026-11-21 09:00:09 UTC to 2026-11-21 08:00:00 UTC: a new recording"));
    const RecordedFile first = readRecordedFile(result.summary.at("files")[0].at("path"));
    const RecordedFile behind = readRecordedFile(result.summary.at("files")[1].at("path"));
    EXPECT_EQ(first.startUs, eight + 3600 * second);
    EXPECT_EQ(behind.startUs, eight);
    const auto latitudes = behind.numbers(latitudeType);
    ASSERT_THAT(latitudes, SizeIs(10));
    EXPECT_NEAR(static_cast<double>(latitudes[9].timeUs), static_cast<double>(eight + 9 * second), 10'000);
    EXPECT_EQ(result.summary.at("recordedMs"), 18'000);
}

TEST_F(Merged, TwoSourcesOfOneSpectrumAreRefused)
{
    const QString csv = write("night.csv", "2026-11-21, 08:00:00, 0, 4, 1, 1, -1, -2, -3, -4\n");
    const Result result = run({QStringLiteral("sim"), QStringLiteral("sweep"), csv});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.summary.at("failure").get<std::string>(), HasSubstr("sim and sweep both show the spectrum"));
}

TEST_F(Merged, TheStandardInputHasOneReader)
{
    const Result result =
        run({QStringLiteral("nmea"), QStringLiteral("-"), QStringLiteral("sweep"), QStringLiteral("-")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.summary.at("failure").get<std::string>(),
                HasSubstr("sweep and nmea cannot both read the standard input"));
}

#if defined(RECSTATION_HAS_IQ)
TEST_F(Merged, SamplesALogAndBearingsOfDifferentTimesMakeTwoRecordingsOfOneTime)
{
    const QString samples = realData("modes1.bin");
    if (samples.isEmpty()) {
        GTEST_SKIP() << "no real samples: modes1.bin is missing";
    }
    const QString log = write("log.csv", "date,time,frequency,azimuth\n2026-11-21,08:00:30.75,150,7\n");
    const Result result =
        run({QStringLiteral("iq"), samples, QStringLiteral("--format"), QStringLiteral("cu8"), QStringLiteral("--rate"),
             QStringLiteral("2e6"), QStringLiteral("--centre"), QStringLiteral("1090e6"), QStringLiteral("--start"),
             QStringLiteral("2026-11-21T08:00:10.5Z"), QStringLiteral("bearings"), log, QStringLiteral("nmea"),
             write("drive.log", drive(40))});
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    const RecordedFile receiver = readRecordedFile(result.path("receiver"));
    const RecordedFile finder = readRecordedFile(result.path("df"));
    expectDrive(receiver, 40);
    expectDrive(finder, 40);
    const auto spectra = timesOf(receiver, rfSpectrum);
    constexpr std::size_t frames = 43;
    ASSERT_THAT(spectra, SizeIs(frames + 1));
    for (std::size_t i = 0; i < frames; ++i) {
        // A frame lasts 4.096 ms; the few records of one moment stand a millisecond apart.
        EXPECT_NEAR(static_cast<double>(spectra[i + 1]),
                    static_cast<double>(eight + 10'500'000) + 4096 * static_cast<double>(i), 5'000);
    }
    const auto bearings = timesOf(finder, dfSpectrum);
    ASSERT_THAT(bearings, SizeIs(2));
    EXPECT_NEAR(static_cast<double>(bearings[1]), static_cast<double>(eight + 30'750'000), 5'000);
}
#endif

}  // namespace
