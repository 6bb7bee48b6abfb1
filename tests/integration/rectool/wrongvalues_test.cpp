// Every option of rectool with a wrong value: one sentence, exit code 1, and nothing written.
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <QDir>
#include <QStringList>
#include <QTemporaryDir>

#include "runprogram.h"
#include "support/samplerecording.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

struct WrongValue {
    const char* verb;     // with what it needs besides
    const char* options;  // separated by blanks; "@" stands for an empty one
    const char* sentence;
};

class WrongValueOf : public testing::TestWithParam<WrongValue> {
protected:
    WrongValueOf() { writeSampleRecording(m_folder.filePath("sample.rec").toStdString()); }

    [[nodiscard]] QStringList arguments() const
    {
        QStringList words = QString::fromLatin1(GetParam().verb).split(' ');
        for (const QString& option : QString::fromLatin1(GetParam().options).split(' ')) {
            words.append(option == "@" ? QString() : option);
        }
        return words.replaceInStrings("sample.rec", m_folder.filePath("sample.rec"))
            .replaceInStrings("new.", m_folder.filePath("new."));
    }

    QTemporaryDir m_folder;
};

constexpr const char* NoTime = "is not a time of this recording";

constexpr WrongValue WrongValues[] = {
    {"info sample.rec", "--since yesterday", "no moment"},
    {"info sample.rec", "--until 99", "no moment"},
    {"info sample.rec", "--covers 433,5", "no frequency"},
    {"info sample.rec", "--sort name", "expected start, length,"},
    {"info sample.rec", "--device @", "must not be empty"},
    {"info sample.rec", "--archive-config @", "must not be empty"},
    {"cat sample.rec", "--from x", NoTime},
    {"cat sample.rec", "--to 22:00", "\"22:00 UTC\" or \"22:00 local\""},
    {"cat sample.rec", "--from 2s --to 1s", "--from lies behind --to"},
    {"cat sample.rec", "--type SPECTRUMM", "no type \"SPECTRUMM\""},
    {"cat sample.rec", "--time gmt", "expected offset, utc or local, found gmt"},
    {"cat sample.rec", "--time utc --json", "excludes"},
    {"cat sample.rec", "--csv --json", "excludes"},
    {"cat sample.rec", "--jsn", "did you mean --json?"},
    {"cat sample.rec", "sample.rec", "is one word too many"},
    {"state sample.rec", "--at bookmark:none", "It has no bookmarks"},
    {"state sample.rec", "--json", "state needs --at"},
    {"diff sample.rec", "--from x --to 1", NoTime},
    {"diff sample.rec", "--from 1 --to x", NoTime},
    {"map sample.rec", "--from x", NoTime},
    {"map sample.rec --geojson", "--sigma 0", "expected 0.001 to 45"},
    {"map sample.rec --geojson", "--sigma nan", "expected a number"},
    {"map sample.rec --geojson", "--length far", "expected a length such as 5, 5km or 500m"},
    {"map sample.rec --geojson", "--length 0.5m", "expected 1m to 20000km"},
    {"map sample.rec --geojson", "--window soon", "expected a time"},
    {"cut sample.rec -o new.rec", "--to x", NoTime},
    {"merge sample.rec sample.rec", "-o new.rec", "given twice"},
    {"repair sample.rec -o new.rec", "--period 0", "expected 1ms to 24h"},
    {"repair sample.rec -o new.rec", "--period 20x", "expected a time such as 20, 20ms or 0.5s"},
    {"recover sample.rec -o new.rec", "--period -5", "expected a time"},
    {"recover sample.rec", "-o @", "must not be empty"},
    {"selfcheck new.folder", "--runs 1.5", "expected a whole number from 1 to 100000"},
    {"bookmark add sample.rec", "x text", NoTime},
    {"bookmark rm sample.rec", "x", NoTime},
    {"range rebuild sample.rec", "--type XX", "no type \"XX\""},
    {"plot spectrum sample.rec -o new.png", "--type XX", "no type \"XX\""},
    {"plot level sample.rec -o new.png", "--from x", NoTime},
    {"plot level sample.rec -o new.png", "--width 10", "expected 400 to 5000, found 10"},
    {"plot level sample.rec -o new.png", "--height 500.5px", "expected a whole number"},
    {"plot level sample.rec", "-o new.gif", ".png, .jpg or .pdf"},
    {"plot level", "sample.rec", "plot level needs --output\nrectool plot level --help tells more."},
    {"plot", "sample.rec", "plot needs to know what: spectrum, level, bearings or timeline"},
    {"plot", "spectrun sample.rec", "did you mean spectrum?"},
    {"archive groups", "--limit 0", "expected 1 to 1000000000"},
    {"archive show", "@", "must not be empty"},
    {"archive", "--json", "archive: there is no option --json"},
};

}  // namespace

TEST_P(WrongValueOf, AnOptionIsRefusedWithASentenceAndExitCode1)
{
    const ProgramResult result = runProgram(QStringLiteral(RECTOOL), arguments());
    if (result.err.find("built without") != std::string::npos ||
        result.err.find("has no plotting") != std::string::npos) {
        GTEST_SKIP() << result.err;
    }
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_THAT(result.err, StartsWith("rectool: "));
    EXPECT_THAT(result.err, HasSubstr(GetParam().sentence));
    EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList("sample.rec"));
}

INSTANTIATE_TEST_SUITE_P(RecTool, WrongValueOf, testing::ValuesIn(WrongValues), [](const auto& tested) {
    std::string name = std::to_string(tested.index) + "_" + tested.param.verb + "_" + tested.param.options;
    for (char& letter : name) {
        const bool isLetter =
            (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
        letter = isLetter ? letter : '_';
    }
    return name;
});

TEST(OptionsOfRecTool, MayHaveUnits)
{
    const QTemporaryDir folder;
    const QString sample = folder.filePath("sample.rec");
    writeSampleRecording(sample.toStdString());
    const auto fine = [&](const QStringList& options) {
        return runProgram(QStringLiteral(RECTOOL), options).exitCode == 0;
    };
    int files = 0;
    for (const char* period : {"20", "20ms", "0.02s", "0.02 S", "100000", "24h"}) {
        const QString repaired = folder.filePath(QString("new%1.rec").arg(++files));
        EXPECT_TRUE(fine({"repair", sample, "-o", repaired, "--period", period})) << period;
    }
    const bool hasGeoJson = fine({"map", sample, "--geojson"});
    for (const char* length : {"5", "5km", "500 m"}) {
        const bool isFine =
            fine({"map", sample, "--geojson", "--length", length, "--sigma", "2deg", "--window", "500ms"});
        EXPECT_EQ(isFine, hasGeoJson) << length;
    }
    for (const char* frequency : {"145.5M", "145.5 MHz", "145500k", "1455e5"}) {
        EXPECT_TRUE(fine({"info", sample, "--covers", frequency})) << frequency;
    }
    const std::string expected = runProgram(QStringLiteral(RECTOOL), {"cat", sample, "--to", "1500"}).out;
    for (const char* time : {"1500ms", "1.5s", "0.025min"}) {
        EXPECT_EQ(runProgram(QStringLiteral(RECTOOL), {"cat", sample, "--to", time}).out, expected) << time;
    }
}
