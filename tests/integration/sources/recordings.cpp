// Starts recstation, reads its summary, and takes the records out of its files.
#include "recordings.h"

#include <values/value.h>

std::vector<std::string> RecordedFile::texts(std::int32_t code) const
{
    std::vector<std::string> out;
    for (const Record& record : records) {
        if (record.code == code) {
            out.push_back(record.text);
        }
    }
    return out;
}

std::vector<RecordedFile::Number> RecordedFile::numbers(std::int32_t code) const
{
    std::vector<Number> out;
    bool initial = true;
    values::ValueNumeric<double> value;
    for (const Record& record : records) {
        if (record.code == code) {
            EXPECT_TRUE(value.ApplyRecordedState(record.text, 0, false)) << record.text;
            if (!std::exchange(initial, false)) {
                out.push_back({startUs + record.timeMs * 1000, value.GetValue()});
            }
        }
    }
    return out;
}

std::vector<std::string> RecordedFile::changes(std::int32_t code, int digits) const
{
    std::vector<std::string> out;
    for (const Number& change : numbers(code)) {
        out.push_back(std::isnan(change.number) ? "nan" : QString::number(change.number, 'f', digits).toStdString());
    }
    return out;
}

std::vector<RecordedFile::Spectrum> RecordedFile::spectra(std::int32_t code) const
{
    std::vector<Spectrum> out;
    values::FastValueMap<float, values::levelHandler> map;
    for (const Record& record : records) {
        if (record.code != code) {
            continue;
        }
        EXPECT_TRUE(map.ApplyRecordedState(record.text, 0, false)) << record.text.substr(0, 80);
        const std::vector<float> cells(map.GetCells().begin(), map.GetCells().end());
        if (map.GetTimeStamp() != 0) {
            out.push_back({startUs + record.timeMs * 1000, map.GetTimeStamp(), map.GetChannelRange(), cells});
        } else {
            EXPECT_TRUE(std::all_of(cells.begin(), cells.end(), [](float cell) { return std::isnan(cell); }));
        }
    }
    return out;
}

RecordedFile readRecordedFile(const std::string& path)
{
    Recording2::CFileAccess file(path.c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
    EXPECT_TRUE(file.IsValidFile()) << path;
    RecordedFile out;
    EXPECT_EQ(file.read(out.header), 1U) << path;
    out.startUs = out.header.startTS().getMicroSecs();
    file.readTables();
    Recording2::CVTCmdData record;
    while (const unsigned long long time = file.readAndReturnTimeOfCurrentCmd(record)) {
        out.records.push_back({time, record.cmd(), std::string(record.strData(), record.strDataLen())});
    }
    return out;
}

std::string RecordingTest::Result::path(const std::string& recorder) const
{
    std::vector<std::string> paths;
    for (const auto& file : summary.at("files")) {
        if (file.at("recorder") == recorder) {
            EXPECT_EQ(file.at("state"), "finished");
            paths.push_back(file.at("path"));
        }
    }
    EXPECT_EQ(paths.size(), 1U) << messages;
    return paths.size() == 1 ? paths.front() : std::string();
}

RecordingTest::RecordingTest()
{
    TestSupport::requireApplication();
}

void RecordingTest::start(QProcess& process, const QStringList& arguments) const
{
    process.setWorkingDirectory(m_directory.path());
    process.start(RECSTATION, QStringList{"--json"} + arguments);
    ASSERT_TRUE(process.waitForStarted(TestSupport::PatienceMs));
}

RecordingTest::Result RecordingTest::finish(QProcess& process)
{
    const TestSupport::ProgramResult ended = TestSupport::finish(process);
    return {ended.exitCode, ended.err, nlohmann::json::parse(ended.out, nullptr, false)};
}

void RecordingTest::awaitMessage(QProcess& process, const char* words)
{
    process.setReadChannel(QProcess::StandardError);
    QByteArray messages;
    while (!messages.contains(words)) {
        ASSERT_TRUE(process.waitForReadyRead(TestSupport::PatienceMs)) << messages.toStdString();
        messages += process.readAllStandardError();
    }
}

RecordingTest::Result RecordingTest::run(const QStringList& arguments, const QByteArray& input) const
{
    QProcess process;
    start(process, arguments);
    process.write(input);
    return finish(process);
}

QString RecordingTest::write(const char* name, const QByteArray& bytes) const
{
    QString path = m_directory.filePath(name);
    TestSupport::writeBytes(path, bytes);
    return path;
}

QString RecordingTest::realData(const char* name)
{
    const QString directory = qEnvironmentVariable("RECORDING2_TEST_DATA", QString::fromUtf8(TEST_DATA_DIRECTORY));
    const QString path = QDir(directory).absoluteFilePath(QString::fromLatin1(name));
    return QFile::exists(path) ? path : QString();
}
