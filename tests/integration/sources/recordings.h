// The real program run on files of a test, and what its recordings hold.
#pragma once

#include <nlohmann/json.hpp>

#include <recording2/fileaccess.h>
#include <values/maps.h>
#include <values/value.h>

#include "support/program.h"

/// Of the keywords that are looked at.
namespace Code {
enum : std::int32_t {
    RfSpectrum = 1,
    IfSpectrum = 2,
    Bandwidth = 5,
    Modulation = 6,
    DfSpectrum = 20,
    Latitude = 25,
    Longitude = 26,
    Level = 36,
    TrueHeading = 41,
    Altitude = 42,
    Speed = 43,
    Pitch = 44,
    Roll = 45,
    Frequency = 46
};
}  // namespace Code

struct Record {
    unsigned long long timeMs;  ///< since the recording's start
    std::int32_t code;
    std::string text;
};

struct RecordedFile {
    Recording2::CHeaderData header;
    unsigned long long startUs = 0;  ///< of the header, since 1970 UTC
    std::vector<Record> records;

    /// Of one keyword.
    [[nodiscard]] std::vector<std::string> texts(std::int32_t code) const
    {
        std::vector<std::string> out;
        for (const Record& record : records) {
            if (record.code == code) {
                out.push_back(record.text);
            }
        }
        return out;
    }

    /// After the initial states, the numbers of one kind.
    struct Number {
        unsigned long long timeUs;  ///< since 1970 UTC
        double number;
    };
    [[nodiscard]] std::vector<Number> numbers(std::int32_t code) const
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
    /// The same with so many decimals; "nan" where the number became unknown.
    [[nodiscard]] std::vector<std::string> changes(std::int32_t code, int digits) const
    {
        std::vector<std::string> out;
        for (const Number& change : numbers(code)) {
            out.push_back(std::isnan(change.number) ? "nan"
                                                    : QString::number(change.number, 'f', digits).toStdString());
        }
        return out;
    }

    /// After the initial state, in which nothing is measured, the spectra of one kind.
    struct Spectrum {
        unsigned long long timeUs;     ///< since 1970 UTC
        unsigned long long ownTimeUs;  ///< likewise, of the measurement
        values::ChannelRange range;
        std::vector<float> cells;
    };
    [[nodiscard]] std::vector<Spectrum> spectra(std::int32_t code) const
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
};

[[nodiscard]] inline RecordedFile readRecordedFile(const std::string& path)
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

class RecordingTest : public testing::Test {
protected:
    struct Result {
        int exitCode = -1;
        std::string messages;
        nlohmann::json summary;

        /// Of the only file of a recorder; empty when there is another number of files.
        [[nodiscard]] std::string path(const std::string& recorder) const
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
    };

    RecordingTest() { TestSupport::requireApplication(); }
    void start(QProcess& process, const QStringList& arguments) const
    {
        process.setWorkingDirectory(m_directory.path());
        process.start(RECSTATION, QStringList{"--json"} + arguments);
        ASSERT_TRUE(process.waitForStarted(TestSupport::PatienceMs));
    }
    static Result finish(QProcess& process)
    {
        const TestSupport::ProgramResult ended = TestSupport::finish(process);
        return {ended.exitCode, ended.err, nlohmann::json::parse(ended.out, nullptr, false)};
    }
    /// Waits until the program has said that.
    static void awaitMessage(QProcess& process, const char* words)
    {
        process.setReadChannel(QProcess::StandardError);
        QByteArray messages;
        while (!messages.contains(words)) {
            ASSERT_TRUE(process.waitForReadyRead(TestSupport::PatienceMs)) << messages.toStdString();
            messages += process.readAllStandardError();
        }
    }
    [[nodiscard]] Result run(const QStringList& arguments, const QByteArray& input = {}) const
    {
        QProcess process;
        start(process, arguments);
        process.write(input);
        return finish(process);
    }
    /// @return its path
    [[nodiscard]] QString write(const char* name, const QByteArray& bytes) const
    {
        QString path = m_directory.filePath(name);
        TestSupport::writeBytes(path, bytes);
        return path;
    }
    /// Empty where the real data is missing.
    [[nodiscard]] static QString realData(const char* name)
    {
        const QString directory = qEnvironmentVariable("RECORDING2_TEST_DATA", QString::fromUtf8(TEST_DATA_DIRECTORY));
        const QString path = QDir(directory).absoluteFilePath(QString::fromLatin1(name));
        return QFile::exists(path) ? path : QString();
    }

    QTemporaryDir m_directory;
};
