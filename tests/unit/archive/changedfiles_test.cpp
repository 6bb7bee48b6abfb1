// Originals in whose place something else is put, or that are changed while they are moved.
#include <sys/stat.h>

#include "archivefixture.h"

using namespace Zelvo;
using namespace ArchiveTests;

namespace {

/// Lets something happen to an original before it is copied, or before its copy gets its name.
class InterferedFiles final : public Files {
public:
    using Interference = std::function<void(const QString& path)>;

    explicit InterferedFiles(
        Interference beforeCopy, Interference beforeRename = [](const QString&) {})
        : m_beforeCopy(std::move(beforeCopy)), m_beforeRename(std::move(beforeRename))
    {
    }

    Digest copy(const QString& from, const QString& to, unsigned mode, const StopWish& stop) override
    {
        m_beforeCopy(from);
        return Files::copy(from, to, mode, stop);
    }
    void rename(const QString& from, const QString& to) override
    {
        m_beforeRename(from);
        Files::rename(from, to);
    }

private:
    Interference m_beforeCopy;
    Interference m_beforeRename;
};

class NoOrdinaryFile : public ArchiveTest {
protected:
    /// A recording in whose place something else is put, and one after it.
    void expectToldAndOthersMoved(const std::function<void(const QString&)>& put)
    {
        const ZelvoUrl first = record("a", bytesOf(10, 1));
        const ZelvoUrl second = record("b", bytesOf(10, 2));
        const QString path = recording("a.rec");
        ASSERT_TRUE(QFile::remove(path));
        put(path);
        const QString told = path + " is no ordinary file (a folder, a link, a pipe or a device)";
        const MoverReport report = move();
        EXPECT_EQ(summed(report), "1 moved, 1 failed, 0 waiting");
        EXPECT_EQ(report.problem, QString());
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
        writeBytes(recording("elsewhere"), bytesOf(10, 3));
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
    record("a", bytesOf(10, 1));
    InterferedFiles files([](const QString& from) {
        EXPECT_TRUE(QFile::remove(from));
        EXPECT_EQ(mkfifo(QFile::encodeName(from).constData(), 0600), 0);
    });
    const MoverReport report = move(files);
    EXPECT_EQ(report.failed, 1);
    EXPECT_TRUE(report.messages.at(0).endsWith("a.rec is no ordinary file")) << report.messages.at(0).toStdString();
    EXPECT_TRUE(stored().isEmpty());
}

TEST_F(NoOrdinaryFile, AnotherFileThatTakesThePlaceWhileItIsMovedIsNotStored)
{
    record("a", bytesOf(10, 1));
    InterferedFiles files([](const QString& from) {
        EXPECT_TRUE(QFile::rename(from, from + ".aside"));
        writeBytes(from, bytesOf(10, 9));
    });
    EXPECT_EQ(summed(move(files)), "0 moved, 1 failed, 0 waiting");
    EXPECT_TRUE(stored().isEmpty());
    EXPECT_EQ(readFile(recording("a.rec.aside")), bytesOf(10, 1));
}

TEST_F(NoOrdinaryFile, AStorageWhoseMarkIsAPipeIsAway)
{
    const QString mark = storage() + "/.zelvo-storage";
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
    void beginChange() const { writeBytes(undo(), "before"); }
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

}  // namespace

TEST_F(BeingChanged, ARecordingKeepsItsGroupWaitingUntilTheChangeIsSettled)
{
    const QString guid = newGroup();
    const ZelvoUrl first = add(guid, "b", bytesOf(10, 2));
    const ZelvoUrl second = add(guid, "a", bytesOf(10, 1));
    client().MoveToNas(guid);
    beginChange();
    EXPECT_EQ(summed(move()), "0 moved, 0 failed, 2 waiting");
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
    InterferedFiles files([this](const QString&) { beginChange(); });
    EXPECT_EQ(move(files).moved, 0);
    EXPECT_TRUE(stored().isEmpty());
    EXPECT_EQ(file(address).error, waits(undo()));
    ASSERT_TRUE(QFile::remove(undo()));
    expectMoved(address, bytesOf(10, 1));
}

TEST_F(BeingChanged, AnOriginalThatIsChangedOnceItIsStoredIsNotDeleted)
{
    const ZelvoUrl address = record("a", bytesOf(10, 1));
    InterferedFiles files([](const QString&) {}, [this](const QString&) { beginChange(); });
    EXPECT_EQ(move(files).moved, 0);
    EXPECT_EQ(move().moved, 0);
    EXPECT_EQ(readFile(recording("a.rec")), bytesOf(10, 1));
    writeBytes(recording("a.rec"), bytesOf(12, 3));
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
    writeBytes(path, bytesOf(11, 2));
    writeBytes(path + ".undo", "before");
    client().CloseFile(address);
    EXPECT_EQ(summed(move()), "0 moved, 0 failed, 1 waiting");
    EXPECT_EQ(file(address).error, waits(path + ".undo"));
    ASSERT_TRUE(QFile::remove(path + ".undo"));
    expectMoved(address, bytesOf(11, 2));
}
