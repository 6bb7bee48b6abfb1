// Recording with an archive: one command records and moves.
#include "programs.h"

namespace ArchiveTests {
namespace {

using namespace testing;

using RecstationArchive = ArchivePrograms;

TEST_F(RecstationArchive, RecordingsArriveInTheStorageAndCanBeReadByTheirAddresses)
{
    const Result run = simulate();
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const nlohmann::json summary = run.json();
    EXPECT_EQ(summary.at("archive"), (nlohmann::json{{"moved", 2}, {"waiting", 0}, {"unregistered", 0}}));
    EXPECT_TRUE(recordings().isEmpty()) << recordings().join(QLatin1Char(' ')).toStdString();

    const Result status = rectool({"archive", "status", "--json"});
    EXPECT_EQ(status.exitCode, 0) << status.err;
    EXPECT_EQ(status.json().at("moved"), 2);
    EXPECT_EQ(status.json().at("waiting"), 0);
    EXPECT_EQ(status.json().at("failed"), 0);

    ASSERT_THAT(summary.at("files"), SizeIs(2));
    for (const auto& file : summary.at("files")) {
        const std::string address = file.at("address");
        EXPECT_EQ(file.at("state"), "archived");
        EXPECT_TRUE(QFile::exists(storedFile(address)));
        const Result info = rectool({"info", "--json", QString::fromStdString(address)});
        ASSERT_EQ(info.exitCode, 0) << info.err;
        const nlohmann::json report = info.json().at("files")[0];
        EXPECT_EQ(report.at("file"), address);
        EXPECT_EQ(report.at("sound"), true);
        EXPECT_EQ(report.at("records"), file.at("records"));
        EXPECT_EQ(report.at("size"), file.at("bytes"));
        EXPECT_GT(file.at("records"), 50);
    }
}

TEST_F(RecstationArchive, TheListOfFilesNamesTheAddressesOfThoseThatAreArchived)
{
    const Result run = recstation({"feed"}, R"({"at": 0, "path": "/LEVEL", "create": "number"}
{"at": 0, "record": "On"}
{"at": 900, "path": "/LEVEL", "set": 1}
{"at": 1000, "record": "Off"}
{"at": 1000, "record": "On"}
{"at": 1900, "path": "/LEVEL", "set": 2}
{"at": 2000, "record": "Off"}
{"at": 3000, "record": "On"}
{"at": 4000, "path": "/LEVEL", "set": 3}
)");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    ASSERT_THAT(run.json().at("files"), SizeIs(3)) << "also those that were moved while the run went on";
    std::vector<std::string> addresses;
    const nlohmann::json files = run.json().at("files");
    for (const auto& file : files) {
        EXPECT_EQ(file.at("state"), "archived");
        EXPECT_GT(file.at("bytes"), 500);
        addresses.push_back(file.at("address"));
    }
    std::sort(addresses.begin(), addresses.end());
    EXPECT_EQ(std::unique(addresses.begin(), addresses.end()), addresses.end());
    EXPECT_EQ(run.json().at("archive").at("moved"), 3);
    EXPECT_TRUE(recordings().isEmpty());
}

/// Recordings of one caption with a dot, whose finished name is the same for all, one after the other.
QByteArray recordingsOfStGallen(int count)
{
    QByteArray feed = R"({"at": 0, "path": "/LEVEL", "create": "number"}
{"at": 0, "path": "/DEVICE_CAPTION", "create": "text", "value": "St. Gallen"}
)";
    for (int i = 1; i <= count; ++i) {
        feed += QStringLiteral(
                    "{\"at\": %1, \"record\": \"On\"}\n{\"at\": %2, \"path\": \"/LEVEL\", \"set\": %3}\n"
                    "{\"at\": %4, \"record\": \"Off\"}\n")
                    .arg(i * 400)
                    .arg(i * 400 + 100)
                    .arg(-100.25 - i)
                    .arg(i * 400 + 200)
                    .toUtf8();
    }
    return feed;
}

TEST_F(RecstationArchive, AnAddressGivesItsOwnRecordingOrNone)
{
#if defined(Q_OS_WIN)
    GTEST_SKIP() << "Wine tells the last change as the time a file was made, by which the archive knows it";
#endif
    constexpr int Count = 8;
    static_cast<void>(recorded());
    for (const bool away : {false, true}) {
        if (away) {
            ASSERT_TRUE(QDir().rename(path("storage"), path("away")));
        }
        const Result run = recstation({"feed"}, recordingsOfStGallen(Count));
        const nlohmann::json files = run.json().at("files");
        ASSERT_THAT(files, SizeIs(Count));
        int unnamed = 0;
        double level = -100.25;
        for (const auto& file : files) {
            --level;
            const std::string address = file.at("address");
            const Result cat = rectool({"cat", QString::fromStdString(address)});
            const Result show = rectool({"archive", "show", QString::fromStdString(address)});
            if (file.at("state") == "temporary") {
                ++unnamed;
                EXPECT_EQ(cat.exitCode, 2) << cat.out;
                EXPECT_THAT(show.out, HasSubstr("could not take its name"));
                EXPECT_THAT(std::string(file.at("problem")), HasSubstr("not renamed"));
                EXPECT_THAT(run.err, HasSubstr(std::string(file.at("path")) + ": not renamed"));
                EXPECT_EQ(rectool({"verify", QString::fromStdString(file.at("path"))}).exitCode, 0);
                continue;
            }
            EXPECT_EQ(file.at("state"), away ? "finished" : "archived");
            EXPECT_EQ(cat.exitCode, 0) << cat.err;
            EXPECT_THAT(cat.out, HasSubstr(QString::number(level).toStdString())) << address;
        }
        EXPECT_EQ(run.exitCode, unnamed > 0 ? 3 : 0) << run.err;
        EXPECT_GT(unnamed, 0) << "at full speed the mover is slower";
    }
}

TEST_F(RecstationArchive, AStorageThatIsAwayCostsNoRecordingAndIsTold)
{
    static_cast<void>(recorded());
    ASSERT_TRUE(QDir().rename(path("storage"), path("away")));
    const Result run = simulate();
    EXPECT_EQ(run.exitCode, 0) << "the recordings are safe: " << run.err;
    EXPECT_EQ(run.json().at("archive").at("moved"), 0);
    EXPECT_EQ(run.json().at("archive").at("waiting"), 2);
    EXPECT_THAT(std::string(run.json().at("archive").at("problem")), HasSubstr("storage"));
    EXPECT_THAT(run.err, HasSubstr("archive: 2 recordings not moved yet: "));
    const nlohmann::json files = run.json().at("files");
    for (const auto& file : files) {
        EXPECT_EQ(file.at("state"), "finished");
        EXPECT_TRUE(QFile::exists(QString::fromStdString(file.at("path"))));
        // What waits can be read by its address all the same.
        EXPECT_EQ(rectool({"verify", QString::fromStdString(file.at("address"))}).exitCode, 0);
    }
    const Result status = rectool({"archive", "status", "--json"});
    EXPECT_EQ(status.exitCode, 3);
    EXPECT_EQ(status.json().at("storageUsable"), false);
    EXPECT_EQ(status.json().at("waiting"), 2);
    EXPECT_THAT(status.json().at("notMoved"), SizeIs(2));

    ASSERT_TRUE(QDir().rename(path("away"), path("storage")));
    EXPECT_EQ(rectool({"archive", "retry"}).exitCode, 0);
    EXPECT_EQ(Zelvo::Mover(configuration()).runPending().moved, 2);
    EXPECT_TRUE(recordings().isEmpty());
    EXPECT_EQ(rectool({"archive", "verify"}).exitCode, 0);
}

TEST_F(RecstationArchive, ARegistryThatCannotBeSetUpIsToldAndRecordingGoesOn)
{
    TestSupport::writeBytes(path("own"), {});  // in the way
    const Result run = simulate();
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_THAT(run.err, HasSubstr("warning: archive: "));
    EXPECT_THAT(run.err, HasSubstr("archive: 2 recordings not registered, and not going to be moved"));
    EXPECT_EQ(recordings().filter(".rec").size(), 2);
    EXPECT_EQ(run.json().at("archive").at("unregistered"), 2);
}

TEST_F(RecstationArchive, AWrongConfigurationOfTheArchiveEndsTheProgramBeforeAnythingIsRecorded)
{
    configure("Stroage = \"/x\"");
    const Result run = simulate();
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(std::string(run.json().at("failure")), HasSubstr("Stroage"));
    EXPECT_TRUE(recordings().isEmpty());
}

TEST_F(RecstationArchive, WithoutAnArchiveNothingIsSaidOfOne)
{
    QByteArray text = TestSupport::readBytes(config());
    text.truncate(text.indexOf("[archive]"));
    TestSupport::writeBytes(config(), text);
    const Result run = simulate();
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_FALSE(run.json().contains("archive"));
    EXPECT_THAT(run.err, Not(HasSubstr("archive")));
    EXPECT_EQ(recordings().filter(".rec").size(), 2);
}

}  // namespace
}  // namespace ArchiveTests
