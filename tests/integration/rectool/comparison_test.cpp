// What a self-check judges by: it must notice what was never recorded, and what is missing.
#include "selfcheck/faults.h"

#include "support/libraryobjects.h"
#include "support/testing.h"

namespace RecTool::SelfCheck {
namespace {

struct Change {
    unsigned long long timeMs;
    const char* data;
};

class SelfCheckComparison : public testing::Test {
protected:
    [[nodiscard]] std::string write(const char* name, const std::vector<Change>& changes) const
    {
        using namespace Recording2;
        std::string path = m_folder.filePath(QString::fromLatin1(name)).toStdString();
        CFileAccess file(path.c_str(), "/Check", nullptr, true, false, false, nullptr, nullptr);
        for (const Change& change : changes) {
            CVTCmdData record = TestSupport::makeRecord(36, change.data);
            file.write(record, change.timeMs, false);
        }
        CHeaderData header = TestSupport::makeHeader({});
        file.CloseRecording(header, true);
        return path;
    }
    [[nodiscard]] Comparison compared(const std::vector<Change>& changes) const
    {
        return compare(write("compared.rec", changes), m_reference);
    }

    QTemporaryDir m_folder;
    Reference m_reference = Reference::read(write("reference.rec", {{10, "0"}, {20, "1"}, {30, "2"}, {40, "3"}}), 3);
};

TEST_F(SelfCheckComparison, TheReferenceKnowsWhatStandsInFrontOfTheSteps)
{
    EXPECT_EQ(m_reference.problem, "");
    EXPECT_EQ(m_reference.states, 1U);
    EXPECT_EQ(m_reference.timeOf(3), 30U);
    EXPECT_EQ(m_reference.timeOf(0), 0U);
}

TEST_F(SelfCheckComparison, AReferenceWithFewerRecordsThanStepsIsNone)
{
    EXPECT_NE(Reference::read(write("short.rec", {{10, "0"}, {20, "1"}}), 3).problem, "");
    EXPECT_NE(Reference::read(m_folder.filePath("none.rec").toStdString(), 3).problem, "");
}

TEST_F(SelfCheckComparison, ABeginningIsOneAndWhatLacksARecordOrHasAWrongTimeIsNone)
{
    struct {
        std::vector<Change> changes;
        std::uint64_t exactTimes;
        bool isBeginning;
    } const cases[]{{{{10, "0"}, {20, "1"}, {30, "2"}}, 3, true},
                    {{{10, "0"}, {30, "2"}}, 2, false},
                    {{{10, "0"}, {21, "1"}}, 1, false}};
    for (const auto& [changes, exactTimes, isBeginning] : cases) {
        const Comparison comparison = compared(changes);
        EXPECT_EQ(comparison.problem, "") << "nothing is invented";
        EXPECT_EQ(comparison.records, changes.size());
        EXPECT_EQ(comparison.exactTimes, exactTimes);
        EXPECT_EQ(comparison.isBeginning, isBeginning);
    }
}

TEST_F(SelfCheckComparison, WhatWasNeverRecordedIsAProblem)
{
    EXPECT_NE(compared({{10, "0"}, {20, "x"}}).problem, "");
    EXPECT_NE(compared({{10, "1"}, {20, "0"}}).problem, "");                                   // order
    EXPECT_NE(compared({{10, "0"}, {20, "1"}, {30, "2"}, {40, "3"}, {50, "3"}}).problem, "");  // once too often
}

TEST_F(SelfCheckComparison, AFileThatCannotBeReadIsAProblem)
{
    EXPECT_NE(compare(m_folder.filePath("none.rec").toStdString(), m_reference).problem, "");
}

}  // namespace
}  // namespace RecTool::SelfCheck
