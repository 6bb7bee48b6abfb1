// What rigctld answers, and the spectra that it sends.
#include "sources/rig/rigclient.h"
#include "support/testing.h"

namespace RecStation {
namespace {

using namespace testing;

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

std::string packet(const std::string& spectrum)
{
    return R"({"app": "Hamlib", "version": "4.5~git", "seq": 109, "crc": 0,
 "rig": {"id": "rig_id", "status": "OK", "errorMsg": "", "name": "IC-7300", "split": false, "splitVfo": "VFOA", "satMode": false},
 "vfos": [{"name": "VFOA", "freq": 3718000, "mode": "LSB", "width": 3000, "ptt": false, "rx": true, "tx": true}],
 "spectra": [)" +
           spectrum + "]}";
}

std::string spectrum(const std::string& data, int length)
{
    return R"({"id": 0, "name": "Main", "type": "CENTER", "minLevel": 0, "maxLevel": 160, "minStrength": -80,
 "maxStrength": 0, "centerFreq": 3718000, "span": 50000, "lowFreq": 3693000, "highFreq": 3743000, "length": )" +
           std::to_string(length) + R"(, "data": ")" + data + "\"}";
}

TEST(RigSpectrum, CellsAreTheLevelsOfTheScaleBetweenTheEdges)
{
    const RigPacket read = parseRigPacket(packet(spectrum("0050A01f7F", 5)));
    EXPECT_EQ(read.rig, "rig_id IC-7300");
    EXPECT_EQ(read.seq, 109U);
    ASSERT_TRUE(read.spectrum);
    EXPECT_EQ(read.spectrum->lowHz, 3'693'000);
    EXPECT_EQ(read.spectrum->stepHz(), 12'500) << "the middle cell lies in the centre";
    EXPECT_THAT(read.spectrum->levelsDb, ElementsAre(FloatNear(-80, 1e-4F), FloatNear(-40, 1e-4F), FloatNear(0, 1e-4F),
                                                     FloatNear(-64.5, 1e-4F), FloatNear(-16.5, 1e-4F)));
}

TEST(RigSpectrum, APacketWithoutSpectraHasNone)
{
    EXPECT_FALSE(parseRigPacket(packet("")).spectrum);
    EXPECT_FALSE(parseRigPacket("{}").spectrum);
    EXPECT_FALSE(parseRigPacket(R"({"spectra": 5, "seq": -1, "rig": []})").spectrum);
}

TEST(RigSpectrum, WhatIsNoPacketIsRefused)
{
    const std::string good = packet(spectrum("0050A0", 3));
    EXPECT_THAT(parseRigPacket(good).spectrum->levelsDb, SizeIs(3));
    for (std::size_t cut = 0; cut < good.size(); ++cut) {
        EXPECT_THROW(static_cast<void>(parseRigPacket(good.substr(0, cut))), RigPacketError) << cut;
    }
    EXPECT_THROW(static_cast<void>(parseRigPacket(packet("7"))), RigPacketError);
    EXPECT_THROW(static_cast<void>(parseRigPacket(packet(spectrum("0050A0", 4)))), RigPacketError);
    EXPECT_THROW(static_cast<void>(parseRigPacket(packet(spectrum("00", 1)))), RigPacketError);
    EXPECT_THROW(static_cast<void>(parseRigPacket(packet(spectrum("0050AG", 3)))), RigPacketError);
    EXPECT_THROW(static_cast<void>(parseRigPacket(std::string(60'000, '['))), RigPacketError);
    for (const auto& [from, to] : {std::pair{"\"highFreq\": 3743000", "\"highFreq\": 3693000"},
                                   {"\"maxLevel\": 160", "\"maxLevel\": 0"},
                                   {"\"minStrength\": -80", "\"minStrength\": \"x\""},
                                   {"\"lowFreq\": 3693000", "\"lowFreq\": 1e400"},
                                   {"\"lowFreq\"", "\"other\""}}) {
        std::string bad = good;
        bad.replace(bad.find(from), std::string(from).size(), to);
        EXPECT_THROW(static_cast<void>(parseRigPacket(bad)), RigPacketError) << to;
    }
}

}  // namespace
}  // namespace RecStation
