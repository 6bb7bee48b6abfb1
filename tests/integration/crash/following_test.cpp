// Recordings whose process is killed while another one reads them.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <random>

#include <recording2/inspection/following.h>

#include "life.h"
#include "sharedmemory.h"
#include "support/modelreader.h"

namespace CrashTests {
namespace {

using Recording2::Inspection::Following;
using Recording2::Inspection::Record;

/// Changes of the recording process.
struct Counted {
    std::atomic<std::uint64_t> begun{0};
    std::atomic<std::uint64_t> accepted{0};
};

class ReadLife {
public:
    ReadLife(const QString& journal, std::size_t channels) : m_journal(journal), m_channels(channels) {}

    /// Lives, read by this process all the time, and is killed once so many changes were accepted.
    void go(std::uint64_t changes)
    {
        const pid_t process = ::fork();
        ASSERT_NE(process, -1);
        if (process == 0) {
            live();
        }
        while (m_counted->accepted == 0) {
        }
        std::string problem;
        auto following = Following::open(fileIn(m_directory.path(), ".tmp").toStdString(), problem);
        while (following && m_counted->accepted < changes) {
            look(*following);
        }
        ::kill(process, SIGKILL);
        int status = 0;
        ::waitpid(process, &status, 0);
        ASSERT_TRUE(following) << problem;
        look(*following);
        EXPECT_EQ(following->state(), Following::State::Abandoned);
        EXPECT_EQ(following->unreadable(), 0U);
        EXPECT_GE(m_seen.size(), m_initial + m_counted->accepted);
        EXPECT_LE(m_seen.size(), m_initial + m_counted->begun);
        expectBeginning();
    }

private:
    [[noreturn]] void live()
    {
        ::setenv("TMPDIR", m_directory.path().toUtf8().constData(), 1);  // what the station makes goes with it
        Life life(m_directory.path(), m_journal, m_channels);
        life.switchOn();
        for (std::uint64_t number = 0;; ++number) {
            m_counted->begun = number + 1;
            life.change(number);
            m_counted->accepted = number + 1;
        }
    }

    /// Never more than was begun, and all that was accepted before.
    void look(Following& following)
    {
        const std::uint64_t accepted = m_counted->accepted;
        Record record;
        while (following.next(record)) {
            m_seen.push_back(record);
            ASSERT_LE(m_seen.size(), m_initial + m_counted->begun);
        }
        ASSERT_GE(m_seen.size(), m_initial + accepted);
    }

    /// Each record as the same life has it that was closed.
    void expectBeginning() const
    {
        const auto whole = TestSupport::parseRecording(closedAfter(changesSeen(), m_channels));
        ASSERT_GE(m_seen.size(), whole.records.size());
        for (std::size_t i = 0; i < whole.records.size(); ++i) {
            ASSERT_EQ(m_seen[i].timeMs, whole.records[i].time) << i;
            ASSERT_EQ(m_seen[i].position, whole.records[i].position) << i;
            ASSERT_EQ(m_seen[i].code, whole.records[i].code) << i;
            ASSERT_EQ(m_seen[i].data, whole.records[i].data) << i;
        }
    }
    [[nodiscard]] std::uint64_t changesSeen() const { return m_seen.size() - m_initial; }

    QTemporaryDir m_directory{directoryTemplate()};
    QString m_journal;
    std::size_t m_channels;
    SharedMemory<Counted> m_counted;
    std::vector<Record> m_seen;
    std::size_t m_initial = TestSupport::parseRecording(closedAfter(0)).records.size();
};

TEST(ReadWhileKilled, WhatIsShownIsWhatWasAcceptedToTheLastRecord)
{
    std::mt19937 random(1);  // NOLINT(cert-msc51-cpp): a failure can be run again
    constexpr std::uint64_t Rounds = 3;
    constexpr int Runs = Thinned == 1 ? 12 : 4;
    for (int run = 0; run < Runs; ++run) {
        const QString journal = run % 4 == 3 ? "power" : "process";
        const std::size_t channels = run % 2 == 0 ? Life::FewChannels : Life::ManyChannels;
        const std::uint64_t changes = 1 + random() % (run % 2 == 0 ? Rounds * 4'096 : 1'500);
        SCOPED_TRACE("run " + std::to_string(run) + ", killed after " + std::to_string(changes));
        ReadLife(journal, channels).go(changes);
        if (testing::Test::HasFailure()) {
            return;
        }
    }
}

}  // namespace
}  // namespace CrashTests
