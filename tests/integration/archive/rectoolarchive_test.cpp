// The verbs of rectool with the archive: asking it, and naming its files.
#include <algorithm>

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>

#include "programs.h"

namespace ArchiveTests {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::SizeIs;

class RectoolArchive : public ArchivePrograms {
protected:
    [[nodiscard]] Result archive(const QStringList& arguments) const
    {
        return rectool(QStringList("archive") + arguments);
    }
    static QString q(const std::string& text) { return QString::fromStdString(text); }
    static QString q(const char* text) { return QString::fromUtf8(text); }
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
    static void replaceAll(std::string& text, const std::string& what, const std::string& with)
    {
        for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
            text.replace(at, what.size(), with);
        }
    }
};

TEST_F(RectoolArchive, EveryVerbThatTakesAFileTakesAnAddress)
{
    const std::vector<std::string> addresses = recorded();
    const QString address = q(addresses.at(1));
    const QString copy = path(q("copy.rec"));
    const QString other = path(q("other.rec"));
    ASSERT_EQ(archive({q("fetch"), address, q("-o"), copy}).exitCode, 0);
    ASSERT_EQ(archive({q("fetch"), q(addresses.at(0)), q("-o"), other}).exitCode, 0);
    const std::vector<QStringList> verbs = {
        {q("info"), q("FILE")},
        {q("info"), q("FILE"), q("FILE"), q("--json")},
        {q("types"), q("FILE")},
        {q("cat"), q("FILE"), q("--to"), q("1000")},
        {q("state"), q("FILE"), q("--at"), q("1000"), q("--json")},
        {q("diff"), q("FILE"), q("--from"), q("500"), q("--to"), q("1000")},
        {q("map"), q("FILE"), q("--json")},
        {q("verify"), q("FILE")},
        {q("bookmark"), q("list"), q("FILE"), q("--json")},
        {q("range"), q("list"), q("FILE"), q("--json")},
        {q("cut"), q("FILE"), q("--to"), q("2000"), q("-o"), q("NEW"), q("--json")},
        {q("merge"), other, q("FILE"), q("--separate"), q("-o"), q("NEW"), q("--json")},
        {q("repair"), q("FILE"), q("-o"), q("NEW"), q("--json")}};
    for (const QStringList& verb : verbs) {
        SCOPED_TRACE(verb.join(QLatin1Char(' ')).toStdString());
        const QString made = path(q("made.rec"));
        QFile::remove(made);
        QStringList arguments = verb;
        const Result expected = rectool(arguments.replaceInStrings(q("FILE"), copy).replaceInStrings(q("NEW"), made));
        QFile::remove(made);
        arguments = verb;
        Result found = rectool(arguments.replaceInStrings(q("FILE"), address).replaceInStrings(q("NEW"), made));
        replaceAll(found.out, address.toStdString(), copy.toStdString());
        EXPECT_EQ(found.exitCode, expected.exitCode) << found.err;
        EXPECT_EQ(found.exitCode, 0) << found.err;
        EXPECT_EQ(found.out, expected.out);
        EXPECT_FALSE(found.out.empty());
    }
}

TEST_F(RectoolArchive, ABookmarkIsAddedToAFileOfTheArchiveAndMovedThereAsANewVersion)
{
    const std::string address = recorded().front();
    const Result added = rectool({q("bookmark"), q("add"), q(address), q("1500"), q("alarm"), q("--yes")});
    ASSERT_EQ(added.exitCode, 0) << added.err;
    EXPECT_THAT(rectool({q("bookmark"), q("list"), q(address)}).out, HasSubstr("alarm"));
    EXPECT_EQ(info(address).state, Zelvo::FileState::Edited);
    EXPECT_EQ(Zelvo::Mover(configuration()).runPending().moved, 1);
    EXPECT_EQ(info(address).version, 2);
    EXPECT_EQ(archive({q("verify")}).exitCode, 0);
    EXPECT_THAT(rectool({q("bookmark"), q("list"), q(address)}).out, HasSubstr("alarm"));
}

TEST_F(RectoolArchive, AChangeThatIsRefusedLeavesTheArchiveAsItIs)
{
    const std::string address = recorded().front();
    const QString sha256 = info(address).sha256;
    EXPECT_EQ(rectool({q("bookmark"), q("rm"), q(address), q("1500"), q("--yes")}).exitCode, 1);
    EXPECT_EQ(info(address).state, Zelvo::FileState::Moved);
    EXPECT_EQ(info(address).sha256, sha256);
    EXPECT_EQ(rectool({q("bookmark"), q("add"), q(address), q("1500"), q("x"), q("--yes")}).exitCode, 0)
        << "nobody holds it";
}

TEST_F(RectoolArchive, AFileThatIsLockedForWritingIsNotReadAndTheLockOfAReaderIsReleased)
{
    const std::string address = recorded().front();
    const Zelvo::ZelvoUrl url(q(address));
    {
        Zelvo::ZelvoClient writer(configuration());
        ASSERT_FALSE(writer.RequestFile(url, Zelvo::LockState::Exclusive).isEmpty())
            << writer.GetErrorString().toStdString();
        const Result refused = rectool({q("info"), q(address)});
        EXPECT_EQ(refused.exitCode, 2);
        EXPECT_THAT(refused.err, HasSubstr(address));
    }
    EXPECT_EQ(rectool({q("info"), q(address)}).exitCode, 0);
    Zelvo::ZelvoClient writer(configuration());
    EXPECT_FALSE(writer.RequestFile(url, Zelvo::LockState::Exclusive).isEmpty());
}

TEST_F(RectoolArchive, AnAddressThatCannotBeHadIsToldAndOtherFilesAreStillShown)
{
    const std::string address = recorded().front();
    const std::string unknown = "zelvo:///" + groupOf(address) + "/99";
    const Result both = rectool({q("info"), q("--json"), q(unknown), q(address)});
    EXPECT_EQ(both.exitCode, 2);
    EXPECT_THAT(both.err, HasSubstr(unknown));
    ASSERT_THAT(both.json().at("files"), SizeIs(2));
    EXPECT_EQ(both.json().at("files")[0].at("readability"), "missing");
    EXPECT_EQ(both.json().at("files")[1].at("sound"), true);
    EXPECT_EQ(rectool({q("types"), q(unknown)}).exitCode, 2);
    const Result alone = rectool({q("info"), q(unknown)});
    EXPECT_EQ(alone.exitCode, 2);
    EXPECT_EQ(std::count(alone.err.begin(), alone.err.end(), '\n'), 1) << alone.err;
    const Result listed = rectool({q("info"), q(unknown), q(address)});
    EXPECT_EQ(listed.exitCode, 2);
    EXPECT_EQ(std::count(listed.err.begin(), listed.err.end(), '\n'), 1) << listed.err;
    const Result merged = rectool({q("merge"), q(address), q(unknown), q("-o"), path(q("merged.rec"))});
    EXPECT_EQ(merged.exitCode, 2);
    EXPECT_FALSE(QFile::exists(path(q("merged.rec")))) << "nothing is made of a part of what was asked for";
}

TEST_F(RectoolArchive, AnAddressNamesNothingOutsideTheArchive)
{
    const std::string group = groupOf(recorded().front());
    const std::vector<std::string> others = {"zelvo:///../../etc/passwd", "zelvo:///" + group + "/../1",
                                             "zelvo:////etc/passwd",      "zelvo:///" + group + "/",
                                             "zelvo:///" + group,         "zelvo:" + config().toStdString()};
    for (const std::string& other : others) {
        const Result result = rectool({q("info"), q(other)});
        EXPECT_EQ(result.exitCode, 2) << other;
        EXPECT_TRUE(result.out.empty()) << other;
        EXPECT_EQ(archive({q("fetch"), q(other), q("-o"), path(q("taken"))}).exitCode, 2) << other;
    }
    EXPECT_FALSE(QFile::exists(path(q("taken"))));
}

TEST_F(RectoolArchive, VerifyNamesTheFirstAlteredOrMissingFileOrAllOfThem)
{
    const std::vector<std::string> addresses = recorded();
    const Result good = archive({q("verify"), q("--json")});
    EXPECT_EQ(good.exitCode, 0) << good.err;
    EXPECT_EQ(good.json(), (nlohmann::json{{"good", 2}, {"problems", nlohmann::json::array()}}));
    alter(addresses.at(0));
    ASSERT_TRUE(QFile::remove(storedFile(addresses.at(1))));
    const Result all = archive({q("verify"), q("--all"), q("--json")});
    EXPECT_EQ(all.exitCode, 3);
    ASSERT_THAT(all.json().at("problems"), SizeIs(2));
    const nlohmann::json problems = all.json().at("problems");
    for (const auto& problem : problems) {
        EXPECT_EQ(problem.at("problem"), problem.at("address") == addresses.at(0) ? "altered" : "missing");
    }
    const Result first = archive({q("verify")});
    EXPECT_EQ(first.exitCode, 3);
    EXPECT_THAT(first.err, HasSubstr(all.json().at("problems")[0].at("address")));
    EXPECT_THAT(first.err, testing::Not(HasSubstr(all.json().at("problems")[1].at("address"))));
    EXPECT_EQ(archive({q("verify"), q(groupOf(addresses.at(1)))}).exitCode, 3);
    EXPECT_EQ(archive({q("verify"), q("no-such-group")}).exitCode, 2);
}

TEST_F(RectoolArchive, FetchCopiesAFileAndNeverReplacesOne)
{
    const std::string address = recorded().front();
    const QString copy = path(q("copy.rec"));
    const Result fetched = archive({q("fetch"), q(address), q("-o"), copy});
    ASSERT_EQ(fetched.exitCode, 0) << fetched.err;
    QFile one(copy);
    QFile other(storedFile(address));
    ASSERT_TRUE(one.open(QIODevice::ReadOnly) && other.open(QIODevice::ReadOnly));
    EXPECT_EQ(one.readAll(), other.readAll());
    EXPECT_EQ(archive({q("fetch"), q(address), q("-o"), copy}).exitCode, 2);
    EXPECT_EQ(archive({q("fetch"), q(address)}).exitCode, 0);
    EXPECT_TRUE(QFile::exists(path(info(address).name))) << "under its own name in the current directory";
    alter(address);
    EXPECT_EQ(archive({q("fetch"), q(address), q("-o"), path(q("damaged.rec"))}).exitCode, 3);
    EXPECT_FALSE(QFile::exists(path(q("damaged.rec"))));
}

TEST_F(RectoolArchive, FetchTakesNoPathForTheNameOfAFile)
{
    const std::string address = recorded().front();
    {
        QSqlDatabase registry = QSqlDatabase::addDatabase(q("QSQLITE"), q("registry"));
        registry.setDatabaseName(path(q("own/archive.sqlite")));
        ASSERT_TRUE(registry.open());
        EXPECT_TRUE(QSqlQuery(registry).exec(q("UPDATE group_files SET name = '../outside.rec'")));
    }
    QSqlDatabase::removeDatabase(q("registry"));
    const Result refused = archive({q("fetch"), q(address)});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_THAT(refused.err, HasSubstr("give it one with -o"));
    EXPECT_FALSE(QFile::exists(path(q("../outside.rec"))));
    EXPECT_EQ(archive({q("fetch"), q(address), q("-o"), path(q("named.rec"))}).exitCode, 0);
}

TEST_F(RectoolArchive, GroupsAndShowTellWhatTheArchiveKnows)
{
    const std::vector<std::string> addresses = recorded();
    const nlohmann::json groups = archive({q("groups"), q("--json")}).json().at("groups");
    ASSERT_THAT(groups, SizeIs(2));
    EXPECT_EQ(groups[0].at("group"), groupOf(addresses.at(1))) << "the newest first";
    EXPECT_EQ(groups[0].at("description"), "Scan-Records (Recording2)");
    EXPECT_EQ(groups[0].at("user"), "Arbitary Username");
    EXPECT_EQ(groups[0].at("maxBytes"), 52'428'800);
    EXPECT_EQ(groups[0].at("station"), "north");
    EXPECT_GT(groups[0].at("expiresMs"), groups[0].at("createdMs"));
    EXPECT_THAT(archive({q("groups"), q("--limit"), q("1"), q("--json")}).json().at("groups"), SizeIs(1));
    EXPECT_THAT(archive({q("groups")}).out, AllOf(HasSubstr(groupOf(addresses.at(0))), HasSubstr("north")));

    const Result group = archive({q("show"), q(groupOf(addresses.at(0))), q("--json")});
    EXPECT_EQ(group.exitCode, 0) << group.err;
    ASSERT_THAT(group.json().at("members"), SizeIs(1));
    const nlohmann::json member = group.json().at("members")[0];
    EXPECT_EQ(member.at("address"), addresses.at(0));
    EXPECT_EQ(member.at("state"), "moved");
    EXPECT_THAT(std::string(member.at("sha256")), testing::SizeIs(64));
    EXPECT_EQ(archive({q("show"), q(addresses.at(0)), q("--json")}).json(), member);
    EXPECT_THAT(archive({q("show"), q(addresses.at(0))}).out, HasSubstr("moved"));
    EXPECT_EQ(archive({q("show"), q("no-such-group")}).exitCode, 2);
    EXPECT_EQ(archive({q("show"), q(addresses.at(0) + "9")}).exitCode, 2);
}

TEST_F(RectoolArchive, StatusTellsPeopleWhatIsWaitingAndWhy)
{
    const std::string address = recorded().front();
    ASSERT_EQ(rectool({q("bookmark"), q("add"), q(address), q("1500"), q("x"), q("--yes")}).exitCode, 0);
    const Result status = archive({q("status")});
    EXPECT_EQ(status.exitCode, 0) << status.err;
    EXPECT_THAT(status.out, AllOf(HasSubstr("Waiting      1 files"), HasSubstr("Moved        1 files"),
                                  HasSubstr(address), HasSubstr("waits for the mover"), HasSubstr("north")));
}

TEST_F(RectoolArchive, AFailedMoveIsToldByStatusAndTriedAgainAtOnceAfterRetry)
{
    configure(q("FirstPauseSeconds = 1000\nLongestPauseSeconds = 1000"));
    const std::string address = recorded().front();
    ASSERT_EQ(rectool({q("bookmark"), q("add"), q(address), q("1500"), q("x"), q("--yes")}).exitCode, 0);
    const Zelvo::FileInfo edited = info(address);
    ASSERT_TRUE(QFile::rename(edited.localPath, path(q("aside"))));
    Zelvo::Mover mover(configuration());
    EXPECT_EQ(mover.runPending().failed, 1);
    const Result status = archive({q("status"), q("--json")});
    EXPECT_EQ(status.exitCode, 3);
    EXPECT_EQ(status.json().at("failed"), 1);
    EXPECT_EQ(archive({q("show"), q(address)}).exitCode, 3);
    EXPECT_EQ(archive({q("groups")}).exitCode, 3);
    ASSERT_TRUE(QFile::rename(path(q("aside")), edited.localPath));
    EXPECT_EQ(mover.runPending().moved, 0) << "it pauses";
    EXPECT_EQ(archive({q("retry"), q("--json"), q(groupOf(address))}).json().at("files"), 1);
    EXPECT_EQ(mover.runPending().moved, 1);
    EXPECT_EQ(archive({q("status")}).exitCode, 0);
    EXPECT_EQ(archive({q("retry"), q("no-such-group")}).exitCode, 2);
}

TEST_F(RectoolArchive, WrongArgumentsAndAMissingConfigurationHaveTheirExitCodes)
{
    EXPECT_EQ(archive({}).exitCode, 1);
    EXPECT_EQ(archive({q("show")}).exitCode, 1);
    EXPECT_EQ(archive({q("groups"), q("--limit"), q("0")}).exitCode, 1);
    const QStringList verbs = {q("status"), q("groups"), q("show"), q("fetch"), q("verify"), q("retry")};
    for (const QString& verb : verbs) {
        const Result help = archive({verb, q("--help")});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_THAT(help.out, HasSubstr("rectool archive " + verb.toStdString()));
    }
    ASSERT_TRUE(QFile::remove(config()));
    const Result missing = archive({q("status")});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_THAT(missing.err, HasSubstr("station.toml"));
    EXPECT_EQ(rectool({q("info"), q("zelvo:///g/1")}).exitCode, 2);
}

}  // namespace
}  // namespace ArchiveTests
