// Writes that fail half-way, and files that may not be written. Limits of the process are set in a child of its own.
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <csignal>

#include "replay_fixture.h"
#include "support/childprocess.h"

namespace {

using namespace ReplayTests;

/// Runs in a child process. @return whether the child said that all is well
bool inChild(const std::function<bool()>& body)
{
    return TestSupport::endOf([&] { return body() ? 0 : 1; }) == 0;
}

/// No write reaches past so many bytes of a file.
bool limitFileSize(rlim_t bytes)
{
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = bytes;
    return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

bool readsThreeLevels(CFileAccess& file)
{
    CVTCmdData record;
    return file.readfirst(record) == 1500 && file.readnext(record) == 3000 && dataOf(record) == "-30" &&
           file.readnext(record) == 0 && dataOf(record) == "-29.25";
}

class FailingWritesTest : public ReplayTest, public testing::WithParamInterface<std::size_t> {
protected:
    static FinishedFile marked()
    {
        FinishedFile file(threeLevels({10, 1500}).close());
        file.storeBookmarks({{10, "one"}, {20, "two"}});
        return file;
    }
    void expectRecordsKept() const
    {
        const auto bookmarks = static_cast<std::size_t>(m_file.header().bookmarkTable);
        EXPECT_EQ(fileBytes().substr(0, bookmarks), m_file.bytes().substr(0, bookmarks));
        expectThreeLevels(*reopen());
        EXPECT_EQ(rangesOf(*reopen()), (Times{10, 1500}));
    }

    FinishedFile m_file = marked();
};

}  // namespace

TEST_P(FailingWritesTest, WhatIsStoredLeavesTheRecordsReadable)
{
    const auto storeBookmarks = [](CFileAccess& file) {
        file.addBookmark(30, std::string(200, 'x'));
        file.writeBookmarks();
        return file.bookmarksAvailable();
    };
    const auto rebuildRanges = [](CFileAccess& file) {
        file.rebuildChannelRangeDef();
        return true;
    };
    const auto clearRanges = [](CFileAccess& file) {
        file.clearChannelRangeDef();
        return true;
    };
    struct Way {
        std::function<bool(CFileAccess&)> store;
        bool keepsRanges;
    };
    for (const auto& [store, keepsRanges] :
         {Way{storeBookmarks, true}, Way{rebuildRanges, true}, Way{clearRanges, false}}) {
        auto file = open(m_file);
        EXPECT_TRUE(inChild(
            [&, &store = store] { return limitFileSize(GetParam()) && store(*file) && readsThreeLevels(*file); }));
        expectThreeLevels(*reopen());
        if (keepsRanges) {
            expectRecordsKept();
        }
    }
}

TEST_P(FailingWritesTest, ASecondStoringWithRoomAgainIsComplete)
{
    auto file = open(m_file);
    EXPECT_TRUE(inChild([&] {
        file->addBookmark(30, std::string(200, 'x'));
        if (!limitFileSize(GetParam())) {
            return false;
        }
        file->writeBookmarks();
        if (!limitFileSize(RLIM_INFINITY)) {
            return false;
        }
        file.reset();  // the change was not stored yet
        return true;
    }));
    m_file.storeBookmarks({{10, "one"}, {20, "two"}, {30, std::string(200, 'x')}});
    EXPECT_EQ(fileBytes(), m_file.bytes());
}

TEST_P(FailingWritesTest, AFirstTableOfRangesThatIsNotStoredIsNotThere)
{
    auto file = open(FinishedFile(threeLevels().close()));
    EXPECT_TRUE(inChild([&] {
        file->addChannelRangeDef(1500);
        if (!limitFileSize(std::min<rlim_t>(GetParam(), static_cast<rlim_t>(fileBytes().size())))) {
            return false;
        }
        file->rebuildChannelRangeDef();
        return !file->channelRangeDefAvailable() && readsThreeLevels(*file);
    }));
}

// Within the header record and its area, the table's begin, the file's end, and after it.
INSTANTIATE_TEST_SUITE_P(Limits, FailingWritesTest, testing::Values(0, 30, 90, 300, 499, 500, 640, 660, 680, 700, 750));

namespace {

class FilesNotToBeWrittenTest : public ReplayTest {
protected:
    /// Runs as a user who may not write the file (root may write any).
    bool withoutPermission(const std::function<bool()>& body) const
    {
        constexpr uid_t Nobody = 65'534;
        const std::string path = TestSupport::fileName8(filePath(Name));
        const std::string folder = TestSupport::fileName8(QFileInfo(filePath(Name)).path());
        return chmod(path.c_str(), 0444) == 0 && chmod(folder.c_str(), 0755) == 0 &&
               inChild([&] { return (geteuid() != 0 || seteuid(Nobody) == 0) && body(); });
    }

    FinishedFile m_file{threeLevels({10}).close()};
};

}  // namespace

TEST_F(FilesNotToBeWrittenTest, StayAsTheyAreAndCanStillBeRead)
{
    auto file = open(m_file);
    EXPECT_TRUE(withoutPermission([&] {
        file->addBookmark(10, "a");
        file->writeBookmarks();
        file->rebuildChannelRangeDef();
        file->clearChannelRangeDef();
        return readsThreeLevels(*file) && rangesOf(*file).empty();
    }));
    EXPECT_EQ(fileBytes(), m_file.bytes());
}
