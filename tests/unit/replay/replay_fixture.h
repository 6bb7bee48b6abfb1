// What the tests of bookmarks and channel ranges share.
#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <string>

#include "finishedfile.h"
#include "unit/fileaccess_fixture.h"

namespace ReplayTests {

using FileAccessTests::dataOf;
using Recording2::CFileAccess;
using Recording2::CHeaderData;
using Recording2::CVTCmdData;
using TestSupport::HeaderFields;
using TestSupport::ReferenceRecording;

/// Every bookmark, as a caller gets them all: until the delivery that changes nothing.
inline Bookmarks bookmarksOf(CFileAccess& file)
{
    Bookmarks bookmarks;
    file.BookmarkTableToBegin();
    for (bool delivered = true; delivered;) {
        unsigned long long time = 0;
        std::string text("untouched");
        file.getNextBookmark(time, text);
        delivered = time != 0 || text != "untouched";
        if (delivered) {
            bookmarks.emplace(time, text);
        }
    }
    return bookmarks;
}

/// The time of every channel range definition as it is delivered.
inline Times rangesOf(CFileAccess& file)
{
    Times times;
    CVTCmdData record;
    file.CRDTableToBegin();
    for (bool more = true; more;) {
        unsigned long long time = 0;
        more = file.readNextChannelRangeDef(record, time);
        if (time != 0) {
            times.insert(time);
        }
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

    const QString Name = QStringLiteral("made.rec");
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
