// When the files of a group are moved: asked for, superseded, of the dead, shared.
#include "archivefixture.h"

using namespace Zelvo;
using namespace ArchiveTests;

using Groups = ArchiveTest;

TEST_F(Groups, StayUntilTheyAreAskedFor)
{
    const QString guid = newGroup();
    add(guid, "a", bytesOf(10));
    EXPECT_EQ(move().moved, 0);
    EXPECT_TRUE(QFile::exists(recording("a.rec")));
    client().MoveToNas(guid);
    EXPECT_EQ(move().moved, 1);
}

TEST_F(Groups, OfASplitRecordingGoTogetherWithTheOneMoveAtItsEnd)
{
    const QString guid = newGroup();
    for (std::uint32_t part = 0; part < 3; ++part) {
        EXPECT_EQ(begin(guid, QString::number(part), bytesOf(10, static_cast<int>(part))), part + 1);
        EXPECT_EQ(move().moved, 0);
        finish(QString::number(part));
    }
    client().MoveToNas(guid);
    EXPECT_EQ(move().moved, 3);
    EXPECT_EQ(stored().size(), 3);
}

TEST_F(Groups, StayAsAWholeWhileOneMemberIsStillRecorded)
{
    const QString guid = newGroup();
    const std::uint32_t first = begin(guid, "a", bytesOf(10, 1));
    const std::uint32_t second = begin(guid, "b", bytesOf(10, 2));
    finish("a");
    client().MoveToNas(guid);
    EXPECT_EQ(summed(move()), "0 moved, 0 failed, 2 waiting");
    EXPECT_EQ(file(url(guid, second)).error, QStringLiteral("is still recorded as ") + recording("b.tmp"));
    finish("b");
    EXPECT_EQ(move().moved, 2);
    EXPECT_EQ(storedBytes(url(guid, first)), bytesOf(10, 1));
    EXPECT_EQ(storedBytes(url(guid, second)), bytesOf(10, 2));
}

TEST_F(Groups, KnowAMemberWhoseUnfinishedNameHasDots)
{
    const QString guid = newGroup();
    writeBytes(recording("rx.1.tmp"), bytesOf(10));
    client().AddFile("rx.rec", guid);
    client().MoveToNas(guid);
    EXPECT_EQ(move().failed, 0);
    QFile::rename(recording("rx.1.tmp"), recording("rx.rec"));
    EXPECT_EQ(move().moved, 1);
}

// A recorder that was split after another one of its process began a group adds its next file to that group.
TEST_F(Groups, TakeAFileOfAnotherRecorderFromWhereItIs)
{
    const QString other = folder() + "/other";
    QDir().mkpath(other);
    ZelvoClient one(configuration());
    ZelvoClient two(configuration());
    const QString first = groupOf(one, recordings());
    const std::uint32_t a1 = beginFile(one, first, recordings(), "a1", bytesOf(10, 1));
    const QString second = groupOf(two, other);
    const std::uint32_t b1 = beginFile(two, second, other, "b1", bytesOf(10, 2));
    finish("a1");
    const std::uint32_t a2 = beginFile(one, second, recordings(), "a2", bytesOf(10, 3));
    // The first group is never asked for, but its process has gone on with another.
    EXPECT_EQ(move().moved, 1);
    finish("a2");
    one.MoveToNas(second);
    EXPECT_EQ(move().moved, 0) << "b1 is still recorded";
    finishFile(other, "b1");
    two.MoveToNas(second);
    EXPECT_EQ(move().moved, 2);
    EXPECT_EQ(storedBytes(url(first, a1)), bytesOf(10, 1));
    EXPECT_EQ(storedBytes(url(second, b1)), bytesOf(10, 2));
    EXPECT_EQ(storedBytes(url(second, a2)), bytesOf(10, 3));
    EXPECT_EQ(stored().size(), 3);
}

// Its name tells nothing about whether it is finished: only its recorder does.
TEST_F(Groups, WhoseFileBearsItsLastNameFromTheBeginningStayUntilTheyAreAskedFor)
{
    ZelvoClient one(configuration());
    ZelvoClient two(configuration());
    const QString first = groupOf(one, recordings());
    writeBytes(recording("a.rec"), bytesOf(10));
    QFile open(recording("a.rec"));
    ASSERT_TRUE(open.open(QIODevice::ReadWrite));
    const std::uint32_t a = one.AddFile("a.rec", first);
    groupOf(two, recordings());  // the process goes on with another group
    EXPECT_EQ(summed(move()), "0 moved, 0 failed, 1 waiting");
    EXPECT_TRUE(open.exists());
    one.MoveToNas(first);
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(storedBytes(url(first, a)), bytesOf(10));
}

TEST_F(Groups, ThatShareAFileMoveItOnce)
{
    const QString first = newGroup();
    const QString second = newGroup();
    const std::uint32_t a = begin(first, "a", bytesOf(10));
    const std::uint32_t b = client().AddFile("a.rec", second);
    finish("a");
    client().MoveToNas(second);
    client().MoveToNas(second);
    client().MoveToNas(first);
    EXPECT_EQ(summed(move()), "1 moved, 0 failed, 0 waiting");
    EXPECT_EQ(stored().size(), 1);
    const std::set<FileState> states = {file(url(first, a)).state, file(url(second, b)).state};
    EXPECT_EQ(states, (std::set{FileState::Moved, FileState::Same}));
    EXPECT_FALSE(client().RequestFile(url(first, a), LockState::Shared).isEmpty());
    client().CloseFile(url(first, a));
    EXPECT_FALSE(client().RequestFile(url(second, b), LockState::Shared).isEmpty());
    EXPECT_EQ(move().waiting, 0);
}

TEST_F(Groups, KeepAFileThatIsRecordedAnewUnderTheNameOfAMovedOne)
{
    const ZelvoUrl first = record("a", bytesOf(10, 1));
    EXPECT_EQ(move().moved, 1);
    const ZelvoUrl second = record("a", bytesOf(10, 2));
    clock.now += 1'000;
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(storedBytes(first), bytesOf(10, 1));
    EXPECT_EQ(storedBytes(second), bytesOf(10, 2));
}

TEST_F(Groups, OfADeadRecorderAreMovedWithoutBeingAskedFor)
{
    inAnotherProcess([this] { add(newGroup(), "a", bytesOf(10)); });
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(Archive(configuration()).groups().at(0).state, GroupState::Abandoned);
}

TEST_F(Groups, OfADeadRecorderWaitForTheRecoveryOfItsLastFile)
{
    inAnotherProcess([this] {
        const QString guid = newGroup();
        add(guid, "a", bytesOf(10));
        begin(guid, "b", bytesOf(20));
    });
    EXPECT_EQ(move().moved, 0);
    const std::vector<FileInfo> waiting = Archive(configuration()).status().notMoved;
    ASSERT_EQ(waiting.size(), 2U);
    EXPECT_EQ(waiting[1].error,
              QStringLiteral("waits until %1, whose recorder ended, is recovered").arg(recording("b.tmp")));
    finish("b");
    EXPECT_EQ(move().moved, 2);
}

TEST_F(Groups, WaitForTheRecoveryOfAFileWhoseClosingFailed)
{
    const QString journal = recording("a.tmp.journal");
    writeBytes(journal, "what can make it whole");
    const ZelvoUrl address = record("a", bytesOf(10));
    EXPECT_EQ(move().moved, 0);
    EXPECT_EQ(
        file(address).error,
        QStringLiteral("waits until it is recovered: closing it had failed, and %1 can make it whole").arg(journal));
    ASSERT_TRUE(QFile::remove(journal));
    writeBytes(recording("a.rec"), bytesOf(20));
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(storedBytes(address), bytesOf(20));
}
