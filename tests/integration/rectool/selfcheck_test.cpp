// rectool selfcheck as users run it: the real program, which starts itself.
#include <nlohmann/json.hpp>

#include "support/program.h"

namespace {

using TestSupport::ProgramResult;
using TestSupport::runProgram;
using namespace testing;

class SelfCheck : public testing::Test {
protected:
    [[nodiscard]] QStringList inFolder() const
    {
        return QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    }
    [[nodiscard]] ProgramResult selfcheck(const QStringList& arguments) const
    {
        return runProgram(RECTOOL, QStringList{"selfcheck"} + arguments);
    }

    QTemporaryDir m_folder;
};

TEST_F(SelfCheck, FindsThatEveryPromiseHoldsAndLeavesNothingBehind)
{
    const ProgramResult result = selfcheck({m_folder.path(), "--runs", "3", "--json"});
    ASSERT_EQ(result.exitCode, 0) << result.out << result.err;
    const auto report = nlohmann::json::parse(result.out);
    EXPECT_EQ(report.at("held"), true);
    const auto& faults = report.at("faults");
    ASSERT_EQ(faults.size(), 3U);
    EXPECT_EQ(faults[0].at("fault"), "killed");
    EXPECT_EQ(faults[0].at("runs"), 3);
    EXPECT_EQ(faults[0].at("worstLostRecords"), 0);
    EXPECT_EQ(faults[0].at("worstLostMs"), 0);
    EXPECT_EQ(faults[1].at("fault"), "cut");
    EXPECT_EQ(faults[1].at("runs"), 3);
    EXPECT_EQ(faults[2].at("fault"), "filled");
    EXPECT_TRUE(inFolder().isEmpty());
}

TEST_F(SelfCheck, TellsItInWordsAndKeepsTheFolderWhenAsked)
{
    const ProgramResult result = selfcheck({m_folder.path(), "--runs", "1", "--keep"});
    EXPECT_EQ(result.exitCode, 0) << result.out << result.err;
    EXPECT_THAT(result.out, AllOf(HasSubstr("killed at any moment: 1 runs, nothing was lost"),
                                  HasSubstr("every promise was held")));
    EXPECT_THAT(result.err, HasSubstr("is kept"));
    EXPECT_EQ(inFolder().size(), 1);
}

TEST_F(SelfCheck, WhereNoFolderCanBeMadeItIsRefused)
{
    const ProgramResult missing = selfcheck({m_folder.filePath("nowhere")});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_THAT(missing.err, HasSubstr("No folder can be made there"));
    const QString file = m_folder.filePath("file");
    std::ofstream(file.toStdString()) << "x";
    EXPECT_EQ(selfcheck({file}).exitCode, 2);
    EXPECT_EQ(inFolder(), QStringList("file"));
}

TEST_F(SelfCheck, WrongArgumentsAreRefused)
{
    EXPECT_EQ(selfcheck({}).exitCode, 1);
    EXPECT_EQ(selfcheck({m_folder.path(), "--runs", "0"}).exitCode, 1);
    EXPECT_EQ(selfcheck({m_folder.path(), "--runs", "x"}).exitCode, 1);
}

}  // namespace
