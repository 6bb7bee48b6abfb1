// Changes of the tables of a recording, and what can be read of them after each.
#pragma once

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <grp.h>

#include <ostream>

#include <recording2/fileaccess.h>
#include <recording2/inspection/verify/verification.h>

#include "life.h"
#include "support/childprocess.h"
#include "support/recordingbytes.h"
#include "troubledcalls.h"

namespace CrashTests {

using Recording2::CFileAccess;

/// What the tables of a file hold.
struct Tables {
    std::map<std::uint64_t, std::string> bookmarks;
    std::vector<std::uint64_t> ranges;
    bool operator==(const Tables&) const = default;
};

inline void PrintTo(const Tables& tables, std::ostream* out)
{
    *out << testing::PrintToString(tables.bookmarks) << ' ' << testing::PrintToString(tables.ranges);
}

inline std::unique_ptr<CFileAccess> openFile(const std::string& path)
{
    return std::make_unique<CFileAccess>(path.c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
}

inline std::string recordingBytes(bool withRanges, std::size_t more = 0)
{
    TestSupport::ReferenceRecording recording;
    recording.types({{20, 7, "DFSPECTRUM", "/DfSpectrum"}});
    for (std::uint64_t i = 1; i <= 20; ++i) {
        recording.record(20, "7;1|34;1e+08,25000,2|50;" + std::string(more, ' '), 100 * i, withRanges && i % 2 == 0);
    }
    TestSupport::HeaderFields header{.startMs = 1'700'000'000'000};
    header.stopMs = header.startMs + 5'000;
    return recording.close(header);
}

inline const std::string LongText(300, 'x');
inline const std::map<std::uint64_t, std::string> SomeBookmarks{{10, "one"}, {20, "two"}, {30, LongText}};

using Change = std::function<bool(CFileAccess&)>;

inline bool storedTogether(CFileAccess& file, const std::function<void()>& change)
{
    return file.rewriteTogether(change, {});
}

inline bool add(CFileAccess& file)
{
    file.addBookmark(1'500, "added");
    file.writeBookmarks();
    return true;
}

inline bool addTogether(CFileAccess& file)
{
    return storedTogether(file, [&] { add(file); });
}

inline bool remove(CFileAccess& file)
{
    return storedTogether(file, [&] {
        file.removeBookmark(30);
        file.writeBookmarks();
    });
}

inline bool clear(CFileAccess& file)
{
    return storedTogether(file, [&] {
        file.clearChannelRangeDef();
        file.writeBookmarks();  // into which clearing runs
    });
}

inline bool clearAlone(CFileAccess& file)
{
    file.clearChannelRangeDef();
    return true;
}

inline bool rebuild(CFileAccess& file)
{
    return storedTogether(file, [&] {
        if (file.channelRangeDefAvailable()) {
            file.clearChannelRangeDef();
        }
        for (const unsigned long long time : {300U, 500U, 900U}) {
            file.addChannelRangeDef(time);
        }
        file.rebuildChannelRangeDef();
        if (file.bookmarksAvailable()) {
            file.writeBookmarks();
        }
    });
}

inline bool rebuildAlone(CFileAccess& file)
{
    file.addChannelRangeDef(300);
    file.rebuildChannelRangeDef();
    return true;
}

struct RewritingCase {
    const char* name;
    Change change;
    bool withRanges = true;
    bool withBookmarks = true;
    bool tells = true;  ///< the change says whether it was stored
};

class Rewriting : public testing::TestWithParam<RewritingCase> {
protected:
    [[nodiscard]] std::string path() const { return m_directory.filePath("a.rec").toStdString(); }
    [[nodiscard]] QString undoName() const { return m_directory.filePath("a.rec.undo"); }
    [[nodiscard]] std::string bytes() const { return TestSupport::readFile(QString::fromStdString(path())); }

    void lay() const
    {
        QFile::remove(undoName());
        TestSupport::writeFile(QString::fromStdString(path()), recordingBytes(GetParam().withRanges, m_more));
        if (GetParam().withBookmarks) {
            auto file = openFile(path());
            for (const auto& [time, text] : SomeBookmarks) {
                file->addBookmark(time, text);
            }
        }
    }
    /// What both readers read; the file must be sound.
    [[nodiscard]] Tables tables() const
    {
        namespace Inspection = Recording2::Inspection;
        const Inspection::Verification verified = Inspection::verify(path());
        EXPECT_EQ(verified.readability, Inspection::Readability::Ok) << verified.problem;
        EXPECT_EQ(verified.count(Inspection::Severity::Damage), 0U) << verified.remarks.front().text;
        EXPECT_EQ(verified.records, 20U);
        const Inspection::Summary summary = Inspection::inspect(path());
        Tables read;
        for (const Inspection::Bookmark& bookmark : summary.bookmarks) {
            read.bookmarks.emplace(bookmark.timeMs, bookmark.text);
        }
        read.ranges = summary.channelRangeTimes;
        EXPECT_EQ(tablesOfLibrary(), read);
        return read;
    }
    [[nodiscard]] Tables tablesOfLibrary() const
    {
        auto file = openFile(path());
        EXPECT_TRUE(file->IsValidFile());
        Tables read;
        std::string text;
        unsigned long long time = 0;
        std::size_t left = file->bookmarksAvailable() ? 100 : 0;
        file->BookmarkTableToBegin();
        for (bool more = true; more && left > 0; --left) {
            more = file->getNextBookmark(time, text);
            read.bookmarks.emplace(time, text);
        }
        Recording2::CVTCmdData record;
        file->CRDTableToBegin();
        for (bool more = true; more;) {
            time = 0;
            more = file->readNextChannelRangeDef(record, time);
            if (time != 0) {
                read.ranges.push_back(time);
            }
        }
        return read;
    }
    /// Nothing may throw.
    static bool changed(CFileAccess& file) noexcept { return GetParam().change(file); }
    /// The change in a process of its own, with the trouble.
    /// @return its exit code: 0 stored, 1 not stored; -SIGKILL when it was killed
    [[nodiscard]] int changeInChild(const Trouble& planned, int& calls) const
    {
        int counted[2];
        EXPECT_EQ(pipe(counted), 0);
        const int end = TestSupport::endOf([&] {
            auto file = openFile(path());
            trouble = planned;
            const bool stored = changed(*file);
            const int made = trouble.calls;
            trouble = {};
            static_cast<void>(!write(counted[1], &made, sizeof made));
            return stored ? 0 : 1;
        });
        ::close(counted[1]);
        calls = 0;
        static_cast<void>(!read(counted[0], &calls, sizeof calls));
        ::close(counted[0]);
        return end;
    }
    /// Whether another user, who may write neither the file nor its folder, reads these tables.
    [[nodiscard]] bool readsWithoutPermission(const Tables& expected) const
    {
        constexpr id_t Nobody = 65'534;
        const QByteArray folder = QFile::encodeName(m_directory.path());
        EXPECT_EQ(chmod(path().c_str(), 0444), 0);
        EXPECT_EQ(chmod(folder.constData(), 0555), 0);
        const int end = TestSupport::endOf([&] {
            const bool another =
                geteuid() != 0 || (setgroups(0, nullptr) == 0 && setegid(Nobody) == 0 && seteuid(Nobody) == 0);
            const bool alike =
                another && !QFile(QString::fromStdString(path())).open(QIODevice::ReadWrite) && tables() == expected;
            return alike && !HasFailure() ? 0 : 1;
        });
        EXPECT_EQ(chmod(folder.constData(), 0700), 0);
        EXPECT_EQ(chmod(path().c_str(), 0644), 0);
        return end == 0;
    }
    /// Whoever changes the file next finds it as it was read, and leaves no trace of the trouble.
    void expectGoesOn(Tables now) const
    {
        {
            auto file = openFile(path());
            EXPECT_TRUE(file->rewriteTogether(
                [&] {
                    file->addBookmark(4'000, "next");
                    file->writeBookmarks();
                },
                {}));
        }
        now.bookmarks.emplace(4'000, "next");
        EXPECT_FALSE(QFile::exists(undoName()));
        EXPECT_EQ(tables(), now);
    }

    std::size_t m_more = 0;  ///< bytes of each record

private:
    QTemporaryDir m_directory{directoryTemplate()};
};

}  // namespace CrashTests
