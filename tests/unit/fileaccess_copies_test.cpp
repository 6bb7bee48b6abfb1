// The process-wide object, and copies that share streams and count for themselves.
#include "fileaccess_fixture.h"

using namespace FileAccessTests;

namespace {

class Copies : public FileAccessTest {
public:
    Copies() = default;
    ~Copies() override { CFileAccess::release(); }
};

}  // namespace

TEST_F(Copies, TheInstanceIsTheFirstOneWhateverIsAskedForUntilItsReleaseClosesIt)
{
    CFileAccess::release();
    EXPECT_EQ(CFileAccess::instance(), nullptr);
    CFileAccess* first = CFileAccess::instance(name8("a.tmp").c_str(), QString(), nullptr, true, false);
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(first->IsValidFile());
    EXPECT_EQ(CFileAccess::instance(name8("b.tmp").c_str(), QString(), nullptr, true, false), first);
    EXPECT_EQ(CFileAccess::instance(), first);
    EXPECT_EQ(first->path(), name8("a.tmp"));
    EXPECT_FALSE(exists("b.tmp"));
    CFileAccess::release();
    CFileAccess::release();
    EXPECT_EQ(CFileAccess::instance(), nullptr);
    EXPECT_EQ(bytesOf("a.tmp"), TestSupport::headerArea());
    const CFileAccess* next = CFileAccess::instance(name8("c_").c_str(), QString(), "d.tmp", true, false);
    EXPECT_EQ(next->path(), name8("c_d.tmp")) << "path and name are joined";
}

TEST_F(Copies, CopiesWriteToOneStreamAndOneIndexButCountTheirOwnTimes)
{
    const auto original = openForWriting("a.tmp");
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
    HeaderFields header{.firstRecord = first, .timeTable = expected.position()};
    expected.time(50).number(second).time(100).number(first).time(101).number(third);
    expected.overwrite(0, header.bytes());
    EXPECT_EQ(bytesOf("a.rec"), expected.bytes());
}

TEST_F(Copies, ARecordMovesPastEveryTimeThatIsTaken)
{
    const auto original = openForWriting("a.tmp");
    CFileAccess copy(*original);
    for (unsigned long long time = 98; time <= 100; ++time) {
        write(*original, 1, "first", time);
    }
    write(copy, 2, "moved", 98);
    close(*original);
    CFileAccess reader(name8("a.rec").c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
    CVTCmdData record;
    EXPECT_EQ(reader.read(record, 101ULL), 0U);
    EXPECT_STREQ(record.str(), "moved");
}

TEST_F(Copies, ACopysPositionsAreItsOwn)
{
    const auto original = openForWriting("a.tmp");
    CFileAccess copy(*original);
    write(*original, 1, "first", 100);
    write(copy, 2, "second", 200);
    close(copy);  // its first record is the second of the file
    const auto file = openForReading("a.rec");
    CVTCmdData record;
    EXPECT_EQ(file->readfirst(record), 0U);
    EXPECT_EQ(dataOf(record), "second");
    EXPECT_EQ(file->readprev(record, 200), 100U);
    EXPECT_EQ(dataOf(record), "first");
}

TEST_F(Copies, ClosingACopyClosesAll)
{
    const auto original = openForWriting("a.tmp");
    CFileAccess copy(*original);
    write(*original, 1, "first", 100);
    close(*original);
    const std::string bytes = bytesOf("a.rec");
    expectAllOperationsToAnswerZero(copy);
    EXPECT_NO_THROW(close(copy));
    EXPECT_EQ(bytesOf("a.rec"), bytes);
}

TEST_F(Copies, CopiesReadFromOnePosition)
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

TEST_F(Copies, ACopyOutlivesItsOriginal)
{
    auto writer = openForWriting("a.tmp");
    CFileAccess writerCopy(*writer);
    writer.reset();
    write(writerCopy, 1, "data", 10);
    close(writerCopy);
    EXPECT_EQ(bytesOf("a.rec"), ReferenceRecording().record(1, "data", 10).close());

    auto reader = openForReading("a.rec");
    CFileAccess readerCopy(*reader);
    reader.reset();
    CVTCmdData record;
    EXPECT_EQ(readerCopy.readfirst(record), 0U);
    EXPECT_EQ(dataOf(record), "data");
}

TEST_F(Copies, AssignmentSharesTheSourceAndLetsGoOfTheTargetsOwn)
{
    const auto source = openForWriting("a.tmp");
    const auto target = openForWriting("b.tmp");
    write(*target, 9, "lost", 10);
    *target = *source;
    EXPECT_EQ(target->path(), name8("a.tmp"));
    EXPECT_EQ(bytesOf("b.tmp"), TestSupport::headerArea() + TestSupport::recordBytes(9, "lost"));
    write(*target, 1, "data", 20);
    close(*target);
    EXPECT_EQ(bytesOf("a.rec"), ReferenceRecording().record(1, "data", 20).close());
    EXPECT_EQ(source->fileSize(), 0);
}

TEST_F(Copies, AnObjectAssignedToItselfGoesOn)
{
    const auto file = openForWriting("a.tmp");
    const CFileAccess& same = *file;
    *file = same;
    write(*file, 1, "data", 20);
    close(*file);
    EXPECT_EQ(bytesOf("a.rec"), ReferenceRecording().record(1, "data", 20).close());
}
