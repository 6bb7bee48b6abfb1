// The packets of rigctld: the example of Hamlib's README.multicast in its form, and hostile ones.
#include "sources/rig/rigspectrum.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace RecStation {
namespace {

using testing::ElementsAre;
using testing::FloatNear;
using testing::SizeIs;

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
