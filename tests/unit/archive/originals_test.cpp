// Which file an address stands for, where several recordings would have the same name.
#include "archivefixture.h"

using namespace Zelvo;
using namespace ArchiveTests;

namespace {

/// "St. Gallen" and all that begins so becomes "St.rec".
class SharedName : public ArchiveTest {
protected:
    SharedName()
    {
        configuration().firstPauseMs = 0;
        configuration().longestPauseMs = 0;
    }

    void begin(const char* base, int seed)
    {
        const QString path = recording(QString::fromLatin1(base));
        writeBytes(path + ".tmp", bytesOf(1'000, seed));
        writeBytes(path + ".tmp.journal", "journal");
    }
    /// Registers a file as a recorder does: with its journal, and open.
    ZelvoUrl record(const char* base, int seed)
    {
        begin(base, seed);
        return registerOpen(QString::fromLatin1(base) + ".tmp");
    }
    ZelvoUrl registerOpen(const QString& name)
    {
        QFile open(recording(name));
        EXPECT_TRUE(open.open(QIODevice::ReadWrite));
        return registerFile();
    }
    ZelvoUrl registerFile()
    {
        const QString guid = newGroup();
        return url(guid, client().AddFile("St.rec", guid));
    }
    /// Closes it; only what takes its name is handed over.
    bool finish(const ZelvoUrl& address, const char* base)
    {
        const QString path = recording(QString::fromLatin1(base));
        const bool named = QFile::rename(path + ".tmp", recording("St.rec"));
        EXPECT_TRUE(QFile::remove(path + ".tmp.journal"));
        if (named) {
            client().MoveToNas(guidOf(address));
        }
        return named;
    }
    ZelvoUrl recordWhole(const char* base, int seed, bool named = true)
    {
        ZelvoUrl address = record(base, seed);
        EXPECT_EQ(finish(address, base), named);
        return address;
    }
    void makeOlder(const QString& path, int seconds)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(
            file.setFileTime(QDateTime::currentDateTime().addSecs(-seconds), QFileDevice::FileModificationTime));
    }
    static QString guidOf(const ZelvoUrl& address) { return address.toString().section(QLatin1Char('/'), 3, 3); }
    /// @return why the address gives nothing
    QString refused(const ZelvoUrl& address)
    {
        EXPECT_EQ(client().RequestFile(address, LockState::Shared), QString());
        return client().GetErrorString();
    }
    [[nodiscard]] QString withoutName(const char* base) const
    {
        const QString name = QString::fromLatin1(base);
        return QStringLiteral(
                   "is closed and whole, but could not take its name St.rec and stays %1.tmp; rename it to "
                   "%2.rec, and it is moved")
            .arg(recording(name), name);
    }
};

}  // namespace

TEST_F(SharedName, OfTheFirstRecordingIsNotThatOfTheOthers)
{
    const ZelvoUrl first = recordWhole("St.1", 1);
    const ZelvoUrl second = recordWhole("St.2", 2, false);
    EXPECT_EQ(given(first), bytesOf(1'000, 1));
    EXPECT_EQ(refused(second),
              QStringLiteral("%1 is not to be had yet: %2").arg(second.toString(), withoutName("St.2")));
    EXPECT_THROW(Archive(configuration()).fetch(second, recording("copy")), ArchiveError);
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(given(first), bytesOf(1'000, 1));
    EXPECT_EQ(file(second).state, FileState::Waiting);
    EXPECT_EQ(file(second).error, withoutName("St.2"));
    EXPECT_EQ(Archive(configuration()).status().notMoved.at(0).error, withoutName("St.2"));
    EXPECT_EQ(Archive(configuration()).files(guidOf(second)).at(0).error, withoutName("St.2"));
    EXPECT_NE(refused(second), QString());
    EXPECT_EQ(readFile(recording("St.2.tmp")), bytesOf(1'000, 2));
    EXPECT_EQ(stored().size(), 1);
}

TEST_F(SharedName, IsFreeAgainWhenTheMoverIsFasterThanTheRecorder)
{
    const ZelvoUrl first = recordWhole("St.1", 1);
    const ZelvoUrl second = record("St.2", 2);
    EXPECT_EQ(move().moved, 1);
    EXPECT_NE(refused(second), QString());
    EXPECT_TRUE(finish(second, "St.2"));
    EXPECT_EQ(given(second), bytesOf(1'000, 2));
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(given(first), bytesOf(1'000, 1));
    EXPECT_EQ(given(second), bytesOf(1'000, 2));
    EXPECT_EQ(move().waiting, 0);
}

TEST_F(SharedName, IsThatOfTheRightOneWhileTheStorageIsAway)
{
    ASSERT_TRUE(QDir().rename(storage(), storage() + ".away"));
    const ZelvoUrl first = recordWhole("St.1", 1);
    const ZelvoUrl second = recordWhole("St.2", 2, false);
    EXPECT_FALSE(move().problem.isEmpty());
    EXPECT_EQ(given(first), bytesOf(1'000, 1));
    EXPECT_NE(refused(second), QString());
    ASSERT_TRUE(QFile::remove(recording("St.rec")));
    ASSERT_TRUE(QFile::rename(recording("St.2.tmp"), recording("St.rec")));
    EXPECT_EQ(given(second), bytesOf(1'000, 2));
    EXPECT_EQ(refused(first), QStringLiteral("%1 is not to be had yet: is missing: %2 is another recording")
                                  .arg(first.toString(), recording("St.rec")));
}

TEST_F(SharedName, AnUnnamedRecordingIsMovedWhenItIsRenamed)
{
    const ZelvoUrl first = recordWhole("St.1", 1);
    const ZelvoUrl second = recordWhole("St.2", 2, false);
    const ZelvoUrl third = record("St.3", 3);  // its recorder has gone on: nobody asks for the second
    ASSERT_TRUE(QFile::rename(recording("St.2.tmp"), recording("St.2.rec")));
    EXPECT_EQ(given(second), bytesOf(1'000, 2));
    EXPECT_EQ(move().moved, 2);
    EXPECT_EQ(storedBytes(second), bytesOf(1'000, 2));
    EXPECT_TRUE(finish(third, "St.3"));
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(storedBytes(first), bytesOf(1'000, 1));
    EXPECT_EQ(storedBytes(third), bytesOf(1'000, 3));
}

TEST_F(SharedName, TheFileThatWasRegisteredIsKnownByItselfNotByItsTime)
{
    const ZelvoUrl address = record("St.1", 1);
    ASSERT_TRUE(QFile::rename(recording("St.1.tmp"), recording("St.1.rec")));
    ASSERT_TRUE(QFile::remove(recording("St.1.tmp.journal")));
    makeOlder(recording("St.1.rec"), 3'600);
    EXPECT_EQ(given(address), bytesOf(1'000, 1));
}

TEST_F(SharedName, AnotherRecordingUnderTheUnfinishedNameDoesNotHoldTheFirstBack)
{
    const ZelvoUrl address = recordWhole("St.1", 1);
    begin("St.1", 2);
    EXPECT_EQ(given(address), bytesOf(1'000, 1));
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(storedBytes(address), bytesOf(1'000, 1));
}

TEST_F(SharedName, WhatWasRecoveredIsTakenUnderTheWholeNameOnly)
{
    const ZelvoUrl address = record("St.1", 1);
    client().MoveToNas(guidOf(address));
    ASSERT_TRUE(QFile::remove(recording("St.1.tmp")));
    ASSERT_TRUE(QFile::remove(recording("St.1.tmp.journal")));
    writeBytes(recording("St.rec"), bytesOf(1'000, 7));
    EXPECT_NE(refused(address), QString());
    const MoverReport report = move();
    EXPECT_EQ(report.moved, 0);
    EXPECT_EQ(
        report.messages,
        QStringList(
            QStringLiteral("%1: is missing: %2 is another recording").arg(address.toString(), recording("St.rec"))));
    writeBytes(recording("St.1.rec"), bytesOf(900, 1));
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(storedBytes(address), bytesOf(900, 1));
    EXPECT_EQ(readFile(recording("St.rec")), bytesOf(1'000, 7));
}

TEST_F(SharedName, RecordersThatUseItAtOnceEachRegisterTheirOwnFile)
{
    std::vector<std::unique_ptr<QFile>> open;
    for (const char* base : {"St.1", "St.2", "St"}) {
        begin(base, base[2] == '.' ? base[3] - '0' : 3);
        open.push_back(std::make_unique<QFile>(recording(QString::fromLatin1(base) + ".tmp")));
        ASSERT_TRUE(open.back()->open(QIODevice::ReadWrite));
    }
    // The one that is made last is registered first: the newest is the one until it is known.
    std::map<QString, ZelvoUrl> addresses;
    for (const char* base : {"St", "St.2", "St.1"}) {
        addresses[QString::fromLatin1(base)] = registerFile();
    }
    open.clear();
    for (const char* base : {"St.1", "St.2", "St"}) {
        const ZelvoUrl& address = addresses[QString::fromLatin1(base)];
        EXPECT_TRUE(finish(address, base));
        EXPECT_EQ(given(address), readFile(recording("St.rec")));
        EXPECT_EQ(move().moved, 1);
    }
    EXPECT_EQ(storedBytes(addresses["St.1"]), bytesOf(1'000, 1));
    EXPECT_EQ(storedBytes(addresses["St.2"]), bytesOf(1'000, 2));
    EXPECT_EQ(storedBytes(addresses["St"]), bytesOf(1'000, 3));
}

TEST_F(SharedName, AFileThatAnotherRecorderWritesIsNotTaken)
{
    begin("St.1", 1);
    begin("St.2", 2);  // newer, but of another process
    const ZelvoUrl address = registerOpen("St.1.tmp");
    // Nor is one that is registered: this one's own lies where no group names the folder.
    ASSERT_TRUE(QFile::remove(recording("St.2.tmp")));
    const ZelvoUrl nowhere = registerFile();
    EXPECT_TRUE(finish(address, "St.1"));
    EXPECT_EQ(given(address), bytesOf(1'000, 1));
    EXPECT_NE(refused(nowhere), QString());
    client().MoveToNas(guidOf(nowhere));
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(file(nowhere).state, FileState::Waiting);
    EXPECT_EQ(storedBytes(address), bytesOf(1'000, 1));
}

TEST_F(SharedName, TheFileThatThisProcessHasOpenGoesBeforeOneThatIsNewerOrStandsBeforeIt)
{
    begin("St.2", 2);
    begin("St.1", 1);  // of another process
    const ZelvoUrl address = registerOpen("St.2.tmp");
    EXPECT_TRUE(finish(address, "St.2"));
    EXPECT_EQ(given(address), bytesOf(1'000, 2));
}

TEST_F(SharedName, AFileThatThisProcessHasOpenUnderItsLastNameGoesBeforeAnUnfinishedOne)
{
    begin("St.1", 1);  // of another process
    writeBytes(recording("St.rec"), bytesOf(1'000, 2));
    const ZelvoUrl address = registerOpen("St.rec");
    client().MoveToNas(guidOf(address));
    EXPECT_EQ(given(address), bytesOf(1'000, 2));
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(storedBytes(address), bytesOf(1'000, 2));
}

TEST_F(SharedName, AnOldRecordingOfTheNameIsNotTakenForTheOneThatIsMissing)
{
    const QString path = recording("St.rec");
    writeBytes(path, bytesOf(1'000, 1));
    makeOlder(path, 60);
    const ZelvoUrl address = registerFile();
    client().MoveToNas(guidOf(address));
    EXPECT_NE(refused(address), QString());
    EXPECT_EQ(move().moved, 0);
    EXPECT_EQ(readFile(path), bytesOf(1'000, 1));
}

TEST_F(SharedName, AFileThatWasReplacedWhileItWasOpenForWritingStaysThatOfItsAddress)
{
    const ZelvoUrl address = recordWhole("St.1", 1);
    const QString path = client().RequestFile(address, LockState::Exclusive);
    writeBytes(path + ".new", bytesOf(500, 9));
    ASSERT_EQ(::rename(QFile::encodeName(path + ".new").constData(), QFile::encodeName(path).constData()), 0);
    client().CloseFile(address);
    EXPECT_EQ(client().GetError(), ZelvoError::None) << client().GetErrorString().toStdString();
    EXPECT_EQ(given(address), bytesOf(500, 9));
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(storedBytes(address), bytesOf(500, 9));
}

TEST_F(SharedName, AJournalOfAnOlderProgramTakesRequests)
{
    {
        Database journal(configuration().directory + "/archive.sqlite", 0600);
        journal.run("DROP TABLE file_origins");
    }
    const ZelvoUrl address = record("St.1", 1);
    EXPECT_EQ(client().GetError(), ZelvoError::None) << client().GetErrorString().toStdString();
    EXPECT_TRUE(finish(address, "St.1"));
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(storedBytes(address), bytesOf(1'000, 1));
}
