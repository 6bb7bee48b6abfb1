// That blocks hold the largest, smallest and mean level of the sweeps that they stand for.
#include <pyramid/levelblocks.h>
#include <pyramid/units.h>
#include "madeoverview.h"

namespace RecViewTests {
namespace {

using namespace RecView;

struct Plain {
    float max = NotMeasured;
    float min = NotMeasured;
    double sum = 0;
    double count = 0;

    void add(float level)
    {
        if (std::isnan(level)) {
            return;
        }
        max = std::isnan(max) ? level : std::max(max, level);
        min = std::isnan(min) ? level : std::min(min, level);
        if (std::isfinite(level)) {
            sum += double{level};
            ++count;
        }
    }
};

/// Compares every block of a series with the levels of its sweeps.
class BlockComparison {
public:
    BlockComparison(const Overview& overview, const Series& series, const std::vector<PlainSweep>& sweeps)
        : m_store(overview.store()), m_series(series), m_units(series.range)
    {
        std::copy_if(sweeps.begin(), sweeps.end(), std::back_inserter(m_sweeps),
                     [&](const PlainSweep& sweep) { return sweep.range == series.range; });
    }

    void run()
    {
        ASSERT_EQ(m_sweeps.size(), m_series.sweeps);
        for (std::size_t time = 0; time < BlockLayout::TimeLevels; ++time) {
            const Column* rows =
                m_store.find(BlockLayout::keyOf(BlockKind::Rows, m_series.code, m_series.number, time));
            ASSERT_TRUE(rows != nullptr || time > 0);
            std::size_t first = 0;
            for (std::uint64_t row = 0; rows != nullptr && row < rows->count<BlockRow>(); ++row) {
                const auto meta = rows->at<BlockRow>(row);
                ASSERT_LE(first + meta.sweeps, m_sweeps.size());
                EXPECT_EQ(meta.firstMs, m_sweeps[first].momentMs);
                EXPECT_EQ(meta.lastMs, m_sweeps[first + meta.sweeps - 1].momentMs);
                compareRow(time, row, meta, first);
                first += meta.sweeps;
            }
            EXPECT_TRUE(time > 0 || first == m_sweeps.size());
        }
    }
    [[nodiscard]] std::size_t compared() const { return m_compared; }

private:
    void compareRow(std::size_t time, std::uint64_t row, const BlockRow& meta, std::size_t first)
    {
        for (std::size_t frequency = 0; frequency < BlockLayout::Groups.size(); ++frequency) {
            if (!BlockLayout::has(time, frequency, m_units.count())) {
                continue;
            }
            std::vector<Plain> plain(BlockLayout::groups(frequency, m_units.count()));
            for (std::size_t sweep = first; sweep < first + meta.sweeps; ++sweep) {
                for (std::size_t channel = 0; channel < m_units.channels(); ++channel) {
                    plain[m_units.of(channel).first / BlockLayout::Groups[frequency]].add(
                        m_sweeps[sweep].levels[channel]);
                }
            }
            for (std::size_t group = 0; group < plain.size(); ++group) {
                const auto storedAs = [&](Combine of) {
                    const bool isFloat = meta.floats != BlockRow::NoFloats;
                    const Column* column = m_store.find(
                        BlockLayout::keyOf(isFloat ? BlockKind::Floats : BlockKind::Levels, m_series.code,
                                           m_series.number, time, frequency, static_cast<std::size_t>(of)));
                    return stored(*column, row, meta, group, plain.size());
                };
                same(plain[group].max, storedAs(Combine::Max), 0);
                same(plain[group].min, storedAs(Combine::Min), 0);
                const float mean =
                    plain[group].count == 0 ? NotMeasured : static_cast<float>(plain[group].sum / plain[group].count);
                same(mean, storedAs(Combine::Mean), 0.006);
                ++m_compared;
            }
        }
    }
    static void same(float plain, float stored, double within)
    {
        const bool isSame = std::isnan(plain) ? std::isnan(stored)
                                              : plain == stored || std::abs(double{plain} - double{stored}) <= within;
        EXPECT_TRUE(isSame) << plain << " is " << stored;
    }
    static float stored(const Column& column, std::uint64_t row, const BlockRow& meta, std::size_t group,
                        std::size_t groups)
    {
        if (meta.floats != BlockRow::NoFloats) {
            return column.at<float>(meta.floats * groups + group);
        }
        const auto hundredths = column.at<std::int16_t>(row * groups + group);
        return hundredths == NoHundredths ? NotMeasured : static_cast<float>(hundredths) / 100.0F;
    }

    const Store& m_store;
    Series m_series;
    Units m_units;
    std::vector<PlainSweep> m_sweeps;
    std::size_t m_compared = 0;
};

TEST(Blocks, HoldTheLargestTheSmallestAndTheMeanLevelOfTheirSweeps)
{
    for (std::uint32_t seed = 1; seed <= 6; ++seed) {
        SCOPED_TRACE(seed);
        const auto records = RandomRecording(seed).make(1500);
        MadeOverview made(records);
        const Overview& overview = made.finish();
        const std::vector<PlainSweep> sweeps = plainSweeps(records->all(), 1);
        std::size_t compared = 0;
        for (const Series& series : overview.series()) {
            BlockComparison comparison(overview, series, sweeps);
            comparison.run();
            compared += comparison.compared();
        }
        EXPECT_GT(compared, 1000U);
    }
}

TEST(Blocks, TakeLessThanASixthOfTheRecords)
{
    for (const std::uint32_t seed : {7U, 8U}) {
        const auto records = RandomRecording(seed).make(4000);
        MadeOverview made(records);
        const auto bytes = static_cast<double>(records->all().back().position);
        EXPECT_LT(static_cast<double>(made.finish().store().bytes()), bytes / 6 + 64'000);
    }
}

}  // namespace
}  // namespace RecViewTests
