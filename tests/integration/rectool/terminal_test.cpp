// rectool on a terminal: colours, and the pager. The terminal is a pseudo-terminal.
#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/program.h"
#include "support/samplerecording.h"

namespace {

using TestSupport::runProgram;
using namespace testing;

constexpr const char* Escape = "\x1b[";

struct OnTerminal {
    int exitCode = -1;
    std::string shown;
};

/// Runs the program with a terminal as its standard streams. Does not return in the process that becomes the program.
class Terminal {
public:
    Terminal() : m_master(posix_openpt(O_RDWR | O_NOCTTY))
    {
        EXPECT_TRUE(m_master >= 0 && grantpt(m_master) == 0 && unlockpt(m_master) == 0);
        m_name = ptsname(m_master);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() { close(m_master); }

    OnTerminal run(const QStringList& arguments, const std::map<std::string, std::string>& environment)
    {
        const pid_t process = fork();
        if (process == 0) {
            become(arguments, environment);
        }
        OnTerminal result;
        result.shown = readAll();
        int status = 0;
        EXPECT_EQ(waitpid(process, &status, 0), process);
        result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return result;
    }

private:
    [[noreturn]] void become(const QStringList& arguments, const std::map<std::string, std::string>& environment) const
    {
        setsid();
        const int terminal = open(m_name.c_str(), O_RDWR);
        static_cast<void>(ioctl(terminal, TIOCSCTTY, 0));
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            static_cast<void>(dup2(terminal, stream));
        }
        close(terminal);
        close(m_master);
        for (const char* name : {"NO_COLOR", "PAGER", "RECTOOL_PAGER", "LESS"}) {
            unsetenv(name);
        }
        setenv("TERM", "xterm", 1);
        for (const auto& [name, value] : environment) {
            setenv(name.c_str(), value.c_str(), 1);
        }
        std::vector<std::string> words = {RECTOOL};
        for (const QString& argument : arguments) {
            words.push_back(argument.toStdString());
        }
        std::vector<char*> pointers;
        for (std::string& word : words) {
            pointers.push_back(word.data());
        }
        pointers.push_back(nullptr);
        execv(RECTOOL, pointers.data());
        _exit(127);
    }

    /// Up to the end of all that have the terminal open: reading then fails.
    [[nodiscard]] std::string readAll() const
    {
        constexpr int PatienceMs = 60'000;
        std::string all;
        std::array<char, 4096> buffer{};
        pollfd ready{m_master, POLLIN, 0};
        while (poll(&ready, 1, PatienceMs) > 0) {
            const ssize_t count = read(m_master, buffer.data(), buffer.size());
            if (count <= 0) {
                break;
            }
            all.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return all;
    }

    int m_master;
    std::string m_name;
};

class OnATerminal : public testing::Test {
protected:
    OnATerminal() { writeSampleRecording(m_sample.toStdString()); }

    [[nodiscard]] static OnTerminal run(const QStringList& arguments,
                                        const std::map<std::string, std::string>& environment)
    {
        return Terminal().run(arguments, environment);
    }
    /// A pager that shows what it gets after a word of its own.
    std::string pager()
    {
        const QString path = m_folder.filePath("pager");
        QFile script(path);
        EXPECT_TRUE(script.open(QFile::WriteOnly));
        script.write("#!/bin/sh\necho \"PAGED $LESS $*\"\ncat\n");
        script.close();
        EXPECT_TRUE(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        return path.toStdString();
    }

    QTemporaryDir m_folder;
    QString m_sample = m_folder.filePath("sample.rec");
};

}  // namespace

TEST_F(OnATerminal, HeadingsKeywordsAndVerdictsHaveColours)
{
    const std::map<std::string, std::string> plain = {{"PAGER", ""}};
    for (const QStringList& verb : {QStringList{"info"}, {"types"}, {"cat"}, {"verify"}, {"state", "--at", "2000"}}) {
        EXPECT_THAT(run(verb + QStringList{m_sample}, plain).shown, HasSubstr(Escape)) << verb[0].toStdString();
    }
}

TEST_F(OnATerminal, ThereAreNoColoursWhereTheyAreNotWantedOrNotPossible)
{
    using Environment = std::map<std::string, std::string>;
    for (const Environment& environment : {Environment{{"NO_COLOR", "1"}}, {{"TERM", "dumb"}}}) {
        Environment all = environment;
        all["PAGER"] = "";
        EXPECT_THAT(run({"cat", m_sample}, all).shown, Not(HasSubstr(Escape)));
    }
    EXPECT_THAT(run({"cat", "--json", m_sample}, {{"PAGER", ""}}).shown, Not(HasSubstr(Escape)));
    EXPECT_THAT(run({"cat", "--csv", m_sample}, {{"PAGER", ""}}).shown, Not(HasSubstr(Escape)));
    EXPECT_THAT(runProgram(RECTOOL, {"cat", m_sample}).out, Not(HasSubstr(Escape))) << "in a pipe";
}

TEST_F(OnATerminal, LongOutputGoesThroughThePager)
{
    const std::string named = pager();
    const OnTerminal paged = run({"cat", m_sample}, {{"PAGER", named}});
    EXPECT_EQ(paged.exitCode, 0);
    EXPECT_THAT(paged.shown, StartsWith("PAGED FRX"));
    EXPECT_THAT(paged.shown, HasSubstr("MODULATION"));
    EXPECT_THAT(run({"cat", m_sample}, {{"PAGER", "false"}, {"RECTOOL_PAGER", named}}).shown, StartsWith("PAGED"));
    EXPECT_THAT(run({"cat", m_sample}, {{"PAGER", named + " -x 'two words'"}, {"LESS", "S"}}).shown,
                StartsWith("PAGED S -x two words"));
}

TEST_F(OnATerminal, ThereIsNoPagerWhereItIsNotWanted)
{
    const std::string named = pager();
    for (const QStringList& arguments : {QStringList{"--no-pager", "cat", m_sample}, {"cat", m_sample, "--no-pager"}}) {
        EXPECT_THAT(run(arguments, {{"PAGER", named}}).shown, Not(HasSubstr("PAGED")));
    }
    for (const char* none : {"", "cat"}) {
        const OnTerminal shown = run({"cat", m_sample}, {{"PAGER", named}, {"RECTOOL_PAGER", none}});
        EXPECT_EQ(shown.exitCode, 0);
        EXPECT_THAT(shown.shown, Not(HasSubstr("PAGED")));
    }
    EXPECT_THAT(run({"bookmark", "list", m_sample}, {{"PAGER", named}}).shown, Not(HasSubstr("PAGED")));
}

TEST_F(OnATerminal, APagerThatEndsEarlyOrIsMissingCostsNothing)
{
    EXPECT_EQ(run({"cat", m_sample}, {{"PAGER", "true"}}).exitCode, 0);
    const OnTerminal missing = run({"cat", m_sample}, {{"PAGER", "no-such-pager-here"}});
    EXPECT_EQ(missing.exitCode, 0);
    EXPECT_THAT(missing.shown, HasSubstr("MODULATION"));
}

TEST_F(OnATerminal, WhatIsWrongIsToldThereTooAndKeepsItsExitCode)
{
    const OnTerminal wrong = run({"cat", m_sample, "--type", "nothing"}, {{"PAGER", pager()}});
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_THAT(wrong.shown, HasSubstr("There is no type"));
}
