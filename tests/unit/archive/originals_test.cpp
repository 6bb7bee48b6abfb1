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
        QFile open(recording(QString::fromLatin1(base) + ".tmp"));
        EXPECT_TRUE(open.open(QIODevice::ReadWrite));
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
    static QString guidOf(const ZelvoUrl& address) { return address.toString().section(QLatin1Char('/'), 3, 3); }
    QByteArray given(const ZelvoUrl& address)
    {
        const QByteArray bytes = readFile(client().RequestFile(address, LockState::Shared));
        client().CloseFile(address);
        return bytes;
    }
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
    const ZelvoUrl first = record("St.1", 1);
    EXPECT_TRUE(finish(first, "St.1"));
    const ZelvoUrl second = record("St.2", 2);
    EXPECT_FALSE(finish(second, "St.2"));
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
    const ZelvoUrl first = record("St.1", 1);
    EXPECT_TRUE(finish(first, "St.1"));
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
    const ZelvoUrl first = record("St.1", 1);
    EXPECT_TRUE(finish(first, "St.1"));
    const ZelvoUrl second = record("St.2", 2);
    EXPECT_FALSE(finish(second, "St.2"));
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
    const ZelvoUrl first = record("St.1", 1);
    EXPECT_TRUE(finish(first, "St.1"));
    const ZelvoUrl second = record("St.2", 2);
    EXPECT_FALSE(finish(second, "St.2"));
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
    QFile named(recording("St.1.rec"));
    ASSERT_TRUE(QFile::rename(recording("St.1.tmp"), named.fileName()));
    ASSERT_TRUE(QFile::remove(recording("St.1.tmp.journal")));
    ASSERT_TRUE(named.open(QIODevice::ReadWrite));
    ASSERT_TRUE(named.setFileTime(QDateTime::currentDateTime().addSecs(-3'600), QFileDevice::FileModificationTime));
    named.close();
    EXPECT_EQ(given(address), bytesOf(1'000, 1));
}

TEST_F(SharedName, AnotherRecordingUnderTheUnfinishedNameDoesNotHoldTheFirstBack)
{
    const ZelvoUrl address = record("St.1", 1);
    EXPECT_TRUE(finish(address, "St.1"));
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
        const QString guid = newGroup();
        addresses[QString::fromLatin1(base)] = url(guid, client().AddFile("St.rec", guid));
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
    QFile own(recording("St.1.tmp"));
    ASSERT_TRUE(own.open(QIODevice::ReadWrite));
    const QString guid = newGroup();
    const ZelvoUrl address = url(guid, client().AddFile("St.rec", guid));
    // Nor is one that is registered: this one's own lies where no group names the folder.
    own.close();
    ASSERT_TRUE(QFile::remove(recording("St.2.tmp")));
    const QString next = newGroup();
    const ZelvoUrl nowhere = url(next, client().AddFile("St.rec", next));
    EXPECT_TRUE(finish(address, "St.1"));
    EXPECT_EQ(given(address), bytesOf(1'000, 1));
    EXPECT_NE(refused(nowhere), QString());
    client().MoveToNas(next);
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(file(nowhere).state, FileState::Waiting);
    EXPECT_EQ(storedBytes(address), bytesOf(1'000, 1));
}

TEST_F(SharedName, TheFileThatThisProcessHasOpenGoesBeforeOneThatIsNewerOrStandsBeforeIt)
{
    begin("St.2", 2);
    begin("St.1", 1);  // of another process
    QFile own(recording("St.2.tmp"));
    ASSERT_TRUE(own.open(QIODevice::ReadWrite));
    const QString guid = newGroup();
    const ZelvoUrl address = url(guid, client().AddFile("St.rec", guid));
    own.close();
    EXPECT_TRUE(finish(address, "St.2"));
    EXPECT_EQ(given(address), bytesOf(1'000, 2));
}

TEST_F(SharedName, AFileThatThisProcessHasOpenUnderItsLastNameGoesBeforeAnUnfinishedOne)
{
    begin("St.1", 1);  // of another process
    writeBytes(recording("St.rec"), bytesOf(1'000, 2));
    QFile own(recording("St.rec"));
    ASSERT_TRUE(own.open(QIODevice::ReadWrite));
    const QString guid = newGroup();
    const ZelvoUrl address = url(guid, client().AddFile("St.rec", guid));
    own.close();
    client().MoveToNas(guid);
    EXPECT_EQ(given(address), bytesOf(1'000, 2));
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(storedBytes(address), bytesOf(1'000, 2));
}

TEST_F(SharedName, AnOldRecordingOfTheNameIsNotTakenForTheOneThatIsMissing)
{
    const QString path = recording("St.rec");
    writeBytes(path, bytesOf(1'000, 1));
    QFile old(path);
    ASSERT_TRUE(old.open(QIODevice::ReadWrite));
    ASSERT_TRUE(old.setFileTime(QDateTime::currentDateTime().addSecs(-60), QFileDevice::FileModificationTime));
    old.close();
    const QString guid = newGroup();
    const ZelvoUrl address = url(guid, client().AddFile("St.rec", guid));
    client().MoveToNas(guid);
    EXPECT_NE(refused(address), QString());
    EXPECT_EQ(move().moved, 0);
    EXPECT_EQ(readFile(path), bytesOf(1'000, 1));
}

TEST_F(SharedName, AFileThatWasReplacedWhileItWasOpenForWritingStaysThatOfItsAddress)
{
    const ZelvoUrl address = record("St.1", 1);
    EXPECT_TRUE(finish(address, "St.1"));
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
