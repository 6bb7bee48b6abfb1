// Answers of rigctld as it gives them, and what is none.
#include "sources/rig/rigclient.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace RecStation {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::optional<RigReply> replyTo(const char* command, std::initializer_list<const char*> lines)
{
    RigReplyReader reader(command);
    std::optional<RigReply> reply;
    for (const char* line : lines) {
        EXPECT_FALSE(reply) << line;
        reply = reader.take(line);
    }
    return reply;
}

TEST(RigReply, ValuesStandBehindTheirNamesOrByThemselves)
{
    EXPECT_THAT(replyTo("get_mode", {"get_mode:", "Mode: USB", "Passband: 2400", "RPRT 0"})->values,
                ElementsAre("USB", "2400"));
    EXPECT_THAT(replyTo("get_level", {"get_level: STRENGTH", "-38", "RPRT 0"})->values, ElementsAre("-38"));
    EXPECT_THAT(replyTo("get_level", {"get_level: STRENGTH", "Level Value: -38", "RPRT 0"})->values,
                ElementsAre("-38"));
}

TEST(RigReply, ACodeSaysWhyThereIsNone)
{
    const auto reply = replyTo("get_level", {"get_level: STRENGTH", "RPRT -11"});
    EXPECT_THAT(reply->values, IsEmpty());
    EXPECT_EQ(reply->code, -11);
    EXPECT_TRUE(isNotOffered(-11));
    EXPECT_FALSE(isNotOffered(-5));
    EXPECT_EQ(rigErrorText(-11), "not available, RPRT -11");
    EXPECT_EQ(rigErrorText(-99), "RPRT -99");
    EXPECT_EQ(rigErrorText(7), "RPRT 7");
    EXPECT_EQ(rigErrorText(std::numeric_limits<int>::min()), "RPRT -2147483648");
}

TEST(RigReply, WhatTheCommandBeforeLeftBehindIsPassedOver)
{
    EXPECT_THAT(replyTo("get_freq", {"RPRT 0", "", "get_freq:", "Frequency: 145000000", "RPRT 0"})->values,
                ElementsAre("145000000"));
}

TEST(RigReply, AnythingElseIsRefusedAndNothingGoesOnWithoutEnd)
{
    for (const char* line : {"HTTP/1.1 400 Bad Request", "get_freq", "get_frequency", "145000000", "\x01\x02"}) {
        EXPECT_THROW(replyTo("get_freq", {line}), ConnectionError) << line;
    }
    EXPECT_THROW(replyTo("get_freq", {"get_freq:", "RPRT x"}), ConnectionError);
    RigReplyReader reader("get_freq");
    EXPECT_THROW(
        for (int i = 0; i < 1000; ++i) { static_cast<void>(reader.take(i == 0 ? "get_freq:" : "x: y")); },
        ConnectionError);
}

TEST(RigReply, OnlyWhatAReceiverCanHaveIsTaken)
{
    EXPECT_EQ(parseRigHertz("145000000"), 145e6);
    EXPECT_EQ(parseRigHertz("145000000.500000"), 145'000'000.5);
    for (const char* text : {"", "0", "-1", "nan", "inf", "1e300", "14x", "0x10"}) {
        EXPECT_FALSE(parseRigHertz(text)) << text;
    }
    EXPECT_EQ(parseRigStrength("-54"), -54);
    EXPECT_FALSE(parseRigStrength("nan"));
    EXPECT_FALSE(parseRigStrength("-2147483648"));
    EXPECT_EQ(parseRigMode("PKT-USB"), "PKT-USB");
    EXPECT_FALSE(parseRigMode(""));
    EXPECT_FALSE(parseRigMode("U\xfc-"));
    EXPECT_FALSE(parseRigMode("AVERYLONGMODEOFARIG"));
    EXPECT_EQ(parseVfoMode("ChkVFO: 1"), true);
    EXPECT_EQ(parseVfoMode("CHKVFO 0"), false);
    EXPECT_EQ(parseVfoMode("1"), true);
    EXPECT_FALSE(parseVfoMode("chk_vfo:"));
    EXPECT_FALSE(parseVfoMode(""));
}

}  // namespace
}  // namespace RecStation
