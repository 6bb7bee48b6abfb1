// Calls of the system that fail while a recording is made: nothing that was accepted is lost, and the station goes on.
#include <sys/mman.h>
#include <sys/types.h>

#include <cerrno>

#include <recording2/inspection/rescue/recovery.h>

#include "life.h"
#include "support/modelreader.h"

namespace {

/// The calls are counted; from a number on they fail, once or from then on.
struct Plan {
    int error = 0;  ///< 0: none fails
    int from = 0;
    bool lasting = false;
    int calls = 0;
    int failed = 0;

    /// @return whether this call fails
    bool next()
    {
        ++calls;
        const bool fails = error != 0 && (lasting ? calls >= from : calls == from);
        failed += fails ? 1 : 0;
        return fails;
    }
};
Plan plan;
/// What locking a file answers; 0: what the system does.
int lockError = 0;

template <typename Result, typename Call>
Result unlessItFails(Result failure, Call call)
{
    if (plan.next()) {
        errno = plan.error;
        return failure;
    }
    return call();
}

}  // namespace

// Names that the linker makes, not we.
// NOLINTBEGIN(bugprone-reserved-identifier)
#pragma GCC visibility push(default)  // libraries that are loaded make these calls too
extern "C" {
ssize_t __real_pwrite(int file, const void* bytes, size_t size, off_t position);
int __real_ftruncate(int file, off_t size);
int __real_posix_fallocate(int file, off_t position, off_t size);
int __real_fdatasync(int file);
int __real_fsync(int file);
int __real_renameat2(int fromDirectory, const char* from, int toDirectory, const char* to, unsigned int flags);
int __real_unlink(const char* path);
int __real_flock(int file, int operation);
void* __real_mmap(void* address, size_t size, int protection, int flags, int file, off_t offset);

// A failing write may have written a part.
ssize_t __wrap_pwrite(int file, const void* bytes, size_t size, off_t position)
{
    if (plan.next()) {
        static_cast<void>(__real_pwrite(file, bytes, size / 2, position));
        errno = plan.error;
        return -1;
    }
    return __real_pwrite(file, bytes, size, position);
}
int __wrap_ftruncate(int file, off_t size)
{
    return unlessItFails(-1, [&] { return __real_ftruncate(file, size); });
}
int __wrap_posix_fallocate(int file, off_t position, off_t size)
{
    return unlessItFails(plan.error, [&] { return __real_posix_fallocate(file, position, size); });
}
int __wrap_fdatasync(int file)
{
    return unlessItFails(-1, [&] { return __real_fdatasync(file); });
}
int __wrap_fsync(int file)
{
    return unlessItFails(-1, [&] { return __real_fsync(file); });
}
int __wrap_renameat2(int fromDirectory, const char* from, int toDirectory, const char* to, unsigned int flags)
{
    return unlessItFails(-1, [&] { return __real_renameat2(fromDirectory, from, toDirectory, to, flags); });
}
int __wrap_unlink(const char* path)
{
    return unlessItFails(-1, [&] { return __real_unlink(path); });
}
int __wrap_flock(int file, int operation)
{
    errno = lockError;
    return lockError == 0 ? __real_flock(file, operation) : -1;
}
void* __wrap_mmap(void* address, size_t size, int protection, int flags, int file, off_t offset)
{
    return unlessItFails(MAP_FAILED, [&] { return __real_mmap(address, size, protection, flags, file, offset); });
}
}
#pragma GCC visibility pop
// NOLINTEND(bugprone-reserved-identifier)

namespace CrashTests {
namespace {

using Recording2::Inspection::Recovery;
using Recording2::Inspection::RecoveryOutcome;

constexpr std::uint64_t ManyChanges = 5'200;  // more than the entries of a journal that are not handed over
constexpr std::uint64_t SpectraEnd = 3'000;

/// Which change a life makes: spectra only in the beginning, so that many records are small.
std::uint64_t changeNumber(std::uint64_t i)
{
    return i < SpectraEnd ? i : 16 * i;
}

struct FaultCase {
    int error;
    bool lasting;
    const char* journal;
};

class Fault : public testing::TestWithParam<FaultCase> {
protected:
    struct Outcome {
        std::uint64_t accepted = 0;
        bool stopped = false;  ///< by itself
    };

    /// One recording, with the calls failing as planned until it is over.
    Outcome record(const QString& directory, int from)
    {
        Outcome outcome;
        Life life(directory, QString::fromLatin1(GetParam().journal));
        plan = {GetParam().error, from, GetParam().lasting, 0, 0};
        life.switchOn();
        for (std::uint64_t i = 0; i < ManyChanges && life.isOn(); ++i) {
            life.change(changeNumber(i));
            outcome.accepted += life.isOn() ? 1U : 0U;
        }
        outcome.stopped = !life.isOn();
        life.switchOff();
        plan.error = 0;
        expectRecordsAgain(life);
        return outcome;
    }

    /// The station lives: what is switched on again is recorded.
    static void expectRecordsAgain(Life& life)
    {
        life.switchOn();
        ASSERT_TRUE(life.isOn());
        life.change(1);
        life.switchOff();
        const auto again = TestSupport::parseRecording(TestSupport::readFile(life.fileName()));
        EXPECT_NE(again.records.back().data.find(";0.25"), std::string::npos) << again.records.back().data;
        QFile::remove(life.fileName());
    }

    /// The changes that can be had from what the first recording left behind.
    static std::uint64_t changesLeft(const QString& directory, std::uint64_t accepted)
    {
        const QString closed = fileIn(directory, ".rec");
        const QString open = fileIn(directory, ".tmp");
        const QString left = closed.isEmpty() ? open : closed;
        std::string bytes = TestSupport::readFile(left);
        const bool unfinished =
            QFile::exists(QString::fromStdString(Recording2::Inspection::journalOf(left.toStdString())));
        if (unfinished || !open.isEmpty()) {
            const std::string output = QDir(directory).filePath("saved").toStdString();
            const Recovery recovery = Recording2::Inspection::recover(left.toStdString(), {output, 0, {}, {}});
            if (accepted == 0 && recovery.outcome == RecoveryOutcome::Nothing) {
                return 0;  // not even the beginning of the file could be written
            }
            if (recovery.outcome == RecoveryOutcome::NothingToDo) {  // it only lacks its name
                return TestSupport::parseRecording(bytes).records.size() - s_initialStates;
            }
            EXPECT_EQ(recovery.outcome, RecoveryOutcome::Whole)
                << recovery.problem << testing::PrintToString(recovery.lost) << testing::PrintToString(recovery.notes);
            bytes = TestSupport::readFile(QString::fromStdString(output));
        }
        const auto recording = TestSupport::parseRecording(bytes);
        return std::max(recording.records.size(), s_initialStates) - s_initialStates;
    }

    static void SetUpTestSuite() { s_initialStates = TestSupport::parseRecording(closedAfter(0)).records.size(); }

    inline static std::size_t s_initialStates = 0;
};

TEST_P(Fault, AtAnyCallOfTheSystemLosesNothingThatWasAccepted)
{
    int failed = 0;
    int stopped = 0;
    for (int from = 1;; ++from) {
        SCOPED_TRACE("call " + std::to_string(from));
        const QTemporaryDir directory(directoryTemplate());
        const Outcome outcome = record(directory.path(), from);
        const bool over = plan.failed == 0;
        failed += over ? 0 : 1;
        stopped += outcome.stopped ? 1 : 0;
        const std::uint64_t left = changesLeft(directory.path(), outcome.accepted);
        EXPECT_GE(left, outcome.accepted);
        EXPECT_LE(left, outcome.accepted + (outcome.stopped ? 1 : 0));
        if (over || HasFailure()) {
            EXPECT_EQ(outcome.accepted, ManyChanges);
            break;
        }
    }
    count(static_cast<std::uint64_t>(failed), "failing calls");
    EXPECT_GT(failed, 15);
    EXPECT_GT(stopped, 5);
}

INSTANTIATE_TEST_SUITE_P(Errors, Fault,
                         testing::Values(FaultCase{ENOSPC, false, "process"}, FaultCase{ENOSPC, true, "process"},
                                         FaultCase{EIO, false, "process"}, FaultCase{EIO, true, "process"},
                                         FaultCase{ENOSPC, false, "power"}, FaultCase{EIO, true, "power"}),
                         [](const testing::TestParamInfo<FaultCase>& tried) {
                             return std::string(tried.param.error == ENOSPC ? "NoSpace" : "InputOutputError") +
                                    (tried.param.lasting ? "Lasting" : "Once") + '_' + tried.param.journal;
                         });

class Locks : public testing::Test {
protected:
    ~Locks() override { lockError = 0; }
    [[nodiscard]] QStringList tracesOf(const QString& text) const
    {
        QStringList found;
        for (const auto& line : log.lines()) {
            if (line.text.contains(text)) {
                found += line.text;
            }
        }
        return found;
    }
    [[nodiscard]] QStringList files() const { return QDir(directory.path()).entryList(QDir::Files); }

    const RecorderTests::TraceLog log;
    const QTemporaryDir directory{directoryTemplate()};
};

TEST_F(Locks, OfAFileSystemThatHasNoneAreToldOnceAndRecordingGoesOn)
{
    lockError = ENOLCK;
    {
        Life life(directory.path());
        for (int recording = 0; recording < 2; ++recording) {
            life.switchOn();
            life.change(1);
            life.switchOff();
            const auto recorded = TestSupport::parseRecording(TestSupport::readFile(life.fileName()));
            EXPECT_FALSE(recorded.records.empty());
        }
    }
    EXPECT_EQ(files().size(), 2);
    EXPECT_EQ(tracesOf("recording goes on without a lock").size(), 1);
}

TEST_F(Locks, ThatAnotherProcessHoldsAreAnErrorOfTheFile)
{
    lockError = EWOULDBLOCK;
    Life life(directory.path());
    life.switchOn();
    life.change(1);
    life.switchOff();
    EXPECT_EQ(files(), QStringList());
    const QStringList told = tracesOf("the recording file cannot be made");
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told.first().endsWith("Another program holds its lock")) << told.first().toStdString();
}

TEST_F(Locks, OfAFileSystemThatHasNoneLetOnlyPeopleRecover)
{
    {
        Life life(directory.path());
        life.switchOn();
        life.change(1);
        for (const QString& name : files()) {
            ASSERT_TRUE(QFile::copy(directory.filePath(name), directory.filePath(QStringLiteral("left_") + name)));
        }
        life.switchOff();
    }
    lockError = EOPNOTSUPP;
    const std::string left = fileIn(directory.path(), ".tmp").toStdString();
    const std::string output = directory.filePath("saved").toStdString();
    const Recovery refused = Recording2::Inspection::recover(left, {output, 0, {}, {}});
    EXPECT_EQ(refused.outcome, RecoveryOutcome::Nothing);
    EXPECT_NE(refused.problem.find("no locks"), std::string::npos) << refused.problem;
    Recording2::Inspection::RecoveryOptions asPeople;
    asPeople.output = output;
    asPeople.withoutLocks = true;
    EXPECT_EQ(Recording2::Inspection::recover(left, asPeople).outcome, RecoveryOutcome::Whole);
}

}  // namespace
}  // namespace CrashTests
