// Which file an address stands for, where several recordings would have the same name.
#include <QSqlQuery>

#include <sys/stat.h>

#include <gmock/gmock.h>

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
        writeFile(path + ".tmp", bytesOf(1'000, seed));
        writeFile(path + ".tmp.journal", "journal");
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
    writeFile(recording("St.rec"), bytesOf(1'000, 7));
    EXPECT_NE(refused(address), QString());
    const MoverReport report = move();
    EXPECT_EQ(report.moved, 0);
    EXPECT_EQ(
        report.messages,
        QStringList(
            QStringLiteral("%1: is missing: %2 is another recording").arg(address.toString(), recording("St.rec"))));
    writeFile(recording("St.1.rec"), bytesOf(900, 1));
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
    EXPECT_EQ(storedBytes(addresses[QStringLiteral("St.1")]), bytesOf(1'000, 1));
    EXPECT_EQ(storedBytes(addresses[QStringLiteral("St.2")]), bytesOf(1'000, 2));
    EXPECT_EQ(storedBytes(addresses[QStringLiteral("St")]), bytesOf(1'000, 3));
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
    writeFile(recording("St.rec"), bytesOf(1'000, 2));
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
    writeFile(path, bytesOf(1'000, 1));
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
    writeFile(path + ".new", bytesOf(500, 9));
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

namespace {

class NoOrdinaryFile : public ArchiveTest {
protected:
    /// A recording in whose place something else is put, and one behind it.
    void expectToldAndOthersMoved(const std::function<void(const QString&)>& put)
    {
        const ZelvoUrl first = record("a", bytesOf(10, 1));
        const ZelvoUrl second = record("b", bytesOf(10, 2));
        const QString path = recording("a.rec");
        ASSERT_TRUE(QFile::remove(path));
        put(path);
        const QString told = path + QStringLiteral(" is no ordinary file (a folder, a link, a pipe or a device)");
        const MoverReport report = move();
        EXPECT_EQ(report.moved, 1);
        EXPECT_EQ(report.failed, 1);
        EXPECT_TRUE(report.problem.isEmpty()) << report.problem.toStdString();
        EXPECT_EQ(report.messages, QStringList(first.toString() + QStringLiteral(": ") + told));
        EXPECT_EQ(file(first).error, told);
        EXPECT_TRUE(client().RequestFile(first, LockState::Shared).isEmpty());
        EXPECT_EQ(storedBytes(second), bytesOf(10, 2));
        EXPECT_TRUE(QFileInfo(path).isSymLink() || QFileInfo::exists(path));
    }
};

}  // namespace

TEST_F(NoOrdinaryFile, APipeInTheRecordingsPlaceIsNeverWaitedFor)
{
    expectToldAndOthersMoved(
        [](const QString& path) { ASSERT_EQ(mkfifo(QFile::encodeName(path).constData(), 0600), 0); });
}

TEST_F(NoOrdinaryFile, ALinkInTheRecordingsPlaceIsNotFollowed)
{
    expectToldAndOthersMoved([this](const QString& path) {
        writeFile(recording("elsewhere"), bytesOf(10, 3));
        ASSERT_TRUE(QFile::link(recording("elsewhere"), path));
    });
    EXPECT_EQ(readFile(recording("elsewhere")), bytesOf(10, 3));
}

TEST_F(NoOrdinaryFile, AFolderInTheRecordingsPlaceStays)
{
    expectToldAndOthersMoved([](const QString& path) { ASSERT_TRUE(QDir().mkdir(path)); });
}

TEST_F(NoOrdinaryFile, APipeThatTakesThePlaceBetweenLookAndReadIsRefused)
{
    class Swapped final : public Files {
    public:
        Digest copy(const QString& from, const QString& to, unsigned mode, const StopWish& stop) override
        {
            EXPECT_TRUE(QFile::remove(from));
            EXPECT_EQ(mkfifo(QFile::encodeName(from).constData(), 0600), 0);
            return Files::copy(from, to, mode, stop);
        }
    };
    const ZelvoUrl address = record("a", bytesOf(10, 1));
    Swapped files;
    const MoverReport report = move(files);
    EXPECT_EQ(report.failed, 1);
    EXPECT_TRUE(report.messages.at(0).endsWith("a.rec is no ordinary file")) << report.messages.at(0).toStdString();
    EXPECT_TRUE(stored().isEmpty());
}

TEST_F(NoOrdinaryFile, AnotherFileThatTakesThePlaceWhileItIsMovedIsNotStored)
{
    class Swapped final : public Files {
    public:
        Digest copy(const QString& from, const QString& to, unsigned mode, const StopWish& stop) override
        {
            EXPECT_TRUE(QFile::rename(from, from + ".aside"));
            writeFile(from, bytesOf(10, 9));
            return Files::copy(from, to, mode, stop);
        }
    };
    record("a", bytesOf(10, 1));
    Swapped files;
    const MoverReport report = move(files);
    EXPECT_EQ(report.moved, 0);
    EXPECT_EQ(report.failed, 1);
    EXPECT_TRUE(stored().isEmpty());
    EXPECT_EQ(readFile(recording("a.rec.aside")), bytesOf(10, 1));
}

TEST_F(NoOrdinaryFile, AStorageWhoseMarkIsAPipeIsAway)
{
    const QString mark = storage() + QStringLiteral("/.zelvo-storage");
    ASSERT_TRUE(QFile::remove(mark));
    ASSERT_EQ(mkfifo(QFile::encodeName(mark).constData(), 0600), 0);
    EXPECT_EQ(move().problem, mark + " is no ordinary file");
}

namespace {

/// A recording beside which the journal of a change lies: one is at it, or was interrupted.
class BeingChanged : public ArchiveTest {
protected:
    BeingChanged()
    {
        configuration().firstPauseMs = 0;
        configuration().longestPauseMs = 0;
    }

    [[nodiscard]] QString undo() const { return recording("a.rec.undo"); }
    [[nodiscard]] QString waits(const QString& undo) const
    {
        return QStringLiteral(
                   "waits while %1 is there: bookmarks or channel ranges are being stored, or that was interrupted, "
                   "and the next change of them settles it")
            .arg(undo);
    }
    void expectMoved(const ZelvoUrl& address, const QByteArray& bytes)
    {
        EXPECT_EQ(move().moved, 1);
        EXPECT_EQ(storedBytes(address), bytes);
        EXPECT_EQ(file(address).error, QString());
    }
};

/// Begins a change at a step.
class ChangedMeanwhile final : public Files {
public:
    explicit ChangedMeanwhile(QString undo, bool whileCopied) : m_undo(std::move(undo)), m_whileCopied(whileCopied) {}

    Digest copy(const QString& from, const QString& to, unsigned mode, const StopWish& stop) override
    {
        if (m_whileCopied) {
            writeFile(m_undo, "before");
        }
        return Files::copy(from, to, mode, stop);
    }
    void rename(const QString& from, const QString& to) override
    {
        writeFile(m_undo, "before");
        Files::rename(from, to);
    }

private:
    QString m_undo;
    bool m_whileCopied;
};

}  // namespace

TEST_F(BeingChanged, ARecordingKeepsItsGroupWaitingUntilTheChangeIsSettled)
{
    const QString guid = newGroup();
    const ZelvoUrl first = url(guid, begin(guid, "b", bytesOf(10, 2)));
    finish("b");
    const ZelvoUrl second = url(guid, begin(guid, "a", bytesOf(10, 1)));
    finish("a");
    client().MoveToNas(guid);
    writeFile(undo(), "before");
    const MoverReport report = move();
    EXPECT_EQ(report.moved, 0);
    EXPECT_EQ(report.failed, 0);
    EXPECT_EQ(report.waiting, 2);
    EXPECT_EQ(file(second).error, waits(undo()));
    EXPECT_EQ(client().RequestFile(second, LockState::Shared), recording("a.rec"));  // where its undo is
    client().CloseFile(second);
    const QString copy = recording("copy");
    EXPECT_THROW(Archive(configuration()).fetch(second, copy), ArchiveError);
    EXPECT_FALSE(QFile::exists(copy));

    ASSERT_TRUE(QFile::remove(undo()));
    Archive(configuration()).fetch(second, copy);
    EXPECT_EQ(readFile(copy), bytesOf(10, 1));
    EXPECT_EQ(move().moved, 2);
    EXPECT_EQ(storedBytes(first), bytesOf(10, 2));
    EXPECT_EQ(storedBytes(second), bytesOf(10, 1));
    EXPECT_EQ(file(second).error, QString());
}

TEST_F(BeingChanged, ACopyDuringWhichAChangeBeginsIsNotStored)
{
    const ZelvoUrl address = record("a", bytesOf(10, 1));
    ChangedMeanwhile files(undo(), true);
    EXPECT_EQ(move(files).moved, 0);
    EXPECT_TRUE(stored().isEmpty());
    EXPECT_EQ(file(address).error, waits(undo()));
    ASSERT_TRUE(QFile::remove(undo()));
    expectMoved(address, bytesOf(10, 1));
}

TEST_F(BeingChanged, AnOriginalThatIsChangedOnceItIsStoredIsNotDeleted)
{
    const ZelvoUrl address = record("a", bytesOf(10, 1));
    ChangedMeanwhile files(undo(), false);
    EXPECT_EQ(move(files).moved, 0);
    EXPECT_EQ(move().moved, 0);
    EXPECT_EQ(readFile(recording("a.rec")), bytesOf(10, 1));
    writeFile(recording("a.rec"), bytesOf(12, 3));
    ASSERT_TRUE(QFile::remove(undo()));
    const MoverReport report = move();
    EXPECT_THAT(report.messages.join(QString()).toStdString(),
                testing::HasSubstr("changed since it was stored and stays"));
    EXPECT_EQ(readFile(recording("a.rec")), bytesOf(12, 3));
    EXPECT_EQ(storedBytes(address), bytesOf(10, 1));
}

TEST_F(BeingChanged, AVersionThatWasWrittenWaitsToo)
{
    const ZelvoUrl address = record("a", bytesOf(10, 1));
    ASSERT_EQ(move().moved, 1);
    const QString path = client().RequestFile(address, LockState::Exclusive);
    writeFile(path, bytesOf(11, 2));
    writeFile(path + ".undo", "before");
    client().CloseFile(address);
    const MoverReport report = move();
    EXPECT_EQ(report.waiting, 1);
    EXPECT_EQ(report.failed, 0);
    EXPECT_EQ(file(address).error, waits(path + ".undo"));
    ASSERT_TRUE(QFile::remove(path + ".undo"));
    expectMoved(address, bytesOf(11, 2));
}
