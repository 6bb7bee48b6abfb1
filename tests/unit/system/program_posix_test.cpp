// What a program is started with and how it is stopped, tried in processes of their own.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>

#include <system/program.h>
#include <system/stopsignal.h>

#include "support/childprocess.h"

namespace SystemTests {
namespace {

using TestSupport::endOf;

TEST(Streams, OfAClosedOneNoOtherFileTakesTheNumber)
{
    for (const System::ClosedStream closed : {System::ClosedStream::TakesAll, System::ClosedStream::RefusesAll}) {
        EXPECT_EQ(endOf([closed] {
                      close(STDOUT_FILENO);
                      System::prepareStandardStreams(closed);
                      const bool written = write(STDOUT_FILENO, "x", 1) == 1;
                      const bool apart = open("/dev/null", O_RDWR) > STDERR_FILENO;
                      return apart && written == (closed == System::ClosedStream::TakesAll) ? 0 : 1;
                  }),
                  0);
    }
}

TEST(Streams, AreNoTerminalWhereNobodySits)
{
    EXPECT_EQ(endOf([] {
                  dup2(open("/dev/null", O_RDWR), STDIN_FILENO);
                  return System::isTerminal(System::Stream::Input) ? 1 : 0;
              }),
              0);
}

TEST(Arguments, AreThoseBehindTheProgramsNameAsTheyWereGiven)
{
    const char* const given[] = {"program", "a b", "\xff",
                                 nullptr};  // NOLINT(modernize-avoid-c-arrays): as main has it
    EXPECT_EQ(System::argumentsOf(3, given), (std::vector<std::string>{"a b", "\xff"}));
    EXPECT_TRUE(System::argumentsOf(0, given).empty());
}

TEST(StopSignals, EndAWaitAndTheSecondOneEndsTheProcess)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_EQ(endOf([signal] {
                      const System::StopSignal stop;
                      stop.wait(0);
                      const bool before = System::StopSignal::requested();
                      raise(signal);
                      stop.wait(3'600'000);
                      return !before && System::StopSignal::requested() ? 0 : 1;
                  }),
                  0);
        EXPECT_EQ(endOf([signal] {
                      const System::StopSignal stop;
                      raise(signal);
                      raise(signal);
                      return 0;
                  }),
                  -signal);
    }
}

TEST(StopSignals, LeaveAHangUpIgnoredWhereItWas)
{
    EXPECT_EQ(endOf([] {
                  std::signal(SIGHUP, SIG_IGN);
                  const System::StopSignal stop;
                  raise(SIGHUP);
                  return System::StopSignal::requested() ? 1 : 0;
              }),
              0);
}

TEST(Input, IsReadUntilTheProcessIsToStop)
{
    EXPECT_EQ(endOf([] {
                  const System::StopSignal stop;
                  int ends[2] = {};  // NOLINT(modernize-avoid-c-arrays): as pipe takes it
                  if (pipe(ends) != 0 || dup2(ends[0], STDIN_FILENO) < 0 || write(ends[1], "abc", 3) != 3) {
                      return 2;
                  }
                  int worked = 0;
                  const System::IdleWork idle([&worked] { raise(++worked == 1 ? SIGTERM : SIGKILL); });
                  System::InterruptibleInput input("-");
                  char bytes[8] = {};  // NOLINT(modernize-avoid-c-arrays): as read takes it
                  const bool came = input.read(bytes, sizeof bytes) == 3 && std::string(bytes) == "abc";
                  const bool ended = input.read(bytes, sizeof bytes) == 0;  // the idle work stops the wait
                  return came && ended && worked == 1 ? 0 : 1;
              }),
              0);
    EXPECT_THROW(System::InterruptibleInput("/missing/file"), std::runtime_error);
}

}  // namespace
}  // namespace SystemTests
