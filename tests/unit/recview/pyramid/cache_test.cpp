// Overviews that are kept, found again, thrown away and made anew.
#include <pyramid/cache.h>
#include <support/recordingbytes.h>
#include "madeoverview.h"

namespace RecViewTests {
namespace {

using namespace RecView;
using TestSupport::bytesOf;
using TestSupport::ReferenceRecording;
using TestSupport::writeBytes;

/// A recording of some 1.4 MB.
std::string recordingBytes(float level)
{
    const auto range = values::ChannelRange::Even(100e6, 1e6, 1500);
    ReferenceRecording recording;
    recording.types({{1, 6, "RFSPECTRUM", "/RfSpectrum"}});
    std::vector<float> levels(1500, level);
    for (std::uint64_t i = 1; i <= 300; ++i) {
        levels[i] = -20;
        recording.record(1, levelsText(range, levels, 0, i == 1), 100 * i);
    }
    TestSupport::HeaderFields header{.startMs = StartMs, .stopMs = StartMs + 31'000};
    return recording.close(header);
}

/// What is told by the file system goes in steps, behind which a stamp is good.
void waitForGoodStamp(const std::string& path)
{
    while (!stampOf(path).isGood()) {
        std::this_thread::yield();
    }
}

class Caches : public testing::Test {
protected:
    void SetUp() override
    {
        m_path = m_folder.filePath("one.rec").toStdString();
        writeBytes(m_path, recordingBytes(-100));
        waitForGoodStamp(m_path);
    }
    [[nodiscard]] std::filesystem::path directory() const { return m_folder.filePath("cache").toStdString(); }
    [[nodiscard]] Cache::Options options() const { return {directory(), std::uint64_t{1} << 30U, 1}; }
    std::shared_ptr<Overview> made(Cache& cache) { return made(cache, m_path); }
    static std::shared_ptr<Overview> made(Cache& cache, const std::string& path)
    {
        std::string problem;
        auto overview = cache.overviewOf(path, {}, problem);
        EXPECT_EQ(problem, "");
        return overview;
    }
    [[nodiscard]] std::vector<std::filesystem::path> kept(const char* suffix = ".overview") const
    {
        std::vector<std::filesystem::path> found;
        for (const auto& entry : std::filesystem::directory_iterator(directory())) {
            if (entry.path().extension() == suffix) {
                found.push_back(entry.path());
            }
        }
        return found;
    }
    static std::vector<float> picture(const Overview& overview)
    {
        std::vector<float> levels =
            drawn(overview, {1, Start, Start + 31'000, 100e6, 1600e6, 100, 100, Combine::Max, false}).levels();
        std::replace_if(
            levels.begin(), levels.end(), [](float level) { return std::isnan(level); }, 999.0F);
        return levels;
    }

    QTemporaryDir m_folder;
    std::string m_path;
};

TEST_F(Caches, GiveAnOverviewAgainThatIsTheSame)
{
    Cache cache(options());
    EXPECT_EQ(cache.find(m_path), nullptr);
    const std::vector<float> first = picture(*made(cache));
    ASSERT_EQ(kept().size(), 1U);
    EXPECT_TRUE(kept(".part").empty());
    Cache another(options());
    const std::shared_ptr<Overview> found = another.find(m_path);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(picture(*found), first);
    EXPECT_EQ(found->stateAt(Start + 15'000).entries().begin()->second.record.timeMs, 15'000U);
    EXPECT_LE(std::filesystem::file_size(kept().front()) * 4, std::filesystem::file_size(m_path));
}

TEST_F(Caches, KeepForTheUserAlone)
{
    using std::filesystem::perms;
    Cache cache(options());
    made(cache);
    const perms others = perms::group_all | perms::others_all;
    EXPECT_EQ(std::filesystem::status(directory()).permissions() & others, perms::none);
    EXPECT_EQ(std::filesystem::status(kept().front()).permissions() & others, perms::none);
    EXPECT_EQ(std::filesystem::status(kept(".stamp").front()).permissions() & others, perms::none);
}

TEST_F(Caches, KnowACopyByWhatItHolds)
{
    Cache cache(options());
    made(cache);
    const std::string copy = m_folder.filePath("copy.rec").toStdString();
    std::filesystem::copy_file(m_path, copy);
    EXPECT_NE(cache.find(copy), nullptr);
}

TEST_F(Caches, SeeAByteThatWasChangedUnderTheSameSizeAndTime)
{
    Cache cache(options());
    made(cache);
    const auto written = std::filesystem::last_write_time(m_path);
    std::fstream file(m_path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(700'000);
    file.put('z');
    file.close();
    std::filesystem::last_write_time(m_path, written);
    EXPECT_EQ(cache.find(m_path), nullptr);
    EXPECT_NE(made(cache), nullptr);
    EXPECT_EQ(kept().size(), 2U);
}

TEST_F(Caches, MakeWhatIsDamagedAnew)
{
    Cache cache(options());
    const std::vector<float> first = picture(*made(cache));
    const std::filesystem::path place = kept().front();
    const std::string sound = bytesOf(place);
    std::mt19937 random(3);
    for (int i = 0; i < 150; ++i) {
        std::string damaged = sound;
        switch (i % 3) {
            case 0:
                damaged.resize(random() % damaged.size());
                break;
            case 1:
                damaged[random() % damaged.size()] ^= static_cast<char>(1U << (random() % 8));
                break;
            default:  // near the index
                damaged[damaged.size() - 1 - random() % std::min<std::size_t>(damaged.size(), 3000)] ^= 0x40;
        }
        writeBytes(place, damaged);
        EXPECT_EQ(cache.find(m_path), nullptr) << i;
        EXPECT_FALSE(std::filesystem::exists(place));
    }
    writeBytes(place, "something else");
    EXPECT_EQ(picture(*made(cache)), first);
    ASSERT_EQ(kept().size(), 1U);
    EXPECT_NE(cache.find(m_path), nullptr);
    writeBytes(kept(".stamp").front(), "nonsense");
    EXPECT_NE(cache.find(m_path), nullptr);
}

TEST_F(Caches, MakeAnewWhatOtherVersionsMade)
{
    Cache cache(options());
    made(cache);
    Cache::Options newer = options();
    newer.version = 2;
    EXPECT_EQ(Cache(newer).find(m_path), nullptr);
}

TEST_F(Caches, ThrowAwayWhatWasUsedLongestAgo)
{
    Cache cache(options());
    made(cache);
    const std::uint64_t bytes = std::filesystem::file_size(kept().front());
    Cache::Options small = options();
    small.bytes = bytes * 5 / 2;
    Cache bounded(small);
    std::vector<std::string> paths{m_path};
    for (const float level : {-90.0F, -80.0F, -70.0F}) {
        paths.push_back(m_folder.filePath(QString::number(double{level})).toStdString());
        writeBytes(paths.back(), recordingBytes(level));
        EXPECT_NE(bounded.find(m_path), nullptr) << "used again and again";
        EXPECT_NE(made(bounded, paths.back()), nullptr);
    }
    EXPECT_EQ(kept().size(), 2U);
    EXPECT_NE(bounded.find(m_path), nullptr);
    EXPECT_NE(bounded.find(paths[3]), nullptr);
    EXPECT_EQ(bounded.find(paths[1]), nullptr);
    EXPECT_EQ(bounded.find(paths[2]), nullptr);
}

TEST_F(Caches, WorkWithoutADirectory)
{
    writeBytes(directory(), "a file stands here");
    Cache cache(options());
    EXPECT_EQ(picture(*made(cache)).size(), 10'000U);
    EXPECT_EQ(cache.find(m_path), nullptr);
}

TEST_F(Caches, RemoveWhatEndedProcessesLeftAndNothingInUse)
{
    Cache cache(options());
    const std::unique_ptr<Store> inUse = cache.newStore();
    writeBytes(directory() / "new-1-2.part", "left behind");
    ASSERT_EQ(kept(".part").size(), 2U);
    Cache another(options());
    EXPECT_EQ(kept(".part").size(), 1U);
}

TEST_F(Caches, ServeSeveralAtOnce)
{
    std::vector<std::thread> threads;
    std::vector<std::vector<float>> pictures(4);
    for (std::vector<float>& drawn : pictures) {
        threads.emplace_back([&] {
            Cache cache(options());
            drawn = picture(*made(cache));
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(pictures, testing::Each(pictures.front()));
    EXPECT_EQ(kept().size(), 1U);
    EXPECT_TRUE(kept(".part").empty());
}

TEST_F(Caches, StopMakingWhenTheyAreTold)
{
    Cache cache(options());
    std::string problem;
    EXPECT_EQ(cache.overviewOf(m_folder.filePath("missing.rec").toStdString(), {}, problem), nullptr);
    EXPECT_EQ(problem, "There is no such file.");
}

}  // namespace
}  // namespace RecViewTests
