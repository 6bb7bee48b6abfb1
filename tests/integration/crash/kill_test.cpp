// Recordings whose process is killed.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <random>

#include <recording2/inspection/rescue/recovery.h>

#include "life.h"
#include "sharedmemory.h"
#include "support/modelreader.h"

namespace CrashTests {
namespace {

using Recording2::Inspection::Recovery;
using Recording2::Inspection::RecoveryOutcome;

constexpr std::uint64_t AllChanges = 1'500;

/// Memory that the recording process shares with its killer.
struct Acknowledged {
    std::atomic<std::uint64_t> on{0};       ///< the recording was switched on
    std::atomic<std::uint64_t> changes{0};  ///< so many were accepted
    std::atomic<std::uint64_t> closed{0};
};

[[noreturn]] void live(const QString& directory, const QString& journal, Acknowledged& acknowledged)
{
    ::setenv("TMPDIR", directory.toUtf8().constData(), 1);  // what the station makes goes with the directory
    Life life(directory, journal);
    life.switchOn();
    acknowledged.on = 1;
    for (std::uint64_t number = 0; number < AllChanges; ++number) {
        life.change(number);
        acknowledged.changes = number + 1;
    }
    life.switchOff();
    acknowledged.closed = 1;
    ::pause();
    ::_exit(0);
}

class KilledLife {
public:
    void go(const QString& journal, std::uint64_t changes, std::uint64_t moment)
    {
        liveAndDie(journal, changes, moment);
        if (!testing::Test::HasFatalFailure()) {
            expectNothingLost();
        }
    }

private:
    /// Lives, and is killed a random moment after so many changes.
    void liveAndDie(const QString& journal, std::uint64_t changes, std::uint64_t moment)
    {
        const pid_t process = ::fork();
        ASSERT_NE(process, -1);
        if (process == 0) {
            live(m_directory.path(), journal, *m_acknowledged);
        }
        const auto reached = [&] {
            return m_acknowledged->on != 0 && (m_acknowledged->changes >= changes || m_acknowledged->closed != 0);
        };
        while (!reached() && ::waitpid(process, nullptr, WNOHANG) == 0) {
        }
        for (std::atomic<std::uint64_t> spin{0}; spin < moment; ++spin) {
        }
        ::kill(process, SIGKILL);
        int status = 0;
        ::waitpid(process, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    }

    /// The recovered recording is that of a life which was closed after the last change that was accepted, or after
    /// the one at which it was killed.
    void expectNothingLost()
    {
        const QString left = fileIn(m_directory.path(), ".tmp");
        std::string bytes;
        if (left.isEmpty()) {  // killed after the last step but one: the journal may still be there
            bytes = TestSupport::readFile(fileIn(m_directory.path(), ".rec"));
        } else {
            const std::string output = m_directory.filePath("out").toStdString();
            const Recovery recovery = Recording2::Inspection::recover(left.toStdString(), {output, 0, {}, {}});
            ASSERT_EQ(recovery.outcome, RecoveryOutcome::Whole)
                << recovery.problem << (recovery.lost.empty() ? "" : recovery.lost.front());
            bytes = TestSupport::readFile(QString::fromStdString(output));
        }
        const std::uint64_t accepted = m_acknowledged->changes;
        const bool same = bytes == closed(accepted) || bytes == closed(std::min(accepted + 1, AllChanges)) ||
                          isBetween(bytes, accepted);
        EXPECT_TRUE(same) << accepted << " changes were accepted, " << bytes.size() << " bytes recovered, "
                          << closed(accepted).size() << " expected";
    }

    /// Killed where the header already followed a change whose record was not accepted yet.
    bool isBetween(const std::string& bytes, std::uint64_t accepted)
    {
        constexpr std::size_t HeaderArea = 500;
        const std::string before = closed(accepted);
        const std::string after = closed(std::min(accepted + 1, AllChanges));
        if (bytes.size() != before.size() || bytes.substr(HeaderArea) != before.substr(HeaderArea)) {
            return false;
        }
        TestSupport::HeaderFields found = TestSupport::parseRecording(bytes).header;
        const TestSupport::HeaderFields next = TestSupport::parseRecording(after).header;
        found.timeTable = next.timeTable;
        found.channelRangeTable = next.channelRangeTable;
        const bool stopIsThatOfTheLast = found.stopMs == TestSupport::parseRecording(before).header.stopMs;
        found.stopMs = next.stopMs;
        return stopIsThatOfTheLast && found.bytes() == next.bytes();
    }
    const std::string& closed(std::uint64_t changes)
    {
        std::string& bytes = m_closed[changes];
        if (bytes.empty()) {
            bytes = closedAfter(changes);
        }
        return bytes;
    }

    QTemporaryDir m_directory{directoryTemplate()};
    SharedMemory<Acknowledged> m_acknowledged;
    std::map<std::uint64_t, std::string> m_closed;
};

constexpr int RunsOfATest = Thinned == 1 ? 25 : 6;

/// Several runs in one test, and several tests: they run beside each other.
class KilledAtARandomMoment : public testing::TestWithParam<std::uint32_t> {};

TEST_P(KilledAtARandomMoment, EveryAcceptedRecordIsThereWithItsTimeAndNothingElseIs)
{
    std::mt19937 random(GetParam());  // NOLINT(cert-msc51-cpp): a failure can be run again
    for (int run = 0; run < RunsOfATest; ++run) {
        const std::uint64_t changes = random() % (AllChanges + AllChanges / 8);
        const std::uint64_t moment = random() % 2 == 0 ? random() % 2'000 : random() % 200'000;
        SCOPED_TRACE("run " + std::to_string(run) + ", killed after " + std::to_string(changes) + " changes and " +
                     std::to_string(moment) + " rounds");
        KilledLife().go(run % 8 == 7 ? "power" : "process", changes, moment);
        if (HasFailure()) {
            return;
        }
    }
    count(RunsOfATest, "runs");
}

INSTANTIATE_TEST_SUITE_P(Seeds, KilledAtARandomMoment, testing::Range(1U, 13U));

}  // namespace
}  // namespace CrashTests
