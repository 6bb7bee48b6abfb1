// Which files make one recording, and what it is called.
#include "recordings/recordedfile.h"

#include "support/testing.h"

namespace TimelineTests {
namespace {

using namespace RecView;

FilePointer file(const std::string& name, std::uint64_t startMs, std::uint64_t endMs,
                 const std::string& folder = "here", const std::string& device = "RX 1")
{
    auto made = std::make_shared<RecordedFile>();
    made->path = folder + "/" + name;
    made->name = name;
    made->folder = folder;
    made->device = device;
    made->startMs = startMs;
    made->endMs = endMs;
    return made;
}

constexpr std::uint64_t Start = 1'700'000'000'000;

TEST(Timeline, FilesOfOneDeviceThatFollowEachOtherAreOne)
{
    const auto made =
        makeTimelines({file("b.rec", Start + 60'500, Start + 90'000), file("a.rec", Start, Start + 60'000),
                       file("c.rec", Start + 100'000, Start + 120'000)});
    ASSERT_EQ(made.size(), 1U);
    EXPECT_EQ(made[0].files.size(), 3U);
    EXPECT_EQ(made[0].id, "a");
    EXPECT_EQ(made[0].startMs(), Start);
    EXPECT_EQ(made[0].endMs(), Start + 120'000);
}

TEST(Timeline, WhatFollowsLaterElsewhereOrOfAnotherDeviceIsAnother)
{
    const std::uint64_t end = Start + 60'000;
    for (const FilePointer& other :
         {file("b.rec", end + 10'001, end + 20'000), file("b.rec", end, end + 9, "there"),
          file("b.rec", end, end + 9, "here", "RX 2"), file("b.rec", end - 5'000, end + 9)}) {
        EXPECT_EQ(makeTimelines({file("a.rec", Start, end), other}).size(), 2U)
            << other->startMs << ' ' << other->folder << ' ' << other->device;
    }
}

TEST(Timeline, ThoseOfTheSameNameAreToldApart)
{
    const auto made = makeTimelines({file("a.rec", Start, Start + 9, "one"), file("a.rec", Start, Start + 9, "two"),
                                     file("a.tmp", Start, Start + 9, "three")});
    ASSERT_EQ(made.size(), 3U);
    EXPECT_EQ(made[0].id, "a");
    EXPECT_EQ(made[1].id, "a~2");
    EXPECT_EQ(made[2].id, "a~3");
}

TEST(Timeline, AMomentBelongsToTheLastFileThatHadBegun)
{
    const auto made =
        makeTimelines({file("a.rec", Start, Start + 60'000), file("b.rec", Start + 61'000, Start + 90'000)});
    ASSERT_EQ(made.size(), 1U);
    EXPECT_EQ(made[0].fileAt(0), 0U);
    EXPECT_EQ(made[0].fileAt(Start + 60'999.5), 0U);
    EXPECT_EQ(made[0].fileAt(Start + 61'000), 1U);
    EXPECT_EQ(made[0].fileAt(1e15), 1U);
}

}  // namespace
}  // namespace TimelineTests
