// The units of frequencies, and the texts of one legend.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plot/labels.h"

using RecTool::frequenciesAlike;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(FrequencyUnits, FrequenciesHaveTheSameUnitAndAsManyDecimals)
{
    EXPECT_THAT(frequenciesAlike({431.7e6, 433.5e6, 438.65e6}), ElementsAre("431.70 MHz", "433.50 MHz", "438.65 MHz"));
    EXPECT_THAT(frequenciesAlike({145e6, 1.2962e9}), ElementsAre("145.0 MHz", "1296.2 MHz"));
    EXPECT_THAT(frequenciesAlike({150.015e6}), ElementsAre("150.015 MHz"));
    EXPECT_THAT(frequenciesAlike({0, 7.5}), ElementsAre("0.0 Hz", "7.5 Hz"));
    EXPECT_THAT(frequenciesAlike({}), IsEmpty());
}
