// Opening, closing, renaming and copying CFileAccess, and what an invalid or closed one answers.
#include <values/tree.h>

#include "fileaccess_fixture.h"
#include "support/tracelog.h"

using namespace FileAccessTests;

namespace {

class Lifecycle : public FileAccessTest {};

QString textAt(const values::Tree& tree, const QString& path)
{
    const auto* value = dynamic_cast<const values::Value<QString>*>(tree.Find(path));
    return value == nullptr ? "no such value" : value->GetValue();
}

}  // namespace

TEST_F(Lifecycle, ANewFileHoldsTheReservedHeaderAreaWhateverStoodThereBefore)
{
    TestSupport::writeFile(filePath("b.rec"), std::string(5'000, 'x'));
    for (const auto& [name, closed] : {std::pair{"a.tmp", "a.rec"}, std::pair{"b.rec", "b.rec"}}) {
        const auto file = openForWriting(name);
        EXPECT_TRUE(file->IsValidFile()) << name;
        EXPECT_EQ(file->fileSize(), 500) << name;
        close(*file);
        EXPECT_EQ(bytesOf(closed).size(), 500U) << name;
    }
}

TEST_F(Lifecycle, AFileThatWasNeverClosedKeepsItsNameAndIsOfNoKnownFormat)
{
    auto file = openForWriting("a.tmp");
    write(*file, 1, "data", 10);
    file.reset();
    EXPECT_EQ(bytesOf("a.tmp"), TestSupport::headerArea() + TestSupport::recordBytes(1, "data"));
    EXPECT_FALSE(openForReading("a.tmp")->IsValidFile());
}

TEST_F(Lifecycle, TheSuffixTmpBecomesRecAtCloseBehindTheFirstDotAndNoOtherDoes)
{
    ASSERT_TRUE(QDir(filePath({})).mkdir("sub.dir"));
    for (const auto& [name, closed] :
         {std::pair{"a.tmp", "a.rec"}, std::pair{"b.c.tmp", "b.rec"}, std::pair{"sub.dir/a.tmp", "sub.dir/a.rec"}}) {
        const auto file = openForWriting(name);
        EXPECT_TRUE(exists(name));
        close(*file);
        EXPECT_FALSE(exists(name));
        EXPECT_TRUE(exists(closed));
        EXPECT_EQ(file->path(), name8(name));
    }
    EXPECT_FALSE(exists("b.c.rec"));
    for (const char* name : {"d.dat", "tmp", "d.tmp.dat", "d.tmpx"}) {
        close(*openForWriting(name));
        EXPECT_TRUE(exists(name)) << name;
    }
    EXPECT_FALSE(exists("d.rec"));
}

#if !defined(_WIN32)
TEST_F(Lifecycle, ALinkThatLeadsToTheFileGetsTheFinalName)
{
    TestSupport::writeFile(filePath("target"), "");
    ASSERT_TRUE(QFile::link(filePath("target"), filePath("a.tmp")));
    const auto file = openForWriting("a.tmp");
    write(*file, 1, "data", 10);
    close(*file);
    EXPECT_FALSE(exists("a.tmp"));
    EXPECT_EQ(QFile::symLinkTarget(filePath("a.rec")), filePath("target"));
    EXPECT_EQ(bytesOf("target"), ReferenceRecording().record(1, "data", 10).close());
}
#endif

TEST_F(Lifecycle, TheRenameNeverReplacesAnExistingFile)
{
    TestSupport::writeFile(filePath("a.rec"), "an earlier recording");
    const auto file = openForWriting("a.tmp");
    write(*file, 1, "data", 10);
    close(*file);
    EXPECT_EQ(bytesOf("a.rec"), "an earlier recording");
    EXPECT_EQ(bytesOf("a.tmp"), ReferenceRecording().record(1, "data", 10).close());
}

TEST_F(Lifecycle, TheNamePartIsPutBehindThePathAsItStands)
{
    const CFileAccess file(name8("begin_").c_str(), QString(), "end.dat", true, false, false, nullptr, nullptr);
    EXPECT_TRUE(file.IsValidFile());
    EXPECT_EQ(file.path(), name8("begin_end.dat"));
    EXPECT_TRUE(exists("begin_end.dat"));
}

TEST_F(Lifecycle, NamesBeyondAsciiAreThoseOfThePlatform)
{
    const QString stem = "N\u00fcrnberg S\u00fcd";
    const auto file = openForWriting(stem + ".tmp");
    ASSERT_TRUE(file->IsValidFile());
    EXPECT_TRUE(exists(stem + ".tmp"));
    close(*file);
    EXPECT_TRUE(exists(stem + ".rec"));
    EXPECT_TRUE(openForReading(stem + ".rec")->IsValidFile());
}

TEST_F(Lifecycle, AFileThatCannotBeCreatedIsInvalidAndEveryOperationDoesNothing)
{
    const auto file = openForWriting("missing/a.tmp");
    EXPECT_FALSE(file->IsValidFile());
    CVTCmdData record = makeRecord(1, "x");
    CHeaderData header = makeHeader({});
    EXPECT_EQ(file->write(record, 10, true), 0U);
    EXPECT_EQ(file->write(header), 0U);
    EXPECT_EQ(file->readfirst(record), 0U);
    EXPECT_NO_THROW(close(*file));
    EXPECT_FALSE(exists("missing"));
}

TEST_F(Lifecycle, AFileThatIsMissingIsInvalidForReading)
{
    const auto file = openForReading("missing.rec");
    EXPECT_FALSE(file->IsValidFile());
    expectAllOperationsToAnswerZero(*file);
    EXPECT_NO_THROW(close(*file));
    EXPECT_FALSE(exists("missing.rec"));
}

TEST_F(Lifecycle, AnEmptyFileAndAMajorVersionBelowTwoAreInvalidForReading)
{
    EXPECT_FALSE(openBytes({})->IsValidFile());
    HeaderFields header;
    for (const auto version : std::vector<std::int16_t>{1, 0, -2, 3}) {
        header.majorVersion = version;
        EXPECT_EQ(openBytes(ReferenceRecording().close(header))->IsValidFile(), version >= 2) << version;
    }
}

TEST_F(Lifecycle, AFileThatCannotBeOpenedIsTracedOnlyWhereTheMaskAsksForIt)
{
    const QString source = R"(devicecontrol\recording2\fileaccess)";
    const QString message = "CFileAccess: Could not open recording file, probably old format!";
    const auto count = [&] {
        const TraceLog::Line* line = TraceLog::find(message);
        EXPECT_TRUE(line == nullptr || line->source == source);
        return TraceLog::count(message);
    };
    HeaderFields old{.majorVersion = 1};
    const std::string oldFile = ReferenceRecording().close(old);
    {
        const TraceLog log(ErrorHandler::RecordingTraces);
        EXPECT_FALSE(openBytes(oldFile)->IsValidFile());
        EXPECT_EQ(count(), 1);
        EXPECT_FALSE(openForWriting("missing/a.tmp")->IsValidFile());
        EXPECT_EQ(count(), 2);
        EXPECT_FALSE(openForReading("missing.rec")->IsValidFile());
        EXPECT_EQ(count(), 3);
        EXPECT_TRUE(openForWriting("a.tmp")->IsValidFile());
        EXPECT_EQ(count(), 3);
    }
    const TraceLog log(~ErrorHandler::RecordingTraces);
    EXPECT_FALSE(openBytes(oldFile)->IsValidFile());
    EXPECT_EQ(count(), 0);
}

TEST_F(Lifecycle, WhatCouldNotBeOpenedIsNotRenamedAtClose)
{
    ASSERT_TRUE(QDir(filePath({})).mkdir("a.tmp"));
    const auto file = openForWriting("a.tmp");
    EXPECT_FALSE(file->IsValidFile());
    close(*file);
    EXPECT_TRUE(exists("a.tmp"));
    EXPECT_FALSE(exists("a.rec"));
}

TEST_F(Lifecycle, ClosingKeepsTheChannelRangesAndBookmarksUntilTheObjectIsDestroyed)
{
    const auto file = openBytes(ReferenceRecording().record(20, "34;", 10, true).record(20, "34;", 20, true).close());
    file->addBookmark(10, "a");
    file->writeBookmarks();
    close(*file);
    file->BookmarkTableToBegin();
    unsigned long long time = 0;
    std::string text;
    EXPECT_FALSE(file->getNextBookmark(time, text));
    EXPECT_EQ(time, 10U);
    EXPECT_EQ(text, "a");
    CVTCmdData record;
    file->CRDTableToBegin();
    EXPECT_TRUE(file->readNextChannelRangeDef(record, time));
    EXPECT_EQ(time, 10U);
    EXPECT_FALSE(file->readNextChannelRangeDef(record, time));
    EXPECT_EQ(time, 20U);
}

TEST_F(Lifecycle, NothingIsReadFromAFileOpenedForWriting)
{
    const auto file = openForWriting("a.tmp");
    write(*file, 1, "data", 10);
    file->readTables();
    expectReadsToAnswerZero(*file);
    close(*file);
    EXPECT_EQ(bytesOf("a.rec"), ReferenceRecording().record(1, "data", 10).close());
}

TEST_F(Lifecycle, ADefinitionOfAFileThatIsWrittenIsThatOfTheInitialStatesWhereItHasThem)
{
    const auto file = openForWriting("a.tmp");
    write(*file, 20, "34;", 10);
    write(*file, 20, "34;", 10, true);  // moves to 11
    for (const auto& [data, expected] : {std::pair{"34;", 10U}, std::pair{"no range", 11U}}) {
        file->CRDTableToBegin();
        CVTCmdData record = makeRecord(7, data);  // nothing is read into it
        unsigned long long time = 0;
        EXPECT_FALSE(file->readNextChannelRangeDef(record, time));
        EXPECT_EQ(time, expected);
        EXPECT_EQ(dataOf(record), data);
    }
}

TEST_F(Lifecycle, NothingIsWrittenToAFileOpenedForReading)
{
    const std::string bytes = ReferenceRecording().record(1, "data", 10).close();
    const auto file = openBytes(bytes);
    CVTTypesData types = makeTypes({{1, 2, "KEY", "/PATH"}});
    CHeaderData header = makeHeader({});
    EXPECT_EQ(file->write(types), 0U);
    write(*file, 2, "more", 20, true);
    EXPECT_EQ(file->write(header), 0U);
    EXPECT_EQ(file->fileSize(), 0);
    close(*file);
    EXPECT_EQ(bytesOf("made.rec"), bytes);
}

TEST_F(Lifecycle, AClosedFileAnswersZeroToEveryOperationAndStaysAsItIs)
{
    const auto file = openForWriting("a.tmp");
    write(*file, 1, "data", 10);
    close(*file);
    const std::string bytes = bytesOf("a.rec");
    EXPECT_TRUE(file->IsValidFile());
    expectAllOperationsToAnswerZero(*file);
    EXPECT_NO_THROW(close(*file));
    EXPECT_EQ(bytesOf("a.rec"), bytes);
}

TEST_F(Lifecycle, ClosingAFileOpenedForReadingEndsTheReading)
{
    const auto file = openBytes(ReferenceRecording().record(1, "a", 10).record(2, "b", 20).close());
    CVTCmdData record;
    EXPECT_EQ(file->readfirst(record), 20U);
    close(*file);
    expectAllOperationsToAnswerZero(*file);
    EXPECT_TRUE(exists("made.rec"));
}

TEST_F(Lifecycle, AFileForReadingIsRenamedByNothing)
{
    TestSupport::writeFile(filePath("a.tmp"), ReferenceRecording().record(1, "a", 10).close());
    close(*openForReading("a.tmp"));
    EXPECT_TRUE(exists("a.tmp"));
}

#ifdef Q_OS_LINUX
TEST_F(Lifecycle, AFailedWriteStopsAllFurtherWritingAndNothingThrows)
{
    if (!QFileInfo::exists("/dev/full")) {
        GTEST_SKIP() << "no device that is always full";
    }
    CFileAccess file("/dev/full", QString(), nullptr, true, false, false, nullptr, nullptr);
    CVTTypesData types = makeTypes({{1, 2, "KEY", "/PATH"}});
    for (unsigned long long time = 10; time < 20; ++time) {
        EXPECT_NO_THROW(write(file, 1, std::string(100'000, 'x'), time, true));
    }
    EXPECT_NO_THROW(file.write(types));
    EXPECT_NO_THROW(close(file));
}
#endif

TEST_F(Lifecycle, WithoutAnArchiveTheFinalNameOfWhatIsWrittenIsShownInTheTree)
{
    values::Tree tree;
    const auto read = openBytes(ReferenceRecording().close());
    EXPECT_EQ(textAt(tree, "/Rec/REC_UNCFILEPATH"), QString());
    for (const char* name : {"a.b.tmp", "a.dat"}) {
        const auto file = openForWriting(name);
        EXPECT_EQ(textAt(tree, "/Rec/REC_UNCFILEPATH"), filePath("a.rec"));
        EXPECT_EQ(textAt(tree, "/Rec/REC_ZELVOFILEPATH"), QString());
    }
    const CFileAccess continued(name8("b.tmp").c_str(), "/Rec", nullptr, true, false, true, nullptr, nullptr);
    EXPECT_EQ(textAt(tree, "/Rec/REC_UNCFILEPATH"), filePath("b.rec"));
    EXPECT_FALSE(openForWriting("missing/c.tmp")->IsValidFile());
    EXPECT_EQ(textAt(tree, "/Rec/REC_UNCFILEPATH"), filePath("missing/c.rec")) << "also of one that cannot be made";
}

TEST_F(Lifecycle, AClientWithoutAnArchiveChangesNothing)
{
    Zelvo::ZelvoClient client;
    CFileAccess file(name8("a.tmp").c_str(), QString(), nullptr, true, false, false, nullptr, &client);
    ASSERT_TRUE(file.IsValidFile());
    EXPECT_EQ(file.GetZelvoErrorCode(), Zelvo::ZelvoError::None);
    write(file, 1, "data", 20);
    CHeaderData header = makeHeader({});
    file.CloseRecording(header, false);
    EXPECT_EQ(bytesOf("a.rec"), ReferenceRecording().record(1, "data", 20).close());
}

TEST_F(Lifecycle, TheAddressForOtherProgramsNamesNoGroup)
{
    const auto file = openForWriting("a.tmp");
    EXPECT_EQ(file->fullRecordingFilePath(), filePath("a.tmp") + "#zelvo:///ERROR/-1");
}

namespace {

class ThrowingObserver final : public IObserver {
public:
    explicit ThrowingObserver(bool standard) : m_standard(standard) {}
    void Update(void* /*subject*/, TChangeCode /*code*/) override
    {
        if (m_standard) {
            throw std::runtime_error("an observer failed");
        }
        throw 7;  // NOLINT(hicpp-exception-baseclass): observers may throw anything
    }

private:
    bool m_standard;
};

}  // namespace

TEST_F(Lifecycle, AnObserverThatThrowsWhileAFileIsOpenedLeavesAnInvalidFileAndATrace)
{
    for (const bool standard : {true, false}) {
        ThrowingObserver observer(standard);
        values::Tree tree;
        values::ValuePtr<values::Value<QString>> unc;
        unc.Attach("/Rec/REC_UNCFILEPATH");
        unc->AddObserver(&observer);
        const TraceLog log(ErrorHandler::RecordingTraces);
        const CFileAccess file(name8("a.tmp").c_str(), "/Rec", nullptr, true, false, false, nullptr, nullptr);
        EXPECT_FALSE(file.IsValidFile());
        ASSERT_FALSE(TraceLog::lines().empty());
        EXPECT_EQ(TraceLog::lines().front().text, QString("Unexpected exception in CFileAccess::OpenRecording: ") +
                                                      (standard ? "an observer failed" : "unknown exception"));
        unc->RemoveObserver(&observer);
    }
}
