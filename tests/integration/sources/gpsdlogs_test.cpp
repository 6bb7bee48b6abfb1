// Real logs of four receivers against what gpsd made of them, to the last digit that it prints.
#include "recordings.h"

namespace {

using nlohmann::json;

// As gpsd prints them.
constexpr int angleDigits = 9;
constexpr int altitudeDigits = 4;
constexpr int otherDigits = 3;

struct GpsdReport {
    std::string sentence;  // the one before it, as "VTG"
    json report;
};

std::vector<GpsdReport> readReports(const QString& path)
{
    std::vector<GpsdReport> out;
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    std::string sentence;
    while (!file.atEnd()) {
        const std::string line = file.readLine().toStdString();
        if (line.front() == '$') {
            sentence = line.substr(3, 3);
        } else if (line.front() == '{') {
            out.push_back({sentence, json::parse(line)});
        }
    }
    return out;
}

std::string text(double number, int digits)
{
    return QString::number(number, 'f', digits).toStdString();
}

// What gpsd told one after the other; the same again is no change.
std::vector<std::string> told(const std::vector<GpsdReport>& reports, const char* kind, const char* key, int digits,
                              const std::set<std::string>& after = {})
{
    std::vector<std::string> out;
    for (const GpsdReport& report : reports) {
        if (report.report.at("class") == kind && report.report.contains(key) &&
            (after.empty() || after.count(report.sentence) > 0)) {
            const std::string number = text(report.report.at(key), digits);
            if (out.empty() || out.back() != number) {
                out.push_back(number);
            }
        }
    }
    return out;
}

// gpsd does not report after every sentence, so that it may tell less.
void expectInOrder(const std::vector<std::string>& expected, const std::vector<std::string>& found)
{
    auto from = found.begin();
    for (const std::string& number : expected) {
        from = std::find(from, found.end(), number);
        ASSERT_NE(from, found.end()) << number << " is not recorded, or not in this order";
    }
}

// The value in force at a time.
std::string inForce(const std::vector<RecordedFile::Number>& numbers, unsigned long long timeUs, int digits)
{
    const auto behind = std::upper_bound(numbers.begin(), numbers.end(), timeUs,
                                         [](unsigned long long at, const auto& number) { return at < number.timeUs; });
    return behind == numbers.begin() ? "none" : text(std::prev(behind)->number, digits);
}

unsigned long long timeOf(const json& report)
{
    const auto time = QDateTime::fromString(QString::fromStdString(report.at("time")), Qt::ISODateWithMs);
    return static_cast<unsigned long long>(time.toMSecsSinceEpoch()) * 1000;
}

/// A log of real receivers, with what gpsd made of it beside it.
struct GpsdLog {
    const char* file;
    std::size_t fixes;
    bool tellsHeadings;
};

void PrintTo(const GpsdLog& log, std::ostream* out)
{
    *out << log.file;
}

class GpsdLogs : public RecordingTest, public testing::WithParamInterface<GpsdLog> {
protected:
    void SetUp() override
    {
        m_log = realData(GetParam().file);
        if (m_log.isEmpty()) {
            GTEST_SKIP() << "no real log: " << GetParam().file << " is missing";
        }
        m_reports = readReports(m_log + ".chk");
    }

    // The reports of a fix at their times, up to where the log's times go back: those are recorded at the latest.
    [[nodiscard]] std::vector<json> fixesInOrder() const
    {
        std::vector<json> out;
        for (const auto& [sentence, report] : m_reports) {
            if (report.contains("lat") && report.contains("time")) {
                out.push_back(report);
            }
        }
        const auto back = std::adjacent_find(out.begin(), out.end(),
                                             [](const json& a, const json& b) { return timeOf(b) < timeOf(a); });
        if (back != out.end()) {
            out.erase(back, out.end());
        }
        return out;
    }
    // Every report of a fix: what was in force at its time. Records of the same time are up to so much apart.
    void expectFixes(const RecordedFile& file, std::size_t count) const
    {
        constexpr unsigned long long sameTime = 40'000;
        const auto latitudes = file.numbers(Code::Latitude);
        const auto longitudes = file.numbers(Code::Longitude);
        const auto altitudes = file.numbers(Code::Altitude);
        const std::vector<json> fixes = fixesInOrder();
        EXPECT_EQ(fixes.size(), count);
        for (const json& report : fixes) {
            const unsigned long long at = timeOf(report) + sameTime;
            ASSERT_EQ(inForce(latitudes, at, angleDigits), text(report.at("lat"), angleDigits)) << report;
            ASSERT_EQ(inForce(longitudes, at, angleDigits), text(report.at("lon"), angleDigits)) << report;
            if (report.contains("altMSL")) {
                ASSERT_EQ(inForce(altitudes, at, altitudeDigits), text(report.at("altMSL"), altitudeDigits)) << report;
            }
        }
    }
    // gpsd works out a speed of its own from two positions until the receiver tells one: only the latter is compared.
    void expectOrders(const RecordedFile& file) const
    {
        const auto speeds = told(m_reports, "TPV", "speed", otherDigits, {"RMC", "VTG"});
        EXPECT_FALSE(speeds.empty());
        expectInOrder(speeds, file.changes(Code::Speed, otherDigits));
        expectInOrder(told(m_reports, "TPV", "lat", angleDigits), file.changes(Code::Latitude, angleDigits));
        expectInOrder(told(m_reports, "TPV", "lon", angleDigits), file.changes(Code::Longitude, angleDigits));
        expectInOrder(told(m_reports, "TPV", "altMSL", altitudeDigits), file.changes(Code::Altitude, altitudeDigits));
    }

    QString m_log;
    std::vector<GpsdReport> m_reports;
};

TEST_P(GpsdLogs, AreWhatGpsdMadeOfThem)
{
    const Result result = run({"nmea", m_log});
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    const RecordedFile file = readRecordedFile(result.path("receiver"));
    expectFixes(file, GetParam().fixes);
    expectOrders(file);
    if (GetParam().tellsHeadings) {
        EXPECT_EQ(file.changes(Code::TrueHeading, otherDigits), told(m_reports, "ATT", "heading", otherDigits));
    }
}

INSTANTIATE_TEST_SUITE_P(WithDatesInZdaOrPositionsInGllOrOfSeveralConstellations, GpsdLogs,
                         testing::Values(GpsdLog{"gpsd/hemi.log", 19, true},
                                         GpsdLog{"gpsd/humminbird-M37.log", 26, false},
                                         GpsdLog{"gpsd/quectelLC79D.log", 30, false}));

class CompassLog : public GpsdLogs {};

TEST_P(CompassLog, WithoutAnyTimeIsWhatGpsdMadeOfItAtTheTimeOfArrival)
{
    const QByteArray log = TestSupport::readBytes(m_log);
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    const Result result = run({"nmea", "-", "--variation", "0"}, log);
    const qint64 after = QDateTime::currentMSecsSinceEpoch();
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_THAT(result.messages, testing::HasSubstr("the standard input tells no date: times are those of arrival"));
    const RecordedFile file = readRecordedFile(result.path("receiver"));
    EXPECT_GE(static_cast<qint64>(file.startUs / 1000), before);
    EXPECT_LE(static_cast<qint64>(file.startUs / 1000), after);
    EXPECT_EQ(file.changes(Code::TrueHeading, otherDigits), told(m_reports, "ATT", "mheading", otherDigits));
    EXPECT_EQ(file.changes(Code::Pitch, otherDigits), told(m_reports, "ATT", "pitch", otherDigits));
    EXPECT_EQ(file.changes(Code::Roll, otherDigits), told(m_reports, "ATT", "roll", otherDigits));
}

INSTANTIATE_TEST_SUITE_P(OfAnAutopilot, CompassLog, testing::Values(GpsdLog{"gpsd/pypilot.log", 0, true}));

}  // namespace
