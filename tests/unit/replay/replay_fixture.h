// What the tests of bookmarks and channel ranges share.
#pragma once

#include <ostream>
#include <random>

#include "finishedfile.h"
#include "support/tracelog.h"
#include "unit/fileaccess_fixture.h"

namespace ReplayTests {

using FileAccessTests::dataOf;
using Recording2::CFileAccess;
using Recording2::CHeaderData;
using Recording2::CVTCmdData;
using TestSupport::HeaderFields;
using TestSupport::ReferenceRecording;

/// What one delivery of a bookmark or a channel range definition gave.
struct Delivery {
    bool more = false;
    std::uint64_t time = 0;
    std::string data;
    bool operator==(const Delivery&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Delivery& delivery)
{
    return out << delivery.time << " " << delivery.data << (delivery.more ? " and more" : " as the last");
}

const Delivery Nothing{false, 777, "untouched"};

inline Delivery nextBookmark(CFileAccess& file)
{
    unsigned long long time = Nothing.time;
    std::string text = Nothing.data;
    const bool more = file.getNextBookmark(time, text);
    return {more, time, text};
}

inline Delivery nextRange(CFileAccess& file)
{
    CVTCmdData record = FileAccessTests::makeRecord(7, Nothing.data);
    unsigned long long time = Nothing.time;
    const bool more = file.readNextChannelRangeDef(record, time);
    return {more, time, dataOf(record)};
}

/// Every bookmark, as a caller gets them all: until the delivery that changes nothing.
inline Bookmarks bookmarksOf(CFileAccess& file)
{
    Bookmarks bookmarks;
    file.BookmarkTableToBegin();
    for (Delivery next = nextBookmark(file); next != Nothing; next = nextBookmark(file)) {
        bookmarks.emplace(next.time, next.data);
    }
    return bookmarks;
}

/// The time of every channel range definition as it is delivered.
inline Times rangesOf(CFileAccess& file)
{
    Times times;
    file.CRDTableToBegin();
    for (Delivery next = nextRange(file); next != Nothing; next = nextRange(file)) {
        times.insert(next.time);
    }
    return times;
}

/// A finished recording of three levels at 10, 1500 and 3000 ms, the ones in ranges entered as channel ranges.
inline ReferenceRecording threeLevels(const Times& ranges = {})
{
    ReferenceRecording recording;
    recording.types({{36, 3, "LEVEL", "/LEVEL"}});
    recording.record(36, "-31.5", 10, ranges.contains(10));
    recording.record(36, "-30", 1500, ranges.contains(1500));
    recording.record(36, "-29.25", 3000, ranges.contains(3000));
    return recording;
}

class ReplayTest : public FileAccessTests::FileAccessTest {
protected:
    /// Puts the file to disk and opens it. One file a test.
    [[nodiscard]] std::unique_ptr<CFileAccess> open(const FinishedFile& file) const { return openBytes(file.bytes()); }
    [[nodiscard]] std::unique_ptr<CFileAccess> reopen() const { return openForReading(Name); }
    [[nodiscard]] std::string fileBytes() const { return bytesOf(Name); }

    /// That the three records of threeLevels are read one after the other from the file.
    static void expectThreeLevels(CFileAccess& file)
    {
        CVTCmdData record;
        EXPECT_EQ(file.readfirst(record), 1500U);
        EXPECT_EQ(dataOf(record), "-31.5");
        EXPECT_EQ(file.readnext(record), 3000U);
        EXPECT_EQ(dataOf(record), "-30");
        EXPECT_EQ(file.readnext(record), 0U);
        EXPECT_EQ(dataOf(record), "-29.25");
    }
    /// That a change is traced, where the mask asks for it, while the open file is no recording, and then not any more.
    void expectTracedUntilItCanBe(const FinishedFile& file, const QString& message,
                                  const std::function<void()>& change) const
    {
        TestSupport::writeFile(filePath(Name), TestSupport::headerArea());
        {
            const TestSupport::TraceLog log(~ErrorHandler::RecordingTraces);
            change();
            EXPECT_EQ(log.count(message + filePath(Name)), 0);
        }
        const TestSupport::TraceLog log(ErrorHandler::RecordingTraces);
        change();
        EXPECT_EQ(log.count(message + filePath(Name)), 1);
        TestSupport::writeFile(filePath(Name), file.bytes());
        change();
        EXPECT_EQ(log.count(message + filePath(Name)), 1);
    }
    const QString Name = "made.rec";
};

inline std::string zeros(std::size_t count)
{
    return std::string(count, '\0');
}

class BookmarksTest : public ReplayTest {
protected:
    FinishedFile m_file{threeLevels().close()};
    FinishedFile m_withRanges{threeLevels({1500}).close()};

    /// The file with bookmarks as another program would have stored them.
    static FinishedFile marked(FinishedFile file, const Bookmarks& bookmarks)
    {
        file.storeBookmarks(bookmarks);
        return file;
    }
    /// That the file on disk is this one with these bookmarks stored.
    void expectStored(FinishedFile& file, const Bookmarks& bookmarks) const
    {
        file.storeBookmarks(bookmarks);
        EXPECT_EQ(fileBytes(), file.bytes());
    }
    static void add(CFileAccess& file, const Bookmarks& bookmarks)
    {
        for (const auto& [time, text] : bookmarks) {
            file.addBookmark(time, text);
        }
    }
};

class ChannelRangesTest : public ReplayTest {
protected:
    static FinishedFile marked(FinishedFile file)
    {
        file.storeBookmarks({{2000, "a bookmark"}, {2500, "another"}});
        return file;
    }

    FinishedFile m_file{threeLevels().close()};
    FinishedFile m_withRanges{threeLevels({10, 1500, 3000}).close()};
};

/// Random choices that are the same in every run and with every standard library.
class Dice {
public:
    explicit Dice(std::uint32_t seed) : m_random(seed) {}
    std::size_t below(std::size_t count) { return m_random() % count; }
    bool oneIn(std::size_t count) { return below(count) == 0; }
    std::string bytes(std::size_t most)
    {
        std::string text(below(most + 1), '\0');
        for (char& c : text) {
            c = oneIn(3) ? "#0\0 9"[below(5)] : static_cast<char>(below(256));
        }
        return text;
    }

private:
    std::mt19937 m_random;
};

}  // namespace ReplayTests
