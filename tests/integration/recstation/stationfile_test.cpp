// A station's file that the program wrote of a command line starts the same run.
#include <vector>

#include <QDir>
#include <QFile>
#include <QMap>

#include <gtest/gtest.h>

#include "programtest.h"

namespace RecStation {
namespace {

class StationFileTest : public ProgramTest {
protected:
    StationFileTest()
    {
        put("night.csv",
            "2026-11-21, 08:00:00, 100, 140, 10, 20, 1, 2, 3, 4\n2026-11-21, 08:00:01, 100, 140, 10, 20, "
            "4, 3, 2, 1\n");
        put("drive.log",
            "$GPRMC,080000.00,A,4717.11,N,00833.91,E,10.0,77.5,211126,,\n"
            "$GPRMC,080001.00,A,4717.12,N,00833.92,E,10.0,77.5,211126,,\n");
        put("bearings.csv", "date;time;station;frequency;azimuth\n2026-11-21;08:00:00;E1;150.015;163\n");
        put("changes.jsonl", R"({"at": 0, "path": "/LEVEL", "create": "number", "value": -30}
{"at": 0, "record": "On"}
{"at": 1500, "path": "/LEVEL", "set": -31.5}
)");
        put("own.toml",
            "[b]\nValuePath = \"/Devices/Rx1\"\nStatusValuePath = \"/S\"\nRecordingNameLocalTime = false\n"
            "MaxFileLength = 7\n[b.Values]\nLEVEL = \"/a \\\"b\\\"\"\n\n[a]\nRecordDF = true\n");
    }

    void put(const char* name, const char* content) const
    {
        QFile file(path(QString::fromLatin1(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    static QStringList words(const char* line) { return QString::fromUtf8(line).split(' ', Qt::SkipEmptyParts); }

    // What was recorded into a folder, by name.
    [[nodiscard]] QMap<QString, QByteArray> recorded(const QString& folder) const
    {
        QMap<QString, QByteArray> contents;
        const QDir directory(path(folder));
        for (const QString& name : directory.entryList({QStringLiteral("*.rec")}, QDir::Files)) {
            QFile file(directory.filePath(name));
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            contents[name] = file.readAll();
        }
        return contents;
    }

    void expectSame(const QStringList& arguments)
    {
        const QString line = arguments.join(' ');
        const Result first = run(arguments);
        const QMap<QString, QByteArray> once = recorded(QStringLiteral("out"));
        ASSERT_TRUE(QDir(path(QStringLiteral("out"))).removeRecursively());
        const Result printed = run(arguments + QStringList{QStringLiteral("--print-config")});
        ASSERT_EQ(printed.exitCode, 0) << line.toStdString() << printed.messages;
        put("station.toml", printed.output.c_str());
        EXPECT_EQ(run({QStringLiteral("station.toml"), QStringLiteral("--print-config")}).output, printed.output);
        EXPECT_FALSE(QDir(path(QStringLiteral("out"))).exists()) << "printing must not record";
        const Result again = run({QStringLiteral("station.toml")});
        EXPECT_EQ(again.exitCode, first.exitCode) << line.toStdString() << again.messages;
        EXPECT_EQ(again.output, first.output) << printed.output;
        EXPECT_EQ(recorded(QStringLiteral("out")), once) << printed.output;
        EXPECT_FALSE(first.exitCode == 0 && once.isEmpty()) << line.toStdString();
        QDir(path(QStringLiteral("out"))).removeRecursively();
    }
};

TEST_F(StationFileTest, TheRunOfAPrintedFileIsThatOfTheCommandLine)
{
    const std::vector<const char*> lines = {
        "-q -o out --make-output sim --duration 1s",
        "-q -o out --make-output --record df --journal off sim --seed 18446744073709551615 --duration 0.5s",
        "-q -o out --make-output --record receiver --record df sim --duration 1s --start 2026-03-01T08:00:00.25Z",
        "-q -o out --make-output --speed 1e6x --archive-wait 1min --journal power --no-recover sim --duration 1s",
        "-q -o out --make-output --json --trace sim --duration 0.1s --seed 3",
        "-q -o out --make-output sweep night.csv --utc-offset +01:00 --bin-frequency lower",
        "-q -o out --make-output --split-on-gap sweep night.csv nmea drive.log --fix-week-rollover",
        "-q -o out --make-output --split-on-gap=2h nmea drive.log --date 2026-11-20",
        "-q -o out --make-output --allow-gap sweep night.csv sim --duration 1s",
        "-q -o out --make-output bearings bearings.csv --date-format yyyy-MM-dd --frequency-unit MHz --heading -2.5deg",
        "-q -o out --make-output feed changes.jsonl --start 2026-01-02T03:04:05Z --strict --keep-at",
        "-q -o out --make-output --config own.toml sim --duration 1s",
        "-q -o out --make-output --config own.toml --journal power --record a sim --duration 1s",
    };
    for (const char* line : lines) {
        expectSame(words(line));
    }
}

TEST_F(StationFileTest, AFileThatSomebodyPipesIsReadOnce)
{
#if defined(Q_OS_WIN)
    GTEST_SKIP() << "there a pipe has no name";
#endif
    const Result result = run(words("--config /dev/stdin --print-config"), "[[source]]\ntype = 'sim'\nseed = 4\n");
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_NE(result.output.find("seed = \"4\""), std::string::npos) << result.output;
}

}  // namespace
}  // namespace RecStation
