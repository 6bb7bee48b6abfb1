// What the operating system's room promises of names, files and locks, on every system.
#include <filesystem>

#include <system/lockfile.h>
#include <system/nativefile.h>

#include "support/testing.h"

namespace SystemTests {
namespace {

namespace fs = std::filesystem;
using System::Access;
using System::ErrorKind;
using System::LockMode;
using System::NameKind;
using System::NativeFile;

class SystemFiles : public testing::Test {
protected:
    [[nodiscard]] fs::path path(const std::string& name) const
    {
        return fs::path(m_folder.path().toStdString()) / name;
    }
    [[nodiscard]] fs::path holding(const std::string& name, const std::string& text) const
    {
        std::ofstream(path(name), std::ios::binary) << text;
        return path(name);
    }
    static std::string textOf(const fs::path& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    static NameKind kindAt(const fs::path& path)
    {
        NameKind kind = NameKind::Other;
        EXPECT_EQ(System::lookAt(path, kind), 0);
        return kind;
    }
    /// False where this system or user cannot make one.
    [[nodiscard]] bool link(const fs::path& to, const std::string& name) const
    {
        std::error_code error;
        fs::create_symlink(to, path(name), error);
        return !error;
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(SystemFiles, ANameThatIsTakenIsNeverReplacedByRenaming)
{
    const fs::path from = holding("from", "new");
    const fs::path taken = holding("taken", "old");
    fs::create_directory(path("folder"));
    EXPECT_EQ(System::renameToNew(from, taken), System::NameTaken);
    EXPECT_NE(System::renameToNew(from, path("folder")), 0);
    if (link(path("nowhere"), "link")) {
        EXPECT_EQ(System::renameToNew(from, path("link")), System::NameTaken);
    }
    EXPECT_EQ(textOf(taken), "old");
    EXPECT_EQ(System::renameToNew(from, path("free")), 0);
    EXPECT_EQ(textOf(path("free")), "new");
    EXPECT_EQ(kindAt(from), NameKind::Missing);
    EXPECT_EQ(System::kindOf(System::renameToNew(from, path("other"))), ErrorKind::Missing);
    EXPECT_EQ(System::renameReplacing(path("free"), taken), 0);
    EXPECT_EQ(textOf(taken), "new");
    EXPECT_EQ(System::fsyncDirectory(path("")), 0);
}

TEST_F(SystemFiles, ALinkIsLookedAtItselfUnlessItIsAskedFor)
{
    const fs::path file = holding("file", "text");
    if (!link(file, "link")) {
        GTEST_SKIP() << "no links here";
    }
    System::FileIdentity identity;
    NativeFile opened;
    EXPECT_EQ(kindAt(path("link")), NameKind::Other);
    EXPECT_EQ(System::kindOf(System::identityOf(path("link"), identity)), ErrorKind::NotAFile);
    EXPECT_EQ(System::kindOf(opened.open(path("link"), Access::ReadItself)), ErrorKind::NotAFile);
    EXPECT_EQ(opened.open(path("link"), Access::New), System::NameTaken);
    ASSERT_EQ(opened.open(path("link"), Access::Read), 0);
    EXPECT_FALSE(opened.isAt(path("link")));
    EXPECT_TRUE(opened.isAt(file));
    EXPECT_TRUE(opened.isReachedBy(path("link")));
}

TEST_F(SystemFiles, AFileIsKnownAgainUnderAnotherNameAndAnotherUnderItsOwnIsNot)
{
    const fs::path first = holding("first", "text");
    System::FileIdentity before;
    System::FileIdentity after;
    ASSERT_EQ(System::identityOf(first, before), 0);
    EXPECT_EQ(before.bytes, 4);
    ASSERT_EQ(System::renameToNew(first, path("second")), 0);
    ASSERT_EQ(System::identityOf(path("second"), after), 0);
    EXPECT_EQ(before, after);
    NativeFile opened;
    ASSERT_EQ(opened.open(path("second"), Access::ReadItself), 0);
    ASSERT_EQ(opened.identity(after), 0);
    EXPECT_EQ(before, after);
    ASSERT_EQ(System::identityOf(holding("first", "text"), after), 0);
    EXPECT_FALSE(before.isSameFile(after));
    EXPECT_EQ(System::kindOf(System::identityOf(path(""), after)), ErrorKind::NotAFile);
    EXPECT_EQ(System::kindOf(System::identityOf(path("missing"), after)), ErrorKind::Missing);
}

TEST_F(SystemFiles, AFolderIsMadeOnceAndWhatStandsThereStays)
{
    constexpr System::FileMode Mode = 0750;
    EXPECT_EQ(System::makeDirectory(path("folder"), Mode), 0);
    EXPECT_EQ(kindAt(path("folder")), NameKind::Directory);
    EXPECT_EQ(System::makeDirectory(path("folder"), Mode), System::NameTaken);
    EXPECT_EQ(System::makeDirectory(holding("file", "text"), Mode), System::NameTaken);
    EXPECT_EQ(System::kindOf(System::makeDirectory(path("missing/folder"), Mode)), ErrorKind::Missing);
}

TEST_F(SystemFiles, BytesAreReadWhereTheyWereWrittenAndNoneBehindTheEnd)
{
    NativeFile file;
    std::size_t count = 0;
    ASSERT_EQ(file.open(path("file"), Access::New), 0);
    ASSERT_EQ(file.writeAt(2, "abc", 3, count), 0);
    EXPECT_EQ(count, 3U);
    file.forgetCached();
    std::string read(9, '-');
    ASSERT_EQ(file.readAt(1, read.data(), read.size(), count), 0);
    EXPECT_EQ(read.substr(0, count), std::string("\0abc", 4));
    EXPECT_EQ(file.readAt(5, read.data(), 1), 0U);
    EXPECT_EQ(file.fsync(), 0);
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(file.open(path("file"), Access::UpdateOrNew), 0);
    EXPECT_EQ(file.size(), 5);
    EXPECT_EQ(file.open(path("other"), Access::UpdateOrNew), 0);
    EXPECT_EQ(file.size(), 0);
}

TEST_F(SystemFiles, SpaceThatIsAllocatedAheadIsNoPartOfTheFile)
{
    constexpr std::int64_t MiB = std::int64_t{1} << 20U;
    NativeFile file;
    std::size_t written = 0;
    ASSERT_EQ(file.open(path("file"), Access::Create), 0);
    file.allocateAhead(0, MiB);
    EXPECT_EQ(file.size(), 0);
    ASSERT_EQ(file.writeAt(0, "text", 4, written), 0);
    file.allocateAhead(4, MiB);
    EXPECT_EQ(file.size(), 4);
    file.giveBackAhead();
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(textOf(path("file")), "text");
}

TEST_F(SystemFiles, SharedLocksKeepOutOneAloneAndOneAloneKeepsOutAll)
{
    struct Case {
        LockMode held;
        LockMode wanted;
        bool given;
    };
    for (const Case& c :
         {Case{LockMode::Shared, LockMode::Shared, true}, Case{LockMode::Shared, LockMode::Exclusive, false},
          Case{LockMode::Exclusive, LockMode::Shared, false}, Case{LockMode::Exclusive, LockMode::Exclusive, false}}) {
        NativeFile first;
        NativeFile second;
        ASSERT_EQ(first.open(path("file"), Access::UpdateOrNew), 0);
        ASSERT_EQ(second.open(path("file"), Access::UpdateOrNew), 0);
        ASSERT_EQ(first.lock(c.held), 0);
        EXPECT_EQ(second.lock(c.wanted), c.given ? 0 : System::LockHeld);
        first.close();
        EXPECT_EQ(second.lock(c.wanted), 0);
    }
}

TEST_F(SystemFiles, ALockIsWaitedForAMomentOnly)
{
    NativeFile holder;
    NativeFile wanting;
    ASSERT_EQ(holder.open(path("lock"), Access::Create), 0);
    ASSERT_EQ(wanting.open(path("lock"), Access::Read), 0);
    ASSERT_EQ(holder.lock(LockMode::Shared), 0);
    EXPECT_EQ(System::lockPatiently(wanting), System::LockHeld);
    holder.close();
    EXPECT_EQ(System::lockPatiently(wanting), 0);
}

TEST_F(SystemFiles, ALockFileGoesWithTheLastWhoHoldsIt)
{
    constexpr System::FileMode Mode = 0640;
    bool held = true;
    EXPECT_EQ(System::LockFile::look(path("lock"), held), 0);
    EXPECT_FALSE(held);
    {
        System::LockFile first;
        System::LockFile alone;
        ASSERT_EQ(first.tryLock(path("lock"), LockMode::Shared, Mode), 0);
        EXPECT_EQ(alone.tryLock(path("lock"), LockMode::Exclusive, Mode), System::LockHeld);
        {
            System::LockFile second;
            ASSERT_EQ(second.tryLock(path("lock"), LockMode::Shared, Mode), 0);
        }
        EXPECT_EQ(kindAt(path("lock")), NameKind::File);
        EXPECT_EQ(System::LockFile::look(path("lock"), held), 0);
        EXPECT_TRUE(held);
    }
    EXPECT_EQ(kindAt(path("lock")), NameKind::Missing);
    System::LockFile none;
    EXPECT_EQ(System::kindOf(none.tryLock(path("missing/lock"), LockMode::Shared, Mode)), ErrorKind::Missing);
}

TEST_F(SystemFiles, WhoSharesALockFileKeepsItAloneOnceNobodyElseHasIt)
{
    constexpr System::FileMode Mode = 0640;
    {
        System::LockFile one;
        System::LockFile other;
        ASSERT_EQ(one.tryLock(path("lock"), LockMode::Shared, Mode), 0);
        ASSERT_EQ(other.tryLock(path("lock"), LockMode::Shared, Mode), 0);
        EXPECT_EQ(one.keepAlone(), System::LockHeld);
    }
    {
        System::LockFile one;
        System::LockFile other;
        ASSERT_EQ(one.tryLock(path("lock"), LockMode::Shared, Mode), 0);
        EXPECT_EQ(one.keepAlone(), 0);
        EXPECT_EQ(other.tryLock(path("lock"), LockMode::Shared, Mode), System::LockHeld);
    }
    EXPECT_EQ(kindAt(path("lock")), NameKind::Missing);
}

#if !defined(_WIN32)  // where the name of an open file stays taken
TEST_F(SystemFiles, ALockFileThatWasTakenAwayIsNotKept)
{
    System::LockFile keeper;
    ASSERT_EQ(keeper.tryLock(path("lock"), LockMode::Shared, 0640), 0);
    ASSERT_EQ(System::removeFile(path("lock")), 0);
    EXPECT_EQ(keeper.keepAlone(), System::LockHeld);
}
#endif

}  // namespace
}  // namespace SystemTests
