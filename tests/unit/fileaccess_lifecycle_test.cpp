// Opening, closing, renaming and copying CFileAccess, and what an invalid or closed one answers.
#include <algorithm>

#include <QDir>

#include <values/tree.h>

#include "fileaccess_fixture.h"
#include "tracelog.h"

using namespace FileAccessTests;

namespace {

class Lifecycle : public FileAccessTest {
public:
    Lifecycle() = default;
    Lifecycle(const Lifecycle&) = delete;
    Lifecycle& operator=(const Lifecycle&) = delete;
    ~Lifecycle() override { CFileAccess::release(); }

protected:
    [[nodiscard]] std::string name8(const QString& name) const { return TestSupport::fileName8(filePath(name)); }

    /// Every operation once; none may throw, and all answer 0.
    static void expectAllOperationsToAnswerZero(CFileAccess& file)
    {
        CHeaderData header = makeHeader({});
        CVTTypesData types = makeTypes({{1, 2, "KEY", "/PATH"}});
        CVTCmdData record = makeRecord(3, "kept");
        EXPECT_EQ(file.write(types), 0U);
        EXPECT_EQ(file.write(record, 10, true), 0U);
        EXPECT_EQ(file.write(header), 0U);
        EXPECT_EQ(file.read(header), 0U);
        EXPECT_EQ(file.read(types), 0U);
        file.readTables();
        EXPECT_EQ(file.read(record), 0U);
        EXPECT_EQ(file.read(record, 10), 0U);
        EXPECT_EQ(file.readAndReturnTimeOfCurrentCmd(record), 0U);
        EXPECT_EQ(file.readfirst(record), 0U);
        EXPECT_EQ(file.readfirst(record, 3), 0U);
        EXPECT_EQ(file.readnext(record), 0U);
        EXPECT_EQ(file.readnext(record, 4), 0U);
        EXPECT_EQ(file.readprev(record, 10), 0U);
        EXPECT_EQ(file.fileSize(), 0);
        EXPECT_EQ(record.cmd(), 3);
        EXPECT_EQ(dataOf(record), "kept");
        EXPECT_EQ(types.get_vector().size(), 1U);
    }
};

QString textAt(const values::Tree& tree, const QString& path)
{
    const auto* value = dynamic_cast<const values::Value<QString>*>(tree.Find(path));
    return value == nullptr ? QStringLiteral("no such value") : value->GetValue();
}

}  // namespace

TEST_F(Lifecycle, ANewFileHoldsTheReservedHeaderArea)
{
    const auto file = openForWriting(QStringLiteral("a.tmp"));
    EXPECT_TRUE(file->IsValidFile());
    EXPECT_EQ(file->fileSize(), 500);
    close(*file);
    EXPECT_EQ(bytesOf(QStringLiteral("a.rec")).size(), 500U);
}

TEST_F(Lifecycle, AFileThatWasNeverClosedKeepsItsNameAndIsOfNoKnownFormat)
{
    auto file = openForWriting(QStringLiteral("a.tmp"));
    write(*file, 1, "data", 10);
    file.reset();
    EXPECT_EQ(bytesOf(QStringLiteral("a.tmp")), TestSupport::headerArea() + TestSupport::recordBytes(1, "data"));
    EXPECT_FALSE(openForReading(QStringLiteral("a.tmp"))->IsValidFile());
}

TEST_F(Lifecycle, OpeningForWritingTruncatesAnExistingFile)
{
    TestSupport::writeFile(filePath(QStringLiteral("a.rec")), std::string(5'000, 'x'));
    const auto file = openForWriting(QStringLiteral("a.rec"));
    EXPECT_EQ(file->fileSize(), 500);
    close(*file);
    EXPECT_EQ(bytesOf(QStringLiteral("a.rec")).size(), 500U);
}

TEST_F(Lifecycle, TheSuffixTmpBecomesRecAtClose)
{
    const auto file = openForWriting(QStringLiteral("a.tmp"));
    EXPECT_TRUE(exists(QStringLiteral("a.tmp")));
    close(*file);
    EXPECT_FALSE(exists(QStringLiteral("a.tmp")));
    EXPECT_TRUE(exists(QStringLiteral("a.rec")));
    EXPECT_EQ(file->path(), name8(QStringLiteral("a.tmp")));
}

TEST_F(Lifecycle, APathWithAnotherSuffixIsNotRenamedAtClose)
{
    for (const char* name : {"a.dat", "tmp", "a.tmp.dat", "a.tmpx"}) {
        const QString file = QString::fromLatin1(name);
        close(*openForWriting(file));
        EXPECT_TRUE(exists(file)) << name;
    }
    EXPECT_FALSE(exists(QStringLiteral("a.rec")));
}

TEST_F(Lifecycle, TheBaseNameEndsAtTheFirstDot)
{
    close(*openForWriting(QStringLiteral("a.b.tmp")));
    EXPECT_TRUE(exists(QStringLiteral("a.rec")));
    EXPECT_FALSE(exists(QStringLiteral("a.b.tmp")));
    EXPECT_FALSE(exists(QStringLiteral("a.b.rec")));
}

TEST_F(Lifecycle, TheRenamedFileStaysInItsDirectory)
{
    ASSERT_TRUE(QDir(filePath({})).mkdir(QStringLiteral("sub.dir")));
    close(*openForWriting(QStringLiteral("sub.dir/a.tmp")));
    EXPECT_TRUE(exists(QStringLiteral("sub.dir/a.rec")));
}

TEST_F(Lifecycle, TheRenameNeverReplacesAnExistingFile)
{
    TestSupport::writeFile(filePath(QStringLiteral("a.rec")), "an earlier recording");
    const auto file = openForWriting(QStringLiteral("a.tmp"));
    write(*file, 1, "data", 10);
    close(*file);
    EXPECT_EQ(bytesOf(QStringLiteral("a.rec")), "an earlier recording");
    EXPECT_EQ(bytesOf(QStringLiteral("a.tmp")), ReferenceRecording().record(1, "data", 10).close());
}

TEST_F(Lifecycle, TheNamePartIsPutBehindThePathAsItStands)
{
    const CFileAccess file(name8(QStringLiteral("begin_")).c_str(), QString(), "end.dat", true, false, false, nullptr,
                           nullptr);
    EXPECT_TRUE(file.IsValidFile());
    EXPECT_EQ(file.path(), name8(QStringLiteral("begin_end.dat")));
    EXPECT_TRUE(exists(QStringLiteral("begin_end.dat")));
}

TEST_F(Lifecycle, NamesBeyondAsciiAreThoseOfThePlatform)
{
    const QString stem = QStringLiteral(u"N\u00fcrnberg S\u00fcd");
    const auto file = openForWriting(stem + QStringLiteral(".tmp"));
    ASSERT_TRUE(file->IsValidFile());
    EXPECT_TRUE(exists(stem + QStringLiteral(".tmp")));
    close(*file);
    EXPECT_TRUE(exists(stem + QStringLiteral(".rec")));
    EXPECT_TRUE(openForReading(stem + QStringLiteral(".rec"))->IsValidFile());
}

TEST_F(Lifecycle, AFileThatCannotBeCreatedIsInvalidAndEveryOperationDoesNothing)
{
    const auto file = openForWriting(QStringLiteral("missing/a.tmp"));
    EXPECT_FALSE(file->IsValidFile());
    CVTCmdData record = makeRecord(1, "x");
    CHeaderData header = makeHeader({});
    EXPECT_EQ(file->write(record, 10, true), 0U);
    EXPECT_EQ(file->write(header), 0U);
    EXPECT_EQ(file->readfirst(record), 0U);
    EXPECT_NO_THROW(close(*file));
    EXPECT_FALSE(exists(QStringLiteral("missing")));
}

TEST_F(Lifecycle, AFileThatIsMissingIsInvalidForReading)
{
    const auto file = openForReading(QStringLiteral("missing.rec"));
    EXPECT_FALSE(file->IsValidFile());
    expectAllOperationsToAnswerZero(*file);
    EXPECT_NO_THROW(close(*file));
    EXPECT_FALSE(exists(QStringLiteral("missing.rec")));
}

TEST_F(Lifecycle, AnEmptyFileIsInvalidForReading)
{
    EXPECT_FALSE(openBytes({})->IsValidFile());
}

TEST_F(Lifecycle, AMajorVersionBelowTwoIsInvalidForReading)
{
    HeaderFields header;
    for (const auto version : std::vector<std::int16_t>{1, 0, -2}) {
        header.majorVersion = version;
        EXPECT_FALSE(openBytes(ReferenceRecording().close(header))->IsValidFile()) << version;
    }
    header.majorVersion = 3;
    EXPECT_TRUE(openBytes(ReferenceRecording().close(header))->IsValidFile());
}

TEST_F(Lifecycle, AFileThatCannotBeOpenedIsTracedOnlyWhereTheMaskAsksForIt)
{
    const std::string source = R"(devicecontrol\recording2\fileaccess)";
    const QString message = QStringLiteral("CFileAccess: Could not open recording file, probably old format!");
    const auto count = [&] {
        return std::count_if(TraceLog::traces().begin(), TraceLog::traces().end(),
                             [&](const Trace& t) { return t.source == source && t.message == message; });
    };
    HeaderFields old;
    old.majorVersion = 1;
    const std::string oldFile = ReferenceRecording().close(old);
    {
        const TraceLog log(ErrorHandler::RecordingTraces);
        EXPECT_FALSE(openBytes(oldFile)->IsValidFile());
        EXPECT_EQ(count(), 1);
        EXPECT_FALSE(openForWriting(QStringLiteral("missing/a.tmp"))->IsValidFile());
        EXPECT_EQ(count(), 2);
        EXPECT_FALSE(openForReading(QStringLiteral("missing.rec"))->IsValidFile());
        EXPECT_EQ(count(), 3);
        EXPECT_TRUE(openForWriting(QStringLiteral("a.tmp"))->IsValidFile());
        EXPECT_EQ(count(), 3);
    }
    const TraceLog log(~ErrorHandler::RecordingTraces);
    EXPECT_FALSE(openBytes(oldFile)->IsValidFile());
    EXPECT_EQ(count(), 0);
}

TEST_F(Lifecycle, WhatCouldNotBeOpenedIsNotRenamedAtClose)
{
    ASSERT_TRUE(QDir(filePath({})).mkdir(QStringLiteral("a.tmp")));
    const auto file = openForWriting(QStringLiteral("a.tmp"));
    EXPECT_FALSE(file->IsValidFile());
    close(*file);
    EXPECT_TRUE(exists(QStringLiteral("a.tmp")));
    EXPECT_FALSE(exists(QStringLiteral("a.rec")));
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
    const auto file = openForWriting(QStringLiteral("a.tmp"));
    write(*file, 1, "data", 10);
    CVTCmdData record = makeRecord(7, "kept");
    CHeaderData header;
    CVTTypesData types;
    file->readTables();
    EXPECT_EQ(file->read(header), 0U);
    EXPECT_EQ(file->read(types), 0U);
    EXPECT_EQ(file->read(record), 0U);
    EXPECT_EQ(file->read(record, 10), 0U);
    EXPECT_EQ(file->readAndReturnTimeOfCurrentCmd(record), 0U);
    EXPECT_EQ(file->readfirst(record), 0U);
    EXPECT_EQ(file->readfirst(record, 0), 0U);
    EXPECT_EQ(file->readnext(record), 0U);
    EXPECT_EQ(file->readnext(record, 1), 0U);
    EXPECT_EQ(file->readprev(record, 10), 0U);
    EXPECT_EQ(dataOf(record), "kept");
    close(*file);
    EXPECT_EQ(bytesOf(QStringLiteral("a.rec")), ReferenceRecording().record(1, "data", 10).close());
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
    EXPECT_EQ(bytesOf(QStringLiteral("made.rec")), bytes);
}

TEST_F(Lifecycle, AClosedFileAnswersZeroToEveryOperationAndStaysAsItIs)
{
    const auto file = openForWriting(QStringLiteral("a.tmp"));
    write(*file, 1, "data", 10);
    close(*file);
    const std::string bytes = bytesOf(QStringLiteral("a.rec"));
    EXPECT_TRUE(file->IsValidFile());
    expectAllOperationsToAnswerZero(*file);
    EXPECT_NO_THROW(close(*file));
    EXPECT_EQ(bytesOf(QStringLiteral("a.rec")), bytes);
}

TEST_F(Lifecycle, ClosingAFileOpenedForReadingEndsTheReading)
{
    const auto file = openBytes(ReferenceRecording().record(1, "a", 10).record(2, "b", 20).close());
    CVTCmdData record;
    EXPECT_EQ(file->readfirst(record), 20U);
    close(*file);
    expectAllOperationsToAnswerZero(*file);
    EXPECT_TRUE(exists(QStringLiteral("made.rec")));
}

TEST_F(Lifecycle, AFileForReadingIsRenamedByNothing)
{
    TestSupport::writeFile(filePath(QStringLiteral("a.tmp")), ReferenceRecording().record(1, "a", 10).close());
    close(*openForReading(QStringLiteral("a.tmp")));
    EXPECT_TRUE(exists(QStringLiteral("a.tmp")));
}

#ifdef Q_OS_LINUX
TEST_F(Lifecycle, AFailedWriteStopsAllFurtherWritingAndNothingThrows)
{
    if (!QFileInfo::exists(QStringLiteral("/dev/full"))) {
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

TEST_F(Lifecycle, TheInstanceIsTheFirstOneWhateverIsAskedForLater)
{
    EXPECT_EQ(CFileAccess::instance(), nullptr);
    CFileAccess* first = CFileAccess::instance(name8(QStringLiteral("a.tmp")).c_str(), QString(), nullptr, true, false);
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(first->IsValidFile());
    EXPECT_EQ(CFileAccess::instance(name8(QStringLiteral("b.tmp")).c_str(), QString(), nullptr, true, false), first);
    EXPECT_EQ(CFileAccess::instance(), first);
    EXPECT_EQ(first->path(), name8(QStringLiteral("a.tmp")));
    EXPECT_FALSE(exists(QStringLiteral("b.tmp")));
}

TEST_F(Lifecycle, TheInstanceJoinsItsPathAndName)
{
    const CFileAccess* file =
        CFileAccess::instance(name8(QStringLiteral("c_")).c_str(), QString(), "d.tmp", true, false);
    EXPECT_EQ(file->path(), name8(QStringLiteral("c_d.tmp")));
}

TEST_F(Lifecycle, ReleaseClosesTheInstanceSoThatAnotherCanBeMade)
{
    CFileAccess::instance(name8(QStringLiteral("a.tmp")).c_str(), QString(), nullptr, true, false);
    CFileAccess::release();
    EXPECT_EQ(CFileAccess::instance(), nullptr);
    EXPECT_EQ(bytesOf(QStringLiteral("a.tmp")), TestSupport::headerArea());
    const CFileAccess* next =
        CFileAccess::instance(name8(QStringLiteral("b.tmp")).c_str(), QString(), nullptr, true, false);
    EXPECT_EQ(next->path(), name8(QStringLiteral("b.tmp")));
}

TEST_F(Lifecycle, ReleaseWithoutAnInstanceDoesNothing)
{
    CFileAccess::release();
    CFileAccess::release();
    EXPECT_EQ(CFileAccess::instance(), nullptr);
}

TEST_F(Lifecycle, CopiesWriteToOneStreamAndOneIndexButCountTheirOwnTimes)
{
    const auto original = openForWriting(QStringLiteral("a.tmp"));
    CFileAccess copy(*original);
    write(*original, 1, "first", 100);
    write(copy, 2, "second", 50);  // the copy's last time is still 0
    write(copy, 3, "third", 100);  // but the index knows 100
    close(*original);

    TestSupport::ByteBuilder expected(TestSupport::headerArea());
    const std::int32_t first = expected.position();
    const std::int32_t second = expected.raw(TestSupport::recordBytes(1, "first")).position();
    const std::int32_t third = expected.raw(TestSupport::recordBytes(2, "second")).position();
    expected.raw(TestSupport::recordBytes(3, "third"));
    HeaderFields header;
    header.firstRecord = first;
    header.timeTable = expected.position();
    expected.time(50).number(second).time(100).number(first).time(101).number(third);
    expected.overwrite(0, header.bytes());
    EXPECT_EQ(bytesOf(QStringLiteral("a.rec")), expected.bytes());
}

TEST_F(Lifecycle, ARecordMovesPastEveryTimeThatIsTaken)
{
    const auto original = openForWriting(QStringLiteral("a.tmp"));
    CFileAccess copy(*original);
    for (unsigned long long time = 98; time <= 100; ++time) {
        write(*original, 1, "first", time);
    }
    write(copy, 2, "moved", 98);
    close(*original);
    CFileAccess reader(name8(QStringLiteral("a.rec")).c_str(), QString(), nullptr, false, true, false, nullptr,
                       nullptr);
    CVTCmdData record;
    EXPECT_EQ(reader.read(record, 101ULL), 0U);
    EXPECT_STREQ(record.str(), "moved");
}

TEST_F(Lifecycle, ACopysPositionsAreItsOwn)
{
    const auto original = openForWriting(QStringLiteral("a.tmp"));
    CFileAccess copy(*original);
    write(*original, 1, "first", 100);
    write(copy, 2, "second", 200);
    close(copy);  // its first record is the second of the file
    const auto file = openForReading(QStringLiteral("a.rec"));
    CVTCmdData record;
    EXPECT_EQ(file->readfirst(record), 0U);
    EXPECT_EQ(dataOf(record), "second");
    EXPECT_EQ(file->readprev(record, 200), 100U);
    EXPECT_EQ(dataOf(record), "first");
}

TEST_F(Lifecycle, ClosingACopyClosesAll)
{
    const auto original = openForWriting(QStringLiteral("a.tmp"));
    CFileAccess copy(*original);
    write(*original, 1, "first", 100);
    close(*original);
    const std::string bytes = bytesOf(QStringLiteral("a.rec"));
    expectAllOperationsToAnswerZero(copy);
    EXPECT_NO_THROW(close(copy));
    EXPECT_EQ(bytesOf(QStringLiteral("a.rec")), bytes);
}

TEST_F(Lifecycle, CopiesReadFromOnePosition)
{
    const auto original =
        openBytes(ReferenceRecording().record(1, "a", 10).record(2, "b", 20).record(3, "c", 30).close());
    CFileAccess copy(*original);
    CVTCmdData record;
    EXPECT_EQ(original->readnext(record), 20U);
    EXPECT_EQ(copy.readnext(record), 30U);
    EXPECT_EQ(dataOf(record), "b");
    EXPECT_EQ(original->readnext(record), 0U);
    EXPECT_EQ(dataOf(record), "c");
}

TEST_F(Lifecycle, ACopyOutlivesItsOriginal)
{
    auto writer = openForWriting(QStringLiteral("a.tmp"));
    CFileAccess writerCopy(*writer);
    writer.reset();
    write(writerCopy, 1, "data", 10);
    close(writerCopy);
    EXPECT_EQ(bytesOf(QStringLiteral("a.rec")), ReferenceRecording().record(1, "data", 10).close());

    auto reader = openForReading(QStringLiteral("a.rec"));
    CFileAccess readerCopy(*reader);
    reader.reset();
    CVTCmdData record;
    EXPECT_EQ(readerCopy.readfirst(record), 0U);
    EXPECT_EQ(dataOf(record), "data");
}

TEST_F(Lifecycle, AssignmentSharesTheSourceAndLetsGoOfTheTargetsOwn)
{
    const auto source = openForWriting(QStringLiteral("a.tmp"));
    const auto target = openForWriting(QStringLiteral("b.tmp"));
    write(*target, 9, "lost", 10);
    *target = *source;
    EXPECT_EQ(target->path(), name8(QStringLiteral("a.tmp")));
    EXPECT_EQ(bytesOf(QStringLiteral("b.tmp")), TestSupport::headerArea() + TestSupport::recordBytes(9, "lost"));
    write(*target, 1, "data", 20);
    close(*target);
    EXPECT_EQ(bytesOf(QStringLiteral("a.rec")), ReferenceRecording().record(1, "data", 20).close());
    EXPECT_EQ(source->fileSize(), 0);
}

TEST_F(Lifecycle, AnObjectAssignedToItselfGoesOn)
{
    const auto file = openForWriting(QStringLiteral("a.tmp"));
    const CFileAccess& same = *file;
    *file = same;
    write(*file, 1, "data", 20);
    close(*file);
    EXPECT_EQ(bytesOf(QStringLiteral("a.rec")), ReferenceRecording().record(1, "data", 20).close());
}

TEST_F(Lifecycle, WithoutAnArchiveTheFinalNameIsShownInTheTree)
{
    values::Tree tree;
    const auto file = openForWriting(QStringLiteral("a.b.tmp"));
    EXPECT_EQ(textAt(tree, QStringLiteral("/Rec/REC_UNCFILEPATH")), filePath(QStringLiteral("a.rec")));
    EXPECT_EQ(textAt(tree, QStringLiteral("/Rec/REC_ZELVOFILEPATH")), QString());
}

TEST_F(Lifecycle, TheFinalNameShownEndsInRecWhateverTheSuffixOfTheFile)
{
    values::Tree tree;
    const auto file = openForWriting(QStringLiteral("a.dat"));
    EXPECT_EQ(textAt(tree, QStringLiteral("/Rec/REC_UNCFILEPATH")), filePath(QStringLiteral("a.rec")));
}

TEST_F(Lifecycle, AFileThatContinuesARecordingShowsItsFinalNameToo)
{
    values::Tree tree;
    const auto first = openForWriting(QStringLiteral("a.tmp"));
    const CFileAccess second(name8(QStringLiteral("b.tmp")).c_str(), QStringLiteral("/Rec"), nullptr, true, false, true,
                             nullptr, nullptr);
    EXPECT_EQ(textAt(tree, QStringLiteral("/Rec/REC_UNCFILEPATH")), filePath(QStringLiteral("b.rec")));
}

TEST_F(Lifecycle, OpeningForReadingShowsNoName)
{
    values::Tree tree;
    const auto file = openBytes(ReferenceRecording().close());
    EXPECT_EQ(textAt(tree, QStringLiteral("/Rec/REC_UNCFILEPATH")), QString());
}

TEST_F(Lifecycle, AClientWithoutAnArchiveChangesNothing)
{
    Zelvo::ZelvoClient client;
    CFileAccess file(name8(QStringLiteral("a.tmp")).c_str(), QString(), nullptr, true, false, false, nullptr, &client);
    ASSERT_TRUE(file.IsValidFile());
    EXPECT_EQ(file.GetZelvoErrorCode(), Zelvo::ZelvoError::None);
    write(file, 1, "data", 20);
    CHeaderData header = makeHeader({});
    file.CloseRecording(header, false);
    EXPECT_EQ(bytesOf(QStringLiteral("a.rec")), ReferenceRecording().record(1, "data", 20).close());
}

TEST_F(Lifecycle, TheAddressForOtherProgramsNamesNoGroup)
{
    const auto file = openForWriting(QStringLiteral("a.tmp"));
    EXPECT_EQ(file->fullRecordingFilePath(), filePath(QStringLiteral("a.tmp")) + QStringLiteral("#zelvo:///ERROR/-1"));
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
        unc.Attach(QStringLiteral("/Rec/REC_UNCFILEPATH"));
        unc->AddObserver(&observer);
        const TraceLog log(ErrorHandler::RecordingTraces);
        const CFileAccess file(name8(QStringLiteral("a.tmp")).c_str(), QStringLiteral("/Rec"), nullptr, true, false,
                               false, nullptr, nullptr);
        EXPECT_FALSE(file.IsValidFile());
        ASSERT_FALSE(TraceLog::traces().empty());
        EXPECT_EQ(TraceLog::traces().front().message,
                  QStringLiteral("Unexpected exception in CFileAccess::OpenRecording: ") +
                      (standard ? QStringLiteral("an observer failed") : QStringLiteral("unknown exception")));
        unc->RemoveObserver(&observer);
    }
}
