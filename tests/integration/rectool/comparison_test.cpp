// What a self-check judges by: it must notice what was never recorded, and what is missing.
#include "selfcheck/faults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <recording2/fileaccess.h>

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
        CFileAccess file(path.c_str(), QStringLiteral("/Check"), nullptr, true, false, false, nullptr, nullptr);
        CVTCmdData record;
        record.set_cmd(36);
        for (const Change& change : changes) {
            record.set_str(change.data, static_cast<std::int32_t>(std::char_traits<char>::length(change.data)));
            file.write(record, change.timeMs, false);
        }
        CHeaderData header;
        header.set_version(2, 0);
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
    EXPECT_NE(Reference::read(m_folder.filePath(QStringLiteral("none.rec")).toStdString(), 3).problem, "");
}

TEST_F(SelfCheckComparison, ABeginningIsOne)
{
    const Comparison comparison = compared({{10, "0"}, {20, "1"}, {30, "2"}});
    EXPECT_EQ(comparison.problem, "");
    EXPECT_EQ(comparison.records, 3U);
    EXPECT_TRUE(comparison.isBeginning);
}

TEST_F(SelfCheckComparison, ARecordLeftOutIsNoBeginningButNothingIsInvented)
{
    const Comparison comparison = compared({{10, "0"}, {30, "2"}});
    EXPECT_EQ(comparison.problem, "");
    EXPECT_EQ(comparison.records, 2U);
    EXPECT_EQ(comparison.exactTimes, 2U);
    EXPECT_FALSE(comparison.isBeginning);
}

TEST_F(SelfCheckComparison, AWrongTimeIsNoBeginning)
{
    const Comparison comparison = compared({{10, "0"}, {21, "1"}});
    EXPECT_EQ(comparison.problem, "");
    EXPECT_EQ(comparison.exactTimes, 1U);
    EXPECT_FALSE(comparison.isBeginning);
}

TEST_F(SelfCheckComparison, WhatWasNeverRecordedIsAProblem)
{
    EXPECT_NE(compared({{10, "0"}, {20, "x"}}).problem, "");
    EXPECT_NE(compared({{10, "1"}, {20, "0"}}).problem, "");                                   // order
    EXPECT_NE(compared({{10, "0"}, {20, "1"}, {30, "2"}, {40, "3"}, {50, "3"}}).problem, "");  // once too often
}

TEST_F(SelfCheckComparison, AFileThatCannotBeReadIsAProblem)
{
    EXPECT_NE(compare(m_folder.filePath(QStringLiteral("none.rec")).toStdString(), m_reference).problem, "");
}

}  // namespace
}  // namespace RecTool::SelfCheck
