// The program as users run it: output, JSON, messages and exit codes.
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <QDateTime>
#include <QFile>
#include <QStandardPaths>
#include <QStringList>
#include <QTemporaryDir>
#include <nlohmann/json.hpp>

#include "runprogram.h"
#include "support/samplerecording.h"

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

using Result = ProgramResult;

Result rectool(const QStringList& arguments)
{
    return runProgram(QStringLiteral(RECTOOL), arguments);
}

QString golden(const QString& name)
{
    return QStringLiteral(GOLDEN_FOLDER) + "/" + name + "/" + name + ".rec";
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::vector<json> jsonLinesOf(const std::string& text)
{
    std::vector<json> objects;
    for (const std::string& line : linesOf(text)) {
        objects.push_back(json::parse(line));
    }
    return objects;
}

std::string bytesOf(const QString& path)
{
    std::ifstream stream(path.toStdString(), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

json bookmarksOf(const QString& path)
{
    return json::parse(rectool({"bookmark", "list", "--json", path}).out).at("bookmarks");
}

json rangeTimesOf(const QString& path)
{
    return json::parse(rectool({"info", "--json", path}).out).at("files")[0].at("channelRangeTimesMs");
}

class RecTool : public testing::Test {
protected:
    /// A file with these bytes.
    QString file(const std::string& bytes, const QString& name = QStringLiteral("file.rec"))
    {
        QString path = m_folder.filePath(name);
        std::ofstream(path.toStdString(), std::ios::binary) << bytes;
        return path;
    }
    /// The first bytes of a golden file.
    QString cut(const QString& name, std::size_t size) { return file(bytesOf(golden(name)).substr(0, size)); }
    QString sample()
    {
        QString path = m_folder.filePath(QStringLiteral("sample.rec"));
        writeSampleRecording(path.toStdString());
        return path;
    }
    QString bearings(bool withRangeTable = true)
    {
        QString path = m_folder.filePath(QStringLiteral("bearings.rec"));
        writeBearingRecording(path.toStdString(), withRangeTable);
        return path;
    }
    /// A golden file that may be changed.
    QString copyOf(const QString& name) { return file(bytesOf(golden(name))); }
    [[nodiscard]] QString folder() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
};

}  // namespace

// Usage

TEST_F(RecTool, WithoutArgumentsItListsTheVerbs)
{
    const Result result = rectool({});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.out, AllOf(HasSubstr("  info "), HasSubstr("rectool FILE and rectool DIR")));
    EXPECT_THAT(result.err, IsEmpty());
}

TEST_F(RecTool, WithoutAVerbItShowsWhatAFileOrADirectoryHolds)
{
    const QString recording = sample();
    EXPECT_EQ(rectool({recording}).out, rectool({"info", recording}).out);
    EXPECT_EQ(rectool({folder()}).out, rectool({"info", folder()}).out);
    EXPECT_EQ(linesOf(rectool({recording, bearings()}).out).size(), 3U) << "a heading and a line for each";
}

TEST_F(RecTool, AMistypedVerbIsToldTheNearestOne)
{
    const Result result = rectool({"ifno", "x"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "rectool: there is no verb \"ifno\": did you mean info?\nrectool --help tells more.\n");
    EXPECT_THAT(rectool({"bookmark", "lsit", "x"}).err, HasSubstr("did you mean list?"));
    EXPECT_THAT(rectool({"something"}).err, HasSubstr("nor such a file\nrectool --help tells more."));
}

TEST_F(RecTool, HelpAndVersionAreNoErrors)
{
    EXPECT_EQ(rectool({"--version"}).exitCode, 0);
    EXPECT_THAT(rectool({"--version"}).out, StartsWith("rectool "));
    EXPECT_THAT(rectool({"--help"}).out, AllOf(HasSubstr("info"), HasSubstr("types"), HasSubstr("cat")));
    for (const QString verb :
         {"info", "types", "cat", "bookmark list", "range list", "state", "map", "diff", "cut", "merge"}) {
        const Result help = rectool(verb.split(' ') + QStringList{"--help"});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_THAT(help.out, AllOf(HasSubstr("Example"), HasSubstr("--json")));
    }
    for (const QString verb : {"bookmark add", "bookmark rm", "range clear", "range rebuild"}) {
        const Result help = rectool(verb.split(' ') + QStringList{"--help"});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_THAT(help.out, AllOf(HasSubstr("Example"), HasSubstr("--yes")));
    }
}

TEST_F(RecTool, WrongUsageIsExitCode1)
{
    const QString full = golden("full");
    const std::vector<QStringList> wrong = {{"frobnicate"},
                                            {"info"},
                                            {"cat", full, "--frobnicate"},
                                            {"cat", full, "--from", "soon"},
                                            {"cat", full, "--to", "12:00"},
                                            {"cat", full, "--from", "-1"},
                                            {"cat", full, "--type", "LEVL"},
                                            {"diff", full, "--from", "1"},
                                            {"diff", full, "--from", "2", "--to", "1"},
                                            {"cat", full, "--from", ""},
                                            {"cat", full, "--from", "2", "--to", "1"},
                                            {"map", full, "--from", "2", "--to", "1"},
                                            {"state", full, "--at", ""},
                                            {"cut", full, "--to", "", "-o", folder() + "/new.rec"},
                                            {"cut", full, "-o", ""},
                                            {"map", full, "--geojson", "-o", ""},
                                            {"plot", "level", full, "-o", ""},
                                            {"cut", full},
                                            {"cut", full, "-o", full, "--force"},
                                            {"merge", full, "-o", folder() + "/new.rec"}};
    for (const QStringList& arguments : wrong) {
        const Result result = rectool(arguments);
        EXPECT_EQ(result.exitCode, 1) << arguments.join(' ').toStdString();
        EXPECT_THAT(result.err, Not(IsEmpty()));
        EXPECT_THAT(result.out, IsEmpty());
    }
}

TEST_F(RecTool, AnUnknownTypeIsAnsweredWithTheTypesThereAre)
{
    EXPECT_THAT(rectool({"cat", golden("full"), "--type", "LEVL"}).err,
                AllOf(HasSubstr("\"LEVL\""), HasSubstr("RFSPECTRUM, MODULATION, LEVEL, FREQUENCY")));
}

// Files that cannot be read

TEST_F(RecTool, EveryVerbSaysWhyAFileCannotBeRead)
{
    struct Case {
        QString path;
        const char* message;
    };
    const std::vector<Case> cases = {
        {folder() + "/nothing.rec", "There is no such file."},
        {folder(), "This is a directory, not a file."},
        {file("", "empty.rec"), "The file is empty."},
        {file("Dear reader,\nthis is a letter.\n", "letter.rec"), "This is not a recording."},
        {file("1#3#and so on", "old.rec"), "The recording is of the old format, version 1.3"},
        {file(std::string(499, '0') + "#", "open.rec"), "The recording was never closed"},
        {cut("full", 100), "The file ends within its header"},
    };
    const QString full = golden("full");
    for (const Case& unreadable : cases) {
        const std::vector<QStringList> verbs = {{"types", unreadable.path},
                                                {"cat", unreadable.path},
                                                {"bookmark", "list", unreadable.path},
                                                {"bookmark", "add", unreadable.path, "1", "mark", "--yes"},
                                                {"bookmark", "rm", unreadable.path, "1", "--yes"},
                                                {"range", "list", unreadable.path},
                                                {"range", "clear", unreadable.path, "--yes"},
                                                {"range", "rebuild", unreadable.path, "--yes"},
                                                {"state", unreadable.path, "--at", "1"},
                                                {"map", unreadable.path},
                                                {"diff", unreadable.path, "--from", "1", "--to", "2"},
                                                {"cut", unreadable.path, "-o", folder() + "/new.rec"},
                                                {"merge", unreadable.path, full, "-o", folder() + "/new.rec"}};
        for (const QStringList& arguments : verbs) {
            const Result result = rectool(arguments);
            EXPECT_EQ(result.exitCode, 2);
            EXPECT_THAT(result.out, IsEmpty());
            EXPECT_THAT(result.err, AllOf(StartsWith("rectool: " + unreadable.path.toStdString() + ": "),
                                          HasSubstr(unreadable.message)));
        }
    }
}

TEST_F(RecTool, InfoGoesOnBehindAFileThatCannotBeRead)
{
    const Result result = rectool({"info", "/nothing.rec", golden("empty")});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.out, HasSubstr("The file is sound."));
    EXPECT_THAT(result.err, HasSubstr("There is no such file."));
}

// info

TEST_F(RecTool, InfoShowsHeaderTypesAndTables)
{
    const Result result = rectool({"info", golden("full")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, IsEmpty());
    for (const char* text :
         {"Device      Empf\u00e4nger S\u00fcd (Receiver)", "Job         A1B2",
          "Started     2023-11-14 22:13:20.123 UTC, automatically", "Stopped     2024-01-03 15:16:07.420 UTC",
          "Duration    1193:02:47.297", "Frequency   90.0123 MHz to 120 MHz, step 0.025 Hz", "Level scale -30 to 100",
          "Times       10 ms to 4,294,968,297 ms", "           36  LEVEL                          3     13  /LEVEL",
          "            7  (not in the type table)        1      1\n", "Times               1030        8",
          "Bookmarks              -        -", "The file is sound."}) {
        EXPECT_THAT(result.out, HasSubstr(text));
    }
}

TEST_F(RecTool, InfoShowsDamageAndWhatCouldBeRead)
{
    const Result result = rectool({"info", cut("full", 989)});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.out, AllOf(HasSubstr("Records     4"), HasSubstr("The file is damaged:"),
                                  HasSubstr("at 989: The time table should begin at 1030, but the file ends at 989")));
}

TEST_F(RecTool, InfoAsJsonHasEverythingOfEveryFile)
{
    const Result result = rectool({"info", "--json", golden("bookmarks"), golden("channelranges"), "/nothing.rec"});
    EXPECT_EQ(result.exitCode, 2);
    const json files = json::parse(result.out).at("files");
    ASSERT_EQ(files.size(), 3U);
    const json& marked = files[0];
    EXPECT_EQ(marked.at("readability"), "ok");
    EXPECT_EQ(marked.at("size"), 626);
    EXPECT_EQ(marked.at("header").at("stepWidthHz"), 0.025);
    EXPECT_EQ(marked.at("header").at("startMs"), 1'650'000'000'000);
    EXPECT_EQ(marked.at("durationMs"), 4000);
    EXPECT_EQ(marked.at("firstTimeMs"), 10);
    EXPECT_EQ(marked.at("lastTimeMs"), 3000);
    EXPECT_EQ(marked.at("types"),
              json::parse(R"([{"number":36,"keyword":"LEVEL","path":"/LEVEL","records":3,"bytes":14}])"));
    EXPECT_EQ(marked.at("tables").at("bookmarks"), json::parse(R"({"position":590,"entries":2})"));
    EXPECT_EQ(marked.at("tables").at("channelRanges"), json::parse(R"({"position":null,"entries":0})"));
    EXPECT_EQ(marked.at("bookmarks")[0], json::parse(R"({"timeMs":2000,"data":{"text":"ok"}})"));
    EXPECT_EQ(marked.at("sound"), true);
    EXPECT_EQ(files[1].at("channelRangeTimesMs"), json::parse("[10,100,101]"));
    EXPECT_EQ(files[2].at("readability"), "missing");
    EXPECT_EQ(files[2].at("problem"), "There is no such file.");
}

TEST_F(RecTool, InfoDoesNotShowWhatARecorderOnlyMadeUp)
{
    const Result result = rectool({"info", "--levels", sample()});
    EXPECT_THAT(result.out, HasSubstr("step 25 kHz\n")) << "of the spectra, not of the header";
    EXPECT_THAT(result.out, Not(HasSubstr("Level scale")));
    EXPECT_THAT(result.out, HasSubstr("Measured    RFSPECTRUM -100 to -20\n"));
    EXPECT_THAT(result.out, HasSubstr("Measured    LEVEL -31.5 to -30.25\n"));
    EXPECT_THAT(rectool({"info", sample()}).out, Not(HasSubstr("Measured")));
}

TEST_F(RecTool, InfoOfADirectoryIsATableThatCanBeSortedAndFiltered)
{
    sample();
    bearings();
    file(std::string(499, '0') + "#", "open__2026-11-21__10-00-00_UTC.tmp");
    file("no recording", "notes.txt");
    const auto files = [&](const QStringList& options) {
        const Result result = rectool(QStringList{"info", folder(), "--json"} + options);
        std::vector<std::string> names;
        const json document = json::parse(result.out);
        for (const json& recording : document.at("recordings")) {
            const std::string path = recording.at("file");
            names.push_back(path.substr(path.find_last_of("/\\") + 1, 4));
        }
        return names;
    };
    EXPECT_THAT(files({"--sort", "file"}), ElementsAre("bear", "open", "samp"));
    EXPECT_THAT(files({"--sort", "spectra", "--reverse"}), ElementsAre("samp", testing::_, testing::_));
    EXPECT_THAT(files({"--covers", "88.05M"}), ElementsAre("samp"));
    EXPECT_THAT(files({"--covers", "2 MHz"}), ElementsAre("bear", "samp"));
    EXPECT_THAT(files({"--since", "2026-11-21 UTC"}), ElementsAre("open"));
    EXPECT_THAT(files({"--until", "2026-11-20 UTC", "--sort", "file"}), ElementsAre("bear", "samp"));
    EXPECT_THAT(files({"--device", "no such"}), IsEmpty());
    const Result table = rectool({"info", folder(), "--verify"});
    EXPECT_EQ(table.exitCode, 0) << "a recording that is open is no damage: " << table.err;
    EXPECT_THAT(table.out, AllOf(HasSubstr("Frequencies"), HasSubstr("sound"), HasSubstr("never-closed")));
    EXPECT_EQ(rectool({"info", folder(), "--since", "yesterday"}).exitCode, 1);
    EXPECT_EQ(rectool({"info", folder(), "--covers", "many"}).exitCode, 1);
    file(bytesOf(golden("full")).substr(0, 989), "damaged.rec");
    EXPECT_EQ(rectool({"info", folder()}).exitCode, 3);
}

TEST_F(RecTool, TimesAreTakenWithAUnit)
{
    const QString recording = sample();
    EXPECT_EQ(rectool({"cat", recording, "--from", "1s", "--to", "0.025min"}).out,
              rectool({"cat", recording, "--from", "1000", "--to", "1500"}).out);
}

TEST_F(RecTool, InfoAsJsonListsTheFindings)
{
    const Result result = rectool({"info", "--json", cut("full", 1069)});
    EXPECT_EQ(result.exitCode, 3);
    const json file = json::parse(result.out).at("files")[0];
    EXPECT_EQ(file.at("sound"), false);
    EXPECT_EQ(file.at("findings")[0],
              json::parse(R"({"offset":1069,"text":"The time table ends before the last record."})"));
}

// types

TEST_F(RecTool, TypesAreShownInTheOrderOfTheFile)
{
    const Result result = rectool({"types", golden("full")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(
        linesOf(result.out),
        ElementsAre("Number  Keyword         Value              Path",
                    "    46  FREQUENCY       NumericWithOffset  /FREQUENCY",
                    "    36  LEVEL           Numeric            /LEVEL",
                    "     1  RFSPECTRUM      LevelMap           /Receivers/1/Scn/RfSpectrum",
                    "     6  MODULATION      Selection          /Receivers/1/Mon/DEMODULATION",
                    "     0  SITE            Unknown (-1)       /Ger\u00e4t/Ort", "    47  DEVICE_CAPTION  String"));
}

TEST_F(RecTool, TypesAsJson)
{
    const json types = json::parse(rectool({"types", "--json", golden("full")}).out).at("types");
    ASSERT_EQ(types.size(), 6U);
    EXPECT_EQ(types[4], json::parse("{\"number\":0,\"keyword\":\"SITE\",\"path\":\"/Ger\u00e4t/Ort\","
                                    "\"valueType\":-1,\"valueTypeName\":\"Unknown\"}"));
}

TEST_F(RecTool, ARecordingWithoutTypeTableHasNoTypes)
{
    EXPECT_EQ(rectool({"types", golden("empty")}).out, "The recording has no type table.\n");
}

// cat

TEST_F(RecTool, CatShowsValuesAsAPersonWouldWriteThem)
{
    const Result result = rectool({"cat", sample()});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(
        linesOf(result.out),
        ElementsAre("  10  FREQUENCY       100000000", "  11  LEVEL           -30.25", "  12  MODULATION      FM",
                    "  13  DEVICE_CAPTION  N\u00fcrnberg", "  14  SQUELCHSTATE    true",
                    "  15  RFSPECTRUM      88 MHz to 88.1 MHz, 5 channels, min -100, max -70",
                    "  16  DFSPECTRUM      1 MHz to 3 MHz, 3 channels, 1 bearing, min 12.5, max 12.5 degrees",
                    " 900  RFSPECTRUM      88 MHz to 88.1 MHz, 5 channels, min -100, max -50",
                    "1000  RFSPECTRUM      88 MHz to 88.1 MHz, 5 channels, min -100, max -20",
                    "1500  LEVEL           -31.5", "2000  DEVICE_CAPTION  two\\nlines"));
}

TEST_F(RecTool, CatEscapesTextThatIsNotUnderstood)
{
    const std::vector<std::string> lines = linesOf(rectool({"cat", golden("full")}).out);
    ASSERT_EQ(lines.size(), 8U);
    EXPECT_EQ(lines[1], "        11  LEVEL           \"-31.5\"");
    EXPECT_THAT(lines[2], AllOf(HasSubstr(R"("\x00\x01)"), HasSubstr("... (256 bytes)")));
    EXPECT_EQ(lines[5], "4294967297  type 7          \"\\x00\"");
}

TEST_F(RecTool, CatShowsASpanWithBothEnds)
{
    EXPECT_EQ(linesOf(rectool({"cat", sample(), "--from", "15", "--to", "900"}).out).size(), 3U);
    EXPECT_THAT(rectool({"cat", sample(), "--from", "2001"}).out, IsEmpty());
    EXPECT_THAT(linesOf(rectool({"cat", sample(), "--to", "10"}).out).size(), 1U);
}

TEST_F(RecTool, CatShowsAMapWholeThoughItsFullTextStandsInFrontOfTheSpan)
{
    EXPECT_THAT(linesOf(rectool({"cat", sample(), "--from", "1000", "--type", "1"}).out),
                ElementsAre("1000  RFSPECTRUM      88 MHz to 88.1 MHz, 5 channels, min -100, max -20"));
}

TEST_F(RecTool, CatShowsOnlyTheTypesThatAreAskedFor)
{
    EXPECT_THAT(linesOf(rectool({"cat", sample(), "--type", "level", "--type", "6"}).out),
                ElementsAre("  11  LEVEL           -30.25", "  12  MODULATION      FM", "1500  LEVEL           -31.5"));
    EXPECT_THAT(linesOf(rectool({"cat", "--type", "level", "--type", "6", sample(), "--to", "1500"}).out),
                testing::SizeIs(3));  // the recording may stand behind a type
    EXPECT_THAT(linesOf(rectool({"cat", "--type=-2147483648", golden("full")}).out), testing::SizeIs(1));
}

TEST_F(RecTool, CatAsCsvHasPlainValuesAndSaysWhatItLeftOut)
{
    const Result result = rectool({"cat", sample(), "--csv"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out,
              "timeMs,keyword,value\n10,FREQUENCY,100000000\n11,LEVEL,-30.25\n12,MODULATION,FM\n"
              "13,DEVICE_CAPTION,N\u00fcrnberg\n14,SQUELCHSTATE,true\n1500,LEVEL,-31.5\n"
              "2000,DEVICE_CAPTION,\"two\nlines\"\n");
    EXPECT_THAT(result.err, HasSubstr("4 records (RFSPECTRUM, DFSPECTRUM)"));
}

TEST_F(RecTool, CatShowsTheTimesThatAreAskedFor)
{
    const QStringList level = {"cat", sample(), "--type", "LEVEL"};
    EXPECT_THAT(linesOf(rectool(level + QStringList{"--time", "utc"}).out)[1],
                AllOf(HasSubstr("22:13:21.500"), HasSubstr("LEVEL")));
    EXPECT_EQ(rectool(level + QStringList{"--time", "offset"}).out, rectool(level).out);
    EXPECT_THAT(rectool(level + QStringList{"--csv", "--time", "utc"}).out, StartsWith("time,keyword,value\n2023-"));
}

TEST_F(RecTool, CatAsJsonHasTheDecodedValueAndTheData)
{
    const std::vector<json> records = jsonLinesOf(rectool({"cat", "--json", sample()}).out);
    ASSERT_EQ(records.size(), 11U);
    EXPECT_EQ(records[0].at("timeMs"), 10);
    EXPECT_EQ(records[0].at("code"), 46);
    EXPECT_EQ(records[0].at("keyword"), "FREQUENCY");
    EXPECT_EQ(records[0].at("path"), "/FREQUENCY");
    EXPECT_EQ(records[0].at("value"), json::parse(R"({"kind":"NumericWithOffset","value":100000000.0,"lowerLimit":0.0,
                                                      "upperLimit":0.0,"offset":1000.0})"));
    EXPECT_EQ(records[1].at("value"),
              json::parse(R"({"kind":"Numeric","value":-30.25,"lowerLimit":-150.0,"upperLimit":50.0})"));
    EXPECT_EQ(records[2].at("value"), json::parse(R"({"kind":"Selection","value":"FM","key":7,"number":2.0})"));
    EXPECT_EQ(records[3].at("value"), json::parse("{\"kind\":\"String\",\"value\":\"N\u00fcrnberg\"}"));
    EXPECT_EQ(records[4].at("value"), json::parse(R"({"kind":"Bool","value":true})"));
    EXPECT_EQ(records[5].at("value"),
              json::parse(R"({"kind":"LevelMap","range":{"startHz":88000000.0,"stepHz":25000.0,"count":5},
                              "timeStampUs":0,"cells":[-90.0,-80.5,-100.0,null,-70.0]})"));
    EXPECT_EQ(records[6].at("value"),
              json::parse(R"({"kind":"BearingMap","range":{"channelsHz":[1000000.0,3000000.0,2000000.0]},
                              "timeStampUs":5000000,"cells":[null,{"azimuthDeg":12.5,"elevationDeg":1.0,
                              "levelDb":-60.0,"quality":90.0},null]})"));
    EXPECT_EQ(records[8].at("value").at("cells"), json::parse("[-90.0,-80.5,-100.0,-20.0,-70.0]"));
    EXPECT_THAT(records[8].at("data").at("text").get<std::string>(), HasSubstr("51;"));
    EXPECT_EQ(records[9].at("data").at("text"), "3;-31.5,-150,50");
}

TEST_F(RecTool, CatAsJsonGivesBytesInBase64AndNullForWhatIsUnknown)
{
    const std::vector<json> records = jsonLinesOf(rectool({"cat", "--json", golden("full")}).out);
    ASSERT_EQ(records.size(), 8U);
    const QByteArray data =
        QByteArray::fromBase64(QByteArray::fromStdString(records[2].at("data").at("base64").get<std::string>()));
    ASSERT_EQ(data.size(), 256);
    EXPECT_EQ(data[255], '\xff');
    EXPECT_TRUE(records[2].at("value").is_null());
    EXPECT_TRUE(records[5].at("keyword").is_null());
    EXPECT_EQ(records[5].at("data").at("text"), std::string(1, '\0'));
    EXPECT_EQ(records[5].at("position"), 999);
}

TEST_F(RecTool, CatReadsADamagedFileAsFarAsItGoes)
{
    const Result result = rectool({"cat", cut("full", 989)});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(linesOf(result.out).size(), 4U);
    EXPECT_THAT(result.out, StartsWith("?  FREQUENCY"));
    EXPECT_THAT(result.err, HasSubstr("damaged at 989: The time table should begin at 1030"));
    EXPECT_TRUE(jsonLinesOf(rectool({"cat", "--json", cut("full", 989)}).out).front().at("timeMs").is_null());
}

// Changing a file

TEST_F(RecTool, EveryVerbThatChangesAFileRefusesWithoutATerminalUnlessYesIsSaid)
{
    const QString path = bearings();
    ASSERT_EQ(rectool({"bookmark", "add", path, "100", "mark", "--yes"}).exitCode, 0);
    const std::string before = bytesOf(path);
    const std::vector<QStringList> changes = {{"bookmark", "add", path, "200", "other"},
                                              {"bookmark", "rm", path, "100"},
                                              {"range", "clear", path},
                                              {"range", "rebuild", path, "--type", "DFSPECTRUM"}};
    for (const QStringList& arguments : changes) {
        const Result result = rectool(arguments);
        EXPECT_NE(result.exitCode, 0) << arguments.join(' ').toStdString();
        EXPECT_THAT(result.err, HasSubstr("Nothing was changed."));
        EXPECT_EQ(bytesOf(path), before);
    }
    EXPECT_THAT(rectool(changes[0]).err, HasSubstr("--yes"));
    EXPECT_EQ(rectool(changes[0]).exitCode, 1);
}

TEST_F(RecTool, ADamagedFileIsNotChanged)
{
    const QString path = cut("channelranges", bytesOf(golden("channelranges")).size() - 40);
    const std::string before = bytesOf(path);
    const std::vector<QStringList> changes = {{"bookmark", "add", path, "100", "mark", "--yes"},
                                              {"bookmark", "rm", path, "100", "--yes"},
                                              {"range", "clear", path, "--yes"},
                                              {"range", "rebuild", path, "--yes"}};
    for (const QStringList& arguments : changes) {
        const Result result = rectool(arguments);
        EXPECT_EQ(result.exitCode, 3) << arguments.join(' ').toStdString();
        EXPECT_THAT(result.err, HasSubstr("A damaged file is not changed"));
        EXPECT_EQ(bytesOf(path), before);
    }
}

TEST_F(RecTool, AFileThatCannotBeWrittenIsAnErrorAndStaysAsItIs)
{
    const QString path = bearings();
    const std::string before = bytesOf(path);
    ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner));
    if (QFile(path).open(QIODevice::ReadWrite)) {
        GTEST_SKIP() << "this user may write every file";
    }
    for (const QStringList& arguments :
         {QStringList{"bookmark", "add", path, "100", "mark", "--yes"}, QStringList{"range", "clear", path, "--yes"},
          QStringList{"range", "rebuild", path, "--yes"}}) {
        const Result result = rectool(arguments);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(result.err, HasSubstr("could not be stored"));
        EXPECT_EQ(bytesOf(path), before);
    }
}

// bookmark

TEST_F(RecTool, BookmarksAreAddedListedAndRemoved)
{
    const QString path = bearings();
    EXPECT_EQ(rectool({"bookmark", "list", path}).out, "The recording has no bookmark.\n");
    for (const QStringList& mark : {QStringList{"1500", "N\u00fcrnberg"}, QStringList{"100", "a # and a \n"}}) {
        const Result result = rectool(QStringList{"bookmark", "add", path} + mark + QStringList{"--yes"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_THAT(result.err, IsEmpty());
    }
    EXPECT_THAT(
        linesOf(rectool({"bookmark", "list", path}).out),
        ElementsAre("Time  Clock                        Text", " 100  2023-11-14 22:13:20.100 UTC  a # and a \\n",
                    "1500  2023-11-14 22:13:21.500 UTC  N\u00fcrnberg"));
    EXPECT_EQ(bookmarksOf(path), json::parse(R"([{"timeMs":100,"data":{"text":"a # and a \n"}},
                                                {"timeMs":1500,"data":{"base64":"TvxybmJlcmc="}}])"));
    EXPECT_EQ(rectool({"bookmark", "rm", path, "100", "--yes"}).exitCode, 0);
    EXPECT_EQ(rectool({"bookmark", "rm", path, "bookmark:N\u00fcrnberg", "--yes"}).exitCode, 0);
    EXPECT_EQ(bookmarksOf(path), json::array());
    EXPECT_EQ(rangeTimesOf(path), json::parse("[10]"));
    EXPECT_EQ(rectool({"info", path}).exitCode, 0);
}

TEST_F(RecTool, AWrongBookmarkChangesNothing)
{
    const QString path = bearings();
    ASSERT_EQ(rectool({"bookmark", "add", path, "100", "mark", "--yes"}).exitCode, 0);
    const std::string before = bytesOf(path);
    const std::vector<QStringList> wrong = {
        {"bookmark"},
        {"bookmark", "frobnicate"},
        {"bookmark", "add", path},
        {"bookmark", "add", path, "100"},
        {"bookmark", "add", path, "100", "again", "--yes"},
        {"bookmark", "add", path, "0", "none", "--yes"},
        {"bookmark", "add", path, "2501", "behind the end", "--yes"},
        {"bookmark", "add", path, "soon", "never", "--yes"},
        {"bookmark", "add", path, "", "never", "--yes"},
        {"bookmark", "add", path, "200", "", "--yes"},
        {"bookmark", "add", path, "200", "\u20ac", "--yes"},
        {"bookmark", "rm", path, "200", "--yes"},
        {"bookmark", "rm", path, "bookmark:other", "--yes"},
    };
    for (const QStringList& arguments : wrong) {
        const Result result = rectool(arguments);
        EXPECT_EQ(result.exitCode, 1) << arguments.join(' ').toStdString();
        EXPECT_THAT(result.err, Not(IsEmpty()));
        EXPECT_EQ(bytesOf(path), before);
    }
    EXPECT_THAT(rectool(wrong[4]).err, HasSubstr("There is a bookmark at 100 ms already: \"mark\""));
}

TEST_F(RecTool, BookmarksAreStoredInAFileWithoutChannelRanges)
{
    const QString path = copyOf("bookmarks");
    EXPECT_EQ(rectool({"bookmark", "add", path, "1", "first", "--yes"}).exitCode, 0);
    EXPECT_EQ(bookmarksOf(path).size(), 3U);
    EXPECT_EQ(bookmarksOf(path)[0].at("timeMs"), 1);
}

TEST_F(RecTool, BookmarksThatTwoProgramsAddAtOnceAreAllStored)
{
    constexpr int Each = 8;
    const QString path = bearings();
    const auto add = [&path](int first) {
        for (int i = 0; i < Each; ++i) {
            const QString time = QString::number(first + 2 * i);
            EXPECT_EQ(rectool({"bookmark", "add", path, time, "mark", "--yes"}).exitCode, 0);
        }
    };
    std::thread other(add, 100);
    add(101);
    other.join();
    EXPECT_EQ(bookmarksOf(path).size(), std::size_t{2 * Each});
    EXPECT_EQ(rectool({"verify", path}).exitCode, 0);
}

// range

TEST_F(RecTool, RangesAreListedWithTheirRecords)
{
    const QString path = bearings();
    EXPECT_THAT(linesOf(rectool({"range", "list", path}).out),
                ElementsAre("Time  Keyword     Value", "  10  DFSPECTRUM  1 MHz to 1.05 MHz, 3 channels, no bearing"));
    const json ranges = json::parse(rectool({"range", "list", "--json", path}).out).at("channelRanges");
    ASSERT_EQ(ranges.size(), 1U);
    EXPECT_EQ(ranges[0].at("timeMs"), 10);
    EXPECT_EQ(ranges[0].at("record").at("keyword"), "DFSPECTRUM");
    EXPECT_EQ(rectool({"range", "list", sample()}).out, "The recording has no channel range.\n");
}

TEST_F(RecTool, RangesAreRebuiltFromTheRecords)
{
    for (const bool hadTable : {true, false}) {
        const QString path = bearings(hadTable);
        const Result result = rectool({"range", "rebuild", path, "--yes"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(rangeTimesOf(path), json::parse("[10,100,1000]"));
        const std::string rebuilt = bytesOf(path);
        EXPECT_THAT(rectool({"range", "rebuild", path}).out, HasSubstr("Nothing was changed."));
        EXPECT_EQ(bytesOf(path), rebuilt);
    }
}

TEST_F(RecTool, RangesOfOtherTypesAreTakenOnlyWhenAskedFor)
{
    const QString path = sample();
    ASSERT_EQ(rectool({"range", "rebuild", path, "--yes"}).exitCode, 0);
    EXPECT_EQ(rangeTimesOf(path), json::parse("[16]"));
    ASSERT_EQ(rectool({"range", "rebuild", path, "--type", "RFSPECTRUM", "--type", "20", "--yes"}).exitCode, 0);
    EXPECT_EQ(rangeTimesOf(path), json::parse("[15,16,900]"));
    EXPECT_EQ(rectool({"range", "rebuild", path, "--type", "LEVL", "--yes"}).exitCode, 1);
    EXPECT_EQ(rangeTimesOf(path), json::parse("[15,16,900]"));
}

TEST_F(RecTool, RangesAreClearedAndRebuiltWithTheBookmarksBehindThemKept)
{
    const QString path = bearings();
    ASSERT_EQ(rectool({"range", "rebuild", path, "--yes"}).exitCode, 0);
    ASSERT_EQ(rectool({"bookmark", "add", path, "100", "mark", "--yes"}).exitCode, 0);
    const json marks = bookmarksOf(path);
    const Result cleared = rectool({"range", "clear", path, "--yes"});  // runs into the bookmarks by 5 bytes
    EXPECT_EQ(cleared.exitCode, 0) << cleared.err;
    EXPECT_EQ(rangeTimesOf(path), json::array());
    EXPECT_EQ(bookmarksOf(path), marks);
    const Result rebuilt = rectool({"range", "rebuild", path, "--yes"});
    EXPECT_EQ(rebuilt.exitCode, 0) << rebuilt.err;
    EXPECT_EQ(rangeTimesOf(path), json::parse("[10,100,1000]"));
    EXPECT_EQ(bookmarksOf(path), marks);
    EXPECT_EQ(rectool({"info", path}).exitCode, 0);
}

TEST_F(RecTool, RangesForWhichThereIsNoRoomInFrontOfTheBookmarksAreNotStored)
{
    for (const bool hasTable : {true, false}) {
        const QString path = bearings(hasTable);
        ASSERT_EQ(rectool({"bookmark", "add", path, "100", "mark", "--yes"}).exitCode, 0);
        const std::string before = bytesOf(path);
        const Result result = rectool({"range", "rebuild", path, "--yes"});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(result.err, HasSubstr("no room in front of the bookmarks"));
        EXPECT_EQ(bytesOf(path), before);
    }
}

TEST_F(RecTool, AFileWithoutChannelRangesIsNotCleared)
{
    const QString path = copyOf("bookmarks");
    const std::string before = bytesOf(path);
    const Result result = rectool({"range", "clear", path, "--yes"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.out, HasSubstr("no channel range"));
    EXPECT_EQ(bytesOf(path), before);
}

// Times

TEST_F(RecTool, TimesAreMillisecondsClocksOrBookmarks)
{
    const QString path = bearings();
    ASSERT_EQ(rectool({"bookmark", "add", path, "1500", "alarm", "--yes"}).exitCode, 0);
    ASSERT_EQ(rectool({"bookmark", "add", path, "1000", "alarm-2", "--yes"}).exitCode, 0);
    const std::vector<std::pair<QString, int>> times = {{"1500", 1500},
                                                        {"2023-11-14 22:13:21.5 UTC", 1500},
                                                        {"2023-11-14T22:13:21.501Z", 1501},
                                                        {"22:13:22 utc", 2000},
                                                        {"00:00 UTC", 6'400'000},
                                                        {"bookmark:alarm", 1500},
                                                        {"bookmark:alarm+10", 1510},
                                                        {"bookmark:alarm-1500", 0},
                                                        {"bookmark:alarm-2", 1000},
                                                        {"bookmark:alarm-2-1", 999}};
    for (const auto& [text, expected] : times) {
        const Result result = rectool({"state", path, "--json", "--at", text});
        ASSERT_EQ(result.exitCode, 0) << text.toStdString() << result.err;
        EXPECT_EQ(json::parse(result.out).at("atMs"), expected) << text.toStdString();
    }
    for (const QString text : {"", "soon", "22:13:21", "2023-11-14 22:13:19 UTC", "2023-11-14 UTC", "25:00 UTC", "-1",
                               "1500 mm", "bookmark:", "bookmark:fire", "bookmark:alarm-1501", "bookmark:alarm+x"}) {
        EXPECT_EQ(rectool({"state", path, "--at", text}).exitCode, 1) << text.toStdString();
    }
}

TEST_F(RecTool, AClockTimeThatSaysLocalIsOfTheZoneOfThisComputer)
{
    const QDateTime moment = QDateTime::fromMSecsSinceEpoch(1'700'000'001'500, Qt::LocalTime);
    const QString text = moment.toString("yyyy-MM-dd HH:mm:ss.zzz") + " local";
    EXPECT_EQ(json::parse(rectool({"state", bearings(), "--json", "--at", text}).out).at("atMs"), 1500);
}

TEST_F(RecTool, ATextOfTwoBookmarksIsNoTime)
{
    const QString path = bearings();
    ASSERT_EQ(rectool({"bookmark", "add", path, "1", "twice", "--yes"}).exitCode, 0);
    ASSERT_EQ(rectool({"bookmark", "add", path, "2", "twice", "--yes"}).exitCode, 0);
    EXPECT_EQ(rectool({"bookmark", "rm", path, "bookmark:twice", "--yes"}).exitCode, 1);
}

// state

TEST_F(RecTool, StateShowsTheLastRecordOfEachTypeWithMapsRebuilt)
{
    EXPECT_THAT(linesOf(rectool({"state", sample(), "--at", "1499"}).out),
                ElementsAre("Type  Keyword         Since  Value",
                            "   1  RFSPECTRUM       1000  88 MHz to 88.1 MHz, 5 channels, min -100, max -20",
                            "   6  MODULATION         12  FM", "  17  SQUELCHSTATE       14  true",
                            "  20  DFSPECTRUM         16  1 MHz to 3 MHz, 3 channels, 1 bearing, min 12.5, max 12.5 "
                            "degrees",
                            "  36  LEVEL              11  -30.25", "  46  FREQUENCY          10  100000000",
                            "  47  DEVICE_CAPTION     13  N\u00fcrnberg"));
    EXPECT_THAT(rectool({"state", sample(), "--at", "1500"}).out, HasSubstr("LEVEL            1500  -31.5\n"));
    EXPECT_EQ(rectool({"state", sample(), "--at", "9"}).out, "Nothing is recorded up to that time.\n");
}

TEST_F(RecTool, StateAsJsonHasWholeValues)
{
    const json document = json::parse(rectool({"state", "--json", sample(), "--at", "1000"}).out);
    EXPECT_EQ(document.at("atMs"), 1000);
    const json& spectrum = document.at("state")[0];
    EXPECT_EQ(spectrum.at("keyword"), "RFSPECTRUM");
    EXPECT_EQ(spectrum.at("timeMs"), 1000);
    EXPECT_EQ(spectrum.at("value").at("cells"), json::parse("[-90.0,-80.5,-100.0,-20.0,-70.0]"));
}

TEST_F(RecTool, StateOfAFileWithBookmarksAndNoChannelRangesIsNotMisledByTheirBytes)
{
    const json document = json::parse(rectool({"state", "--json", golden("bookmarks"), "--at", "2500"}).out);
    ASSERT_EQ(document.at("state").size(), 1U);
    EXPECT_EQ(document.at("state")[0].at("timeMs"), 1500);
}

TEST_F(RecTool, StateLeavesOutRecordsWhoseTimeIsLost)
{
    const Result result = rectool({"state", cut("full", 989), "--at", "1000"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.out, "Nothing is recorded up to that time.\n");
}

// map

TEST_F(RecTool, MapShowsTheBearingOfEveryChannel)
{
    EXPECT_THAT(
        linesOf(rectool({"map", bearings()}).out),
        ElementsAre("Channel  Frequency  Azimuth  Elevation  Level  Quality  Time  Measured",
                    "      0      2 MHz       30          3    -40       70  1500  2023-11-14 22:13:21.500 UTC",
                    "      1  2.025 MHz       40          4    -30       60  2000  2023-11-14 22:13:22.000 UTC"));
}

TEST_F(RecTool, MapIsCompleteAtItsEndAlsoWhereTheFullTextStandsBefore)
{
    const json document = json::parse(rectool({"map", bearings(), "--to", "999", "--json"}).out);
    EXPECT_EQ(document.at("toMs"), 999);
    EXPECT_TRUE(document.at("fromMs").is_null());
    EXPECT_EQ(document.at("range"), json::parse(R"({"startHz":1000000.0,"stepHz":25000.0,"count":3})"));
    EXPECT_EQ(document.at("bearings"),
              json::parse(R"([{"channel":0,"frequencyHz":1000000.0,"azimuthDeg":10.0,"elevationDeg":1.0,
                               "levelDb":-60.0,"quality":90.0,"timeMs":100,"timeStampUs":1700000000100000},
                              {"channel":1,"frequencyHz":1025000.0,"azimuthDeg":20.0,"elevationDeg":2.0,
                               "levelDb":-50.0,"quality":80.0,"timeMs":200,"timeStampUs":1700000000200000}])"));
}

TEST_F(RecTool, MapFromATimeShowsOnlyTheChannelsThatChangedSince)
{
    const auto channels = [](const Result& result) {
        std::vector<int> numbers;
        const json document = json::parse(result.out);
        for (const json& bearing : document.at("bearings")) {
            numbers.push_back(bearing.at("channel").get<int>());
        }
        return numbers;
    };
    const QString path = bearings();
    EXPECT_THAT(channels(rectool({"map", path, "--json", "--from", "1501"})), ElementsAre(1));
    EXPECT_THAT(channels(rectool({"map", path, "--json", "--from", "1500"})), ElementsAre(0, 1));
    EXPECT_THAT(channels(rectool({"map", path, "--json", "--from", "150", "--to", "999"})), ElementsAre(1));
    EXPECT_EQ(rectool({"map", path, "--from", "1000", "--to", "1499"}).out, "There is no bearing.\n");
    EXPECT_EQ(rectool({"map", path, "--from", "2", "--to", "1"}).exitCode, 1);
}

TEST_F(RecTool, MapOfARecordingWithoutDirectionFindingIsEmpty)
{
    const Result result = rectool({"map", golden("bookmarks")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "There is no bearing.\n");
}

#if !defined(_WIN32)
TEST_F(RecTool, AtATerminalOnlyYesChangesTheFile)
{
    if (QStandardPaths::findExecutable("script").isEmpty()) {
        GTEST_SKIP() << "there is no script program";
    }
    const QString path = bearings();
    const std::string before = bytesOf(path);
    const auto answer = [&](const char* text) {
        const QString command =
            QStringLiteral("echo '%1' | script -qec '%2 bookmark add %3 100 mark' /dev/null").arg(text, RECTOOL, path);
        return runProgram("sh", {"-c", command});
    };
    const Result refused = answer("");
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.out,
                AllOf(HasSubstr("Add the bookmark \"mark\" at 100 ms? [y/N]"), HasSubstr("Not confirmed.")));
    EXPECT_EQ(bytesOf(path), before);
    EXPECT_EQ(answer("y").exitCode, 0);
    EXPECT_EQ(bookmarksOf(path).size(), 1U);
}

TEST_F(RecTool, AReaderThatHasSeenEnoughIsNoError)
{
    const QString path = sample();
    const QString command = QStringLiteral(
        "trap '' PIPE; { for i in 1 2 3 4 5; do \"$0\" cat --json \"$1\"; echo $? >&2; done; } | head -n 0");
    const Result result = runProgram("sh", {"-c", command, RECTOOL, path});
    EXPECT_EQ(result.err, "0\n0\n0\n0\n0\n");
}

TEST_F(RecTool, AFullDiskIsAnError)
{
    if (!QFile::exists("/dev/full")) {
        GTEST_SKIP() << "there is no /dev/full";
    }
    const Result result = runProgram("sh", {"-c", "\"$0\" cat \"$1\" >/dev/full", RECTOOL, golden("full")});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.err, HasSubstr("the output could not be written"));
}
#endif

// Making recordings of others; what they hold is tested beside the verbs' own code

TEST_F(RecTool, CutAndMergeTakeRecordingsApartAndTogetherAgain)
{
    const QString whole = bearings();
    const QString first = folder() + "/first.rec";
    const QString second = folder() + "/second.rec";
    const QString merged = folder() + "/merged.rec";
    const Result cut = rectool({"cut", whole, "--to", "1200", "-o", first});
    EXPECT_EQ(cut.exitCode, 0) << cut.err;
    EXPECT_THAT(cut.out, AllOf(StartsWith(first.toStdString() + "\n"), HasSubstr("Records         5\n"),
                               HasSubstr("2023-11-14 22:13:21.200 UTC")));
    EXPECT_THAT(rectool({"cut", whole, "--from", "22:13:21.2 UTC", "--output", second}).out,
                HasSubstr("Records in front that tell the state at --from: 3."));
    const Result merge = rectool({"merge", second, first, "-o", merged, "--json"});
    EXPECT_EQ(merge.exitCode, 0) << merge.err;
    EXPECT_EQ(json::parse(merge.out).at("files")[0].at("file"), first.toStdString());
    for (const QString time : {"100", "1199", "1200", "1201", "1500", "2500"}) {
        const json expected = json::parse(rectool({"state", whole, "--at", time, "--json"}).out).at("state");
        const json found = json::parse(rectool({"state", merged, "--at", time, "--json"}).out).at("state");
        ASSERT_EQ(found.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_EQ(found[i].at("value"), expected[i].at("value")) << time.toStdString();
        }
    }
    EXPECT_EQ(rectool({"map", merged}).out, rectool({"map", whole}).out);
}
