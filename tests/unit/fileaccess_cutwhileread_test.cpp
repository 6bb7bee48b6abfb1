// A file that somebody cuts while it is read: what is gone is missing, and nothing else happens.
#include "fileaccess_fixture.h"

using namespace FileAccessTests;

namespace {

constexpr int Records = 60;
constexpr unsigned long long FirstTime = 1000;

/// Records of one size, each with a letter of its own.
class CutWhileRead : public FileAccessTest, public testing::WithParamInterface<std::size_t> {
protected:
    CutWhileRead()
    {
        const auto file = openForWriting(Name);
        for (int i = 0; i < Records; ++i) {
            write(*file, 7, dataAt(i), FirstTime + static_cast<unsigned long long>(i));
        }
        close(*file);
    }
    [[nodiscard]] static std::string dataAt(int i)
    {
        return std::string(GetParam(), static_cast<char>('A' + i));  // NOLINT(modernize-return-braced-init-list)
    }
    /// Cuts the file where so many of its records still are whole, and half of the next.
    void cutBehind(int records) const
    {
        const qint64 recordBytes = dataBytes() + QByteArray::number(dataBytes()).size() + 3;
        ASSERT_TRUE(QFile::resize(filePath(Name), 500 + records * recordBytes + recordBytes / 2));
    }
    /// Reads on from a record, and expects every one that comes to be what was written.
    static int readOn(CFileAccess& file, int next)
    {
        CVTCmdData record;
        for (; next < Records; ++next) {
            const bool more = file.readnext(record) != 0;
            if (dataOf(record) != dataAt(next)) {
                EXPECT_EQ(dataOf(record), dataAt(next).substr(0, record.strDataLen()));
                EXPECT_FALSE(more);
                break;
            }
        }
        EXPECT_EQ(file.readnext(record), 0U);
        return next;
    }
    [[nodiscard]] static qint64 dataBytes() { return static_cast<qint64>(GetParam()); }

    const QString Name = "cut.rec";
};

}  // namespace

TEST_P(CutWhileRead, BetweenTwoRecordsLeavesThoseThatAreWhole)
{
    const auto file = openForReading(Name);
    CVTCmdData record;
    ASSERT_EQ(file->readfirst(record), FirstTime + 1);
    cutBehind(20);
    const int whole = readOn(*file, 1);
    EXPECT_GE(whole, 20);  // and what was in memory already
    EXPECT_LT(whole, Records);
}

TEST_P(CutWhileRead, InFrontOfATimeThatIsAskedForNothingIsRead)
{
    const auto file = openForReading(Name);
    CVTCmdData record;
    ASSERT_EQ(file->readfirst(record), FirstTime + 1);
    cutBehind(0);
    EXPECT_EQ(file->read(record, FirstTime + Records - 1), 0U);
    EXPECT_EQ(file->readprev(record, FirstTime + 1), 0U);
}

TEST_P(CutWhileRead, TheTablesAreGoneWhenTheyAreReadAgain)
{
    const auto file = openForReading(Name);
    cutBehind(20);
    file->readTables();
    EXPECT_EQ(readOn(*file, 0), 20);
}

INSTANTIATE_TEST_SUITE_P(Sizes, CutWhileRead, testing::Values(2'000, 20'000, 300'000));
