// The verbs of rectool with the archive: asking it, and naming its files.
#include <QSqlDatabase>
#include <QSqlQuery>

#include "programs.h"

namespace ArchiveTests {
namespace {

using namespace testing;

class RectoolArchive : public ArchivePrograms {
protected:
    [[nodiscard]] Result archive(const QStringList& arguments) const
    {
        return rectool(QStringList("archive") + arguments);
    }
    static QString q(const std::string& text) { return QString::fromStdString(text); }
    static std::string groupOf(const std::string& address)
    {
        return address.substr(std::string("zelvo:///").size(), address.rfind('/') - std::string("zelvo:///").size());
    }
    void alter(const std::string& address) const
    {
        QFile file(storedFile(address));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite)) << file.errorString().toStdString();
        ASSERT_TRUE(file.seek(700));
        ASSERT_EQ(file.write("altered"), 7);
    }
};

TEST_F(RectoolArchive, EveryVerbThatTakesAFileTakesAnAddress)
{
    const std::vector<std::string> addresses = recorded();
    const QString address = q(addresses.at(1));
    const QString copy = path("copy.rec");
    const QString other = path("other.rec");
    ASSERT_EQ(archive({"fetch", address, "-o", copy}).exitCode, 0);
    ASSERT_EQ(archive({"fetch", q(addresses.at(0)), "-o", other}).exitCode, 0);
    const std::vector<QStringList> verbs = {{"info", "FILE"},
                                            {"info", "FILE", "FILE", "--json"},
                                            {"types", "FILE"},
                                            {"cat", "FILE", "--to", "1000"},
                                            {"state", "FILE", "--at", "1000", "--json"},
                                            {"diff", "FILE", "--from", "500", "--to", "1000"},
                                            {"map", "FILE", "--json"},
                                            {"verify", "FILE"},
                                            {"bookmark", "list", "FILE", "--json"},
                                            {"range", "list", "FILE", "--json"},
                                            {"cut", "FILE", "--to", "2000", "-o", "NEW", "--json"},
                                            {"merge", other, "FILE", "--separate", "-o", "NEW", "--json"},
                                            {"repair", "FILE", "-o", "NEW", "--json"}};
    const auto runOn = [this](QStringList verb, const QString& file) {
        const QString made = path("made.rec");
        QFile::remove(made);
        return rectool(verb.replaceInStrings("FILE", file).replaceInStrings("NEW", made));
    };
    for (const QStringList& verb : verbs) {
        SCOPED_TRACE(verb.join(QLatin1Char(' ')).toStdString());
        const Result expected = runOn(verb, copy);
        const Result found = runOn(verb, address);
        EXPECT_EQ(found.exitCode, expected.exitCode) << found.err;
        EXPECT_EQ(found.exitCode, 0) << found.err;
        EXPECT_EQ(QString::fromStdString(found.out).replace(address, copy).toStdString(), expected.out);
        EXPECT_FALSE(found.out.empty());
    }
}

TEST_F(RectoolArchive, ABookmarkIsAddedToAFileOfTheArchiveAndMovedThereAsANewVersion)
{
    const std::string address = recorded().front();
    const Result added = rectool({"bookmark", "add", q(address), "1500", "alarm", "--yes"});
    ASSERT_EQ(added.exitCode, 0) << added.err;
    EXPECT_THAT(rectool({"bookmark", "list", q(address)}).out, HasSubstr("alarm"));
    EXPECT_EQ(info(address).state, Zelvo::FileState::Edited);
    EXPECT_EQ(Zelvo::Mover(configuration()).runPending().moved, 1);
    EXPECT_EQ(info(address).version, 2);
    EXPECT_EQ(archive({"verify"}).exitCode, 0);
    EXPECT_THAT(rectool({"bookmark", "list", q(address)}).out, HasSubstr("alarm"));
}

TEST_F(RectoolArchive, AChangeThatIsRefusedLeavesTheArchiveAsItIs)
{
    const std::string address = recorded().front();
    const QString sha256 = info(address).sha256;
    EXPECT_EQ(rectool({"bookmark", "rm", q(address), "1500", "--yes"}).exitCode, 1);
    EXPECT_EQ(info(address).state, Zelvo::FileState::Moved);
    EXPECT_EQ(info(address).sha256, sha256);
    EXPECT_EQ(rectool({"bookmark", "add", q(address), "1500", "x", "--yes"}).exitCode, 0) << "nobody holds it";
}

TEST_F(RectoolArchive, AFileThatIsLockedForWritingIsNotReadAndTheLockOfAReaderIsReleased)
{
    const std::string address = recorded().front();
    const Zelvo::ZelvoUrl url(q(address));
    {
        Zelvo::ZelvoClient writer(configuration());
        ASSERT_FALSE(writer.RequestFile(url, Zelvo::LockState::Exclusive).isEmpty())
            << writer.GetErrorString().toStdString();
        const Result refused = rectool({"info", q(address)});
        EXPECT_EQ(refused.exitCode, 2);
        EXPECT_THAT(refused.err, HasSubstr(address));
    }
    EXPECT_EQ(rectool({"info", q(address)}).exitCode, 0);
    Zelvo::ZelvoClient writer(configuration());
    EXPECT_FALSE(writer.RequestFile(url, Zelvo::LockState::Exclusive).isEmpty());
}

TEST_F(RectoolArchive, AnAddressThatCannotBeHadIsToldAndOtherFilesAreStillShown)
{
    const std::string address = recorded().front();
    const std::string unknown = "zelvo:///" + groupOf(address) + "/99";
    const Result both = rectool({"info", "--json", q(unknown), q(address)});
    EXPECT_EQ(both.exitCode, 2);
    EXPECT_THAT(both.err, HasSubstr(unknown));
    ASSERT_THAT(both.json().at("files"), SizeIs(2));
    EXPECT_EQ(both.json().at("files")[0].at("readability"), "missing");
    EXPECT_EQ(both.json().at("files")[1].at("sound"), true);
    EXPECT_EQ(rectool({"types", q(unknown)}).exitCode, 2);
    for (const QStringList& files : {QStringList{q(unknown)}, {q(unknown), q(address)}}) {
        const Result listed = rectool(QStringList("info") + files);
        EXPECT_EQ(listed.exitCode, 2);
        EXPECT_EQ(std::count(listed.err.begin(), listed.err.end(), '\n'), 1) << listed.err;
    }
    const Result merged = rectool({"merge", q(address), q(unknown), "-o", path("merged.rec")});
    EXPECT_EQ(merged.exitCode, 2);
    EXPECT_FALSE(QFile::exists(path("merged.rec"))) << "nothing is made of a part of what was asked for";
}

TEST_F(RectoolArchive, AnAddressNamesNothingOutsideTheArchive)
{
    const std::string group = groupOf(recorded().front());
    const std::vector<std::string> others = {"zelvo:///../../etc/passwd", "zelvo:///" + group + "/../1",
                                             "zelvo:////etc/passwd",      "zelvo:///" + group + "/",
                                             "zelvo:///" + group,         "zelvo:" + config().toStdString()};
    for (const std::string& other : others) {
        const Result result = rectool({"info", q(other)});
        EXPECT_EQ(result.exitCode, 2) << other;
        EXPECT_TRUE(result.out.empty()) << other;
        EXPECT_EQ(archive({"fetch", q(other), "-o", path("taken")}).exitCode, 2) << other;
    }
    EXPECT_FALSE(QFile::exists(path("taken")));
}

TEST_F(RectoolArchive, VerifyNamesTheFirstAlteredOrMissingFileOrAllOfThem)
{
    const std::vector<std::string> addresses = recorded();
    const Result good = archive({"verify", "--json"});
    EXPECT_EQ(good.exitCode, 0) << good.err;
    EXPECT_EQ(good.json(), (nlohmann::json{{"good", 2}, {"problems", nlohmann::json::array()}}));
    alter(addresses.at(0));
    ASSERT_TRUE(QFile::remove(storedFile(addresses.at(1))));
    const Result all = archive({"verify", "--all", "--json"});
    EXPECT_EQ(all.exitCode, 3);
    ASSERT_THAT(all.json().at("problems"), SizeIs(2));
    const nlohmann::json problems = all.json().at("problems");
    for (const auto& problem : problems) {
        EXPECT_EQ(problem.at("problem"), problem.at("address") == addresses.at(0) ? "altered" : "missing");
    }
    const Result first = archive({"verify"});
    EXPECT_EQ(first.exitCode, 3);
    EXPECT_THAT(first.err, HasSubstr(all.json().at("problems")[0].at("address")));
    EXPECT_THAT(first.err, testing::Not(HasSubstr(all.json().at("problems")[1].at("address"))));
    EXPECT_EQ(archive({"verify", q(groupOf(addresses.at(1)))}).exitCode, 3);
    EXPECT_EQ(archive({"verify", "no-such-group"}).exitCode, 2);
}

TEST_F(RectoolArchive, FetchCopiesAFileAndNeverReplacesOne)
{
    const std::string address = recorded().front();
    const QString copy = path("copy.rec");
    const Result fetched = archive({"fetch", q(address), "-o", copy});
    ASSERT_EQ(fetched.exitCode, 0) << fetched.err;
    EXPECT_EQ(TestSupport::readBytes(copy), TestSupport::readBytes(storedFile(address)));
    EXPECT_EQ(archive({"fetch", q(address), "-o", copy}).exitCode, 2);
    EXPECT_EQ(archive({"fetch", q(address)}).exitCode, 0);
    EXPECT_TRUE(QFile::exists(path(info(address).name))) << "under its own name in the current directory";
    alter(address);
    EXPECT_EQ(archive({"fetch", q(address), "-o", path("damaged.rec")}).exitCode, 3);
    EXPECT_FALSE(QFile::exists(path("damaged.rec")));
}

TEST_F(RectoolArchive, FetchTakesNoPathForTheNameOfAFile)
{
    const std::string address = recorded().front();
    {
        QSqlDatabase registry = QSqlDatabase::addDatabase("QSQLITE", "registry");
        registry.setDatabaseName(path("own/archive.sqlite"));
        ASSERT_TRUE(registry.open());
        EXPECT_TRUE(QSqlQuery(registry).exec("UPDATE group_files SET name = '../outside.rec'"));
    }
    QSqlDatabase::removeDatabase("registry");
    const Result refused = archive({"fetch", q(address)});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_THAT(refused.err, HasSubstr("give it one with -o"));
    EXPECT_FALSE(QFile::exists(path("../outside.rec")));
    EXPECT_EQ(archive({"fetch", q(address), "-o", path("named.rec")}).exitCode, 0);
}

TEST_F(RectoolArchive, GroupsAndShowTellWhatTheArchiveKnows)
{
    const std::vector<std::string> addresses = recorded();
    const nlohmann::json groups = archive({"groups", "--json"}).json().at("groups");
    ASSERT_THAT(groups, SizeIs(2));
    EXPECT_EQ(groups[0].at("group"), groupOf(addresses.at(1))) << "the newest first";
    EXPECT_EQ(groups[0].at("description"), "Scan-Records (Recording2)");
    EXPECT_EQ(groups[0].at("user"), "Arbitary Username");
    EXPECT_EQ(groups[0].at("maxBytes"), 52'428'800);
    EXPECT_EQ(groups[0].at("station"), "north");
    EXPECT_GT(groups[0].at("expiresMs"), groups[0].at("createdMs"));
    EXPECT_THAT(archive({"groups", "--limit", "1", "--json"}).json().at("groups"), SizeIs(1));
    EXPECT_THAT(archive({"groups"}).out, AllOf(HasSubstr(groupOf(addresses.at(0))), HasSubstr("north")));

    const Result group = archive({"show", q(groupOf(addresses.at(0))), "--json"});
    EXPECT_EQ(group.exitCode, 0) << group.err;
    ASSERT_THAT(group.json().at("members"), SizeIs(1));
    const nlohmann::json member = group.json().at("members")[0];
    EXPECT_EQ(member.at("address"), addresses.at(0));
    EXPECT_EQ(member.at("state"), "moved");
    EXPECT_THAT(std::string(member.at("sha256")), testing::SizeIs(64));
    EXPECT_EQ(archive({"show", q(addresses.at(0)), "--json"}).json(), member);
    EXPECT_THAT(archive({"show", q(addresses.at(0))}).out, HasSubstr("moved"));
    EXPECT_EQ(archive({"show", "no-such-group"}).exitCode, 2);
    EXPECT_EQ(archive({"show", q(addresses.at(0) + "9")}).exitCode, 2);
}

TEST_F(RectoolArchive, StatusTellsPeopleWhatIsWaitingAndWhy)
{
    const std::string address = recorded().front();
    ASSERT_EQ(rectool({"bookmark", "add", q(address), "1500", "x", "--yes"}).exitCode, 0);
    const Result status = archive({"status"});
    EXPECT_EQ(status.exitCode, 0) << status.err;
    EXPECT_THAT(status.out, AllOf(HasSubstr("Waiting      1 files"), HasSubstr("Moved        1 files"),
                                  HasSubstr(address), HasSubstr("waits for the mover"), HasSubstr("north")));
}

TEST_F(RectoolArchive, AFailedMoveIsToldByStatusAndTriedAgainAtOnceAfterRetry)
{
    configure("FirstPauseSeconds = 1000\nLongestPauseSeconds = 1000");
    const std::string address = recorded().front();
    ASSERT_EQ(rectool({"bookmark", "add", q(address), "1500", "x", "--yes"}).exitCode, 0);
    const Zelvo::FileInfo edited = info(address);
    ASSERT_TRUE(QFile::rename(edited.localPath, path("aside")));
    Zelvo::Mover mover(configuration());
    EXPECT_EQ(mover.runPending().failed, 1);
    const Result status = archive({"status", "--json"});
    EXPECT_EQ(status.exitCode, 3);
    EXPECT_EQ(status.json().at("failed"), 1);
    EXPECT_EQ(archive({"show", q(address)}).exitCode, 3);
    EXPECT_EQ(archive({"groups"}).exitCode, 3);
    ASSERT_TRUE(QFile::rename(path("aside"), edited.localPath));
    EXPECT_EQ(mover.runPending().moved, 0) << "it pauses";
    EXPECT_EQ(archive({"retry", "--json", q(groupOf(address))}).json().at("files"), 1);
    EXPECT_EQ(mover.runPending().moved, 1);
    EXPECT_EQ(archive({"status"}).exitCode, 0);
    EXPECT_EQ(archive({"retry", "no-such-group"}).exitCode, 2);
}

TEST_F(RectoolArchive, WrongArgumentsAndAMissingConfigurationHaveTheirExitCodes)
{
    EXPECT_EQ(archive({}).exitCode, 1);
    EXPECT_EQ(archive({"show"}).exitCode, 1);
    EXPECT_EQ(archive({"groups", "--limit", "0"}).exitCode, 1);
    const QStringList verbs = {"status", "groups", "show", "fetch", "verify", "retry"};
    for (const QString& verb : verbs) {
        const Result help = archive({verb, "--help"});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_THAT(help.out, HasSubstr("rectool archive " + verb.toStdString()));
    }
    ASSERT_TRUE(QFile::remove(config()));
    const Result missing = archive({"status"});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_THAT(missing.err, HasSubstr("station.toml"));
    EXPECT_EQ(rectool({"info", "zelvo:///g/1"}).exitCode, 2);
}

}  // namespace
}  // namespace ArchiveTests
