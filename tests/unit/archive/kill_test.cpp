// Movers that are killed, and storages that fail: what a restart makes of it.
#include <csignal>

#include <sys/mount.h>

#include "archivefixture.h"

using namespace Zelvo;
using namespace ArchiveTests;

namespace {

constexpr int PieceBytes = 1 << 18;  // of a file that is read

/// Counts every step of the file system, before and after it and before each piece of a file, and does something at one
/// of them.
class SteppedFiles final : public Files {
public:
    explicit SteppedFiles(std::function<void(int)> atStep) : m_atStep(std::move(atStep)) {}
    [[nodiscard]] int steps() const { return m_steps; }

    void makeDirectory(const QString& path, unsigned mode) override
    {
        around([&] { Files::makeDirectory(path, mode); });
    }
    Digest copy(const QString& from, const QString& to, unsigned mode, const StopWish& stop) override
    {
        step();
        const Digest digest = Files::copy(from, to, mode, steppedStop(stop));
        step();
        return digest;
    }
    [[nodiscard]] Digest digest(const QString& path, const StopWish& stop) const override
    {
        step();
        return Files::digest(path, steppedStop(stop));
    }
    void rename(const QString& from, const QString& to) override
    {
        around([&] { Files::rename(from, to); });
    }
    void fsyncDirectory(const QString& path) override
    {
        around([&] { Files::fsyncDirectory(path); });
    }
    void remove(const QString& path) override
    {
        around([&] { Files::remove(path); });
    }

private:
    void step() const { m_atStep(m_steps++); }
    template <typename Work>
    void around(const Work& work)
    {
        step();
        work();
        step();
    }
    [[nodiscard]] StopWish steppedStop(const StopWish& stop) const
    {
        return [this, stop] {
            step();
            return stop && stop();
        };
    }

    std::function<void(int)> m_atStep;
    mutable int m_steps = 0;
};

struct Recorded {
    ZelvoUrl url;
    QByteArray bytes;
};

class KilledMover : public ArchiveTest {
protected:
    /// A file of several pieces, two of one group, an empty one, and one that was moved before and edited since.
    void record()
    {
        // In a process of its own: what this one holds open must not be held by the movers that it makes.
        inAnotherProcess([this] {
            Files files;
            ZelvoClient client(configuration());
            const ZelvoUrl edited = recordOne(client, recordings(), "edited", bytesOf(500, 9));
            MoverCore(configuration(), files, clock.clock()).run({});
            const QString path = client.RequestFile(edited, LockState::Exclusive);
            writeBytes(path, bytesOf(700, 10));
            client.CloseFile(edited);
            recordOne(client, recordings(), "large", bytesOf(PieceBytes + 1'000, 1));
            recordOne(client, recordings(), "empty", QByteArray());
            const QString guid = groupOf(client, recordings());
            for (int part = 0; part < 2; ++part) {
                addFile(client, guid, recordings(), QString::number(part), bytesOf(100, part));
            }
            client.MoveToNas(guid);
        });
        expected = {{"edited.rec", bytesOf(700, 10)},
                    {"large.rec", bytesOf(PieceBytes + 1'000, 1)},
                    {"empty.rec", QByteArray()},
                    {"0.rec", bytesOf(100, 0)},
                    {"1.rec", bytesOf(100, 1)}};
    }

    /// Runs a mover in a process that is killed at a step. @return whether it lived to its end
    bool moveAndKillAt(int fatalStep)
    {
        const pid_t child = fork();
        if (child == 0) {
            SteppedFiles files([fatalStep](int step) {
                if (step == fatalStep) {
                    std::raise(SIGKILL);
                }
            });
            MoverCore(configuration(), files, clock.clock()).run({});
            _exit(0);
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) || WTERMSIG(status) == SIGKILL);
        return WIFEXITED(status);
    }

    /// At any time: every file is somewhere, whole, and what the registry says is so.
    void expectNothingLost()
    {
        Archive archive(configuration());
        EXPECT_GE(verifyAll(archive), 0);
        forEachFile(archive, [this](const FileInfo& file) {
            const bool isStored = file.state == FileState::Moved || file.state == FileState::Stored;
            const QString path = isStored ? storage() + QLatin1Char('/') + file.storedPath : file.localPath;
            EXPECT_EQ(readFile(path), expected.at(file.name)) << path.toStdString();
        });
    }

    /// After a run that was not disturbed: one copy of each in the storage and nothing anywhere else.
    void expectAllMovedOnce()
    {
        EXPECT_EQ(stored().size(), static_cast<int>(expected.size())) << stored().join(QLatin1Char(' ')).toStdString();
        EXPECT_TRUE(QDir(recordings()).isEmpty());
        EXPECT_TRUE(QDir(configuration().directory + "/edited").isEmpty());
        Archive archive(configuration());
        forEachFile(archive,
                    [](const FileInfo& file) { EXPECT_EQ(file.state, FileState::Moved) << file.error.toStdString(); });
        expectNothingLost();
    }
    /// The same after the pauses of attempts that failed.
    void expectAllMovedOnceAfterAPause()
    {
        clock.now += 2 * configuration().longestPauseMs;
        EXPECT_EQ(move().failed, 0);
        expectAllMovedOnce();
    }

    /// Puts everything back as it was before the first mover.
    void restore()
    {
        const QStringList folders = {"archive", "recordings", "storage"};
        if (expected.empty()) {
            record();
            for (const QString& name : folders) {
                copyFolder(folder() + QLatin1Char('/') + name, folder() + QStringLiteral("/before/") + name);
            }
        }
        for (const QString& name : folders) {
            ASSERT_TRUE(QDir(folder() + QLatin1Char('/') + name).removeRecursively());
            copyFolder(folder() + QStringLiteral("/before/") + name, folder() + QLatin1Char('/') + name);
        }
    }

    static void copyFolder(const QString& from, const QString& to)
    {
        ASSERT_TRUE(QDir().mkpath(to));
        for (const QFileInfo& entry :
             QDir(from).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
            const QString target = to + QLatin1Char('/') + entry.fileName();
            if (entry.isDir()) {
                copyFolder(entry.filePath(), target);
            } else {
                ASSERT_TRUE(QFile::copy(entry.filePath(), target));
            }
        }
    }

    std::map<QString, QByteArray> expected;
};

using FailingStorage = KilledMover;

}  // namespace

TEST_F(KilledMover, AtEachOfItsStepsLosesAndDoublesNothing)
{
    int runs = 0;
    for (bool lived = false; !lived; ++runs) {
        restore();
        lived = moveAndKillAt(runs);
        expectNothingLost();
        // The pauses of failed attempts are over; there should be none.
        const MoverReport report = move();
        EXPECT_EQ(report.failed, 0) << report.messages.join(QLatin1Char(' ')).toStdString();
        expectAllMovedOnce();
        ASSERT_FALSE(HasFailure()) << "killed at step " << runs;
    }
    RecordProperty("kills", runs - 1);
    EXPECT_GT(runs, 100);
}

TEST_F(KilledMover, AgainAndAgainBeforeItIsDoneLosesAndDoublesNothing)
{
    unsigned chance = 1;
    int kills = 0;
    for (int round = 0; round < 12; ++round) {
        restore();
        while (true) {
            chance = chance * 1'664'525U + 1'013'904'223U;
            if (moveAndKillAt(static_cast<int>((chance >> 16U) % 40U))) {
                break;
            }
            ++kills;
            expectNothingLost();
        }
        expectAllMovedOnce();
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
    RecordProperty("kills", kills);
    EXPECT_GT(kills, 40);
}

TEST_F(FailingStorage, AtEachStepDelaysAndLosesNothing)
{
    const std::vector<FileError::Kind> kinds = {FileError::Kind::Full, FileError::Kind::Away, FileError::Kind::Other};
    int runs = 0;
    for (bool failed = true; failed; ++runs) {
        restore();
        failed = false;
        SteppedFiles files([&failed, runs, kind = kinds[static_cast<std::size_t>(runs) % 3]](int step) {
            if (step == runs) {
                failed = true;
                throw FileError(kind, "injected");
            }
        });
        const MoverReport report = move(files);
        EXPECT_EQ(report.failed > 0 || !report.problem.isEmpty(), failed);
        expectNothingLost();
        expectAllMovedOnceAfterAPause();
        ASSERT_FALSE(HasFailure()) << "failed at step " << runs;
    }
    EXPECT_GT(runs, 100);
}

TEST_F(FailingStorage, ThatComesAndGoesDelaysAndLosesNothing)
{
    record();
    unsigned chance = 7;
    int failures = 0;
    for (int round = 0; round < 300; ++round) {
        SteppedFiles files([&chance, &failures](int /*step*/) {
            chance = chance * 1'664'525U + 1'013'904'223U;
            if ((chance >> 16U) % 12U == 0) {
                ++failures;
                throw FileError(FileError::Kind::Away, "injected");
            }
        });
        move(files);
        clock.now += 2 * configuration().longestPauseMs;
    }
    EXPECT_GT(failures, 20);
    expectAllMovedOnce();
}

// A file system of the test's own where it may mount one.
class MountedStorage : public KilledMover {
protected:
    void SetUp() override
    {
        KilledMover::SetUp();
        if (mount("none", path().constData(), "tmpfs", 0, "size=192k") != 0) {
            GTEST_SKIP() << "no file system can be mounted here";
        }
        m_mounted = true;
        ASSERT_TRUE(QDir(folder() + "/archive").removeRecursively());
        SetUpArchive(configuration());
        record();
    }
    void TearDown() override
    {
        if (m_mounted) {
            EXPECT_EQ(umount2(path().constData(), MNT_DETACH), 0);
        }
    }
    [[nodiscard]] QByteArray path() const { return QFile::encodeName(storage()); }
    void remount(unsigned long flags, const char* options)
    {
        ASSERT_EQ(mount("none", path().constData(), "tmpfs", MS_REMOUNT | flags, options), 0);
    }

private:
    bool m_mounted = false;
};

TEST_F(MountedStorage, ThatIsReadOnlyDelays)
{
    remount(MS_RDONLY, "size=4m");
    const MoverReport report = move();
    EXPECT_EQ(report.moved, 0);
    EXPECT_TRUE(report.problem.endsWith("Read-only file system")) << report.problem.toStdString();
    expectNothingLost();
    remount(0, "size=4m");
    expectAllMovedOnceAfterAPause();
}

TEST_F(MountedStorage, ThatGoesAwayAndComesBackDelays)
{
    remount(0, "size=4m");
    ASSERT_EQ(mount("none", path().constData(), "tmpfs", 0, "size=4m"), 0) << "hides the storage";
    EXPECT_TRUE(move().problem.contains("is the share mounted?"));
    ASSERT_EQ(umount2(path().constData(), 0), 0);
    expectAllMovedOnceAfterAPause();
}

TEST_F(MountedStorage, ThatIsFullTakesWhatFitsAndTheRestWhenThereIsRoom)
{
    const MoverReport report = move();
    EXPECT_EQ(report.failed, 1);
    EXPECT_EQ(report.moved, 4);
    EXPECT_TRUE(report.messages.at(0).endsWith("No space left on device")) << report.messages.at(0).toStdString();
    expectNothingLost();
    EXPECT_EQ(Archive(configuration()).status().failed, 1);
    remount(0, "size=4m");
    clock.now = report.nextRunMs;
    EXPECT_EQ(move().moved, 1);
    expectAllMovedOnce();
}
