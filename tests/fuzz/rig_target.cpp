// What a receiver's peer sends: lines of rigctld's answers, and its packets.
#include <cmath>

#include <QString>

#include <values/tree.h>

#include "live/lines.h"
#include "sources/rig/rigclient.h"
#include "sources/rig/rigvalues.h"
#include "target.h"

namespace Fuzzing {

namespace {

void readAnswers(const std::string& input)
{
    RecStation::LineSplitter splitter(RecStation::RigReplyReader::LongestLine);
    RecStation::RigReplyReader reader("get_mode");
    const std::size_t half = input.size() / 2;
    for (const std::string_view part :
         {std::string_view(input).substr(0, half), std::string_view(input).substr(half)}) {
        splitter.put(part);
        while (const auto line = splitter.next()) {
            require(line->size() <= RecStation::RigReplyReader::LongestLine, "a line is longer than it may be");
            const auto strength = RecStation::parseRigStrength(*line);
            require(!strength || std::isfinite(*strength), "a strength is no number");
            static_cast<void>(RecStation::parseVfoMode(*line));
            if (const auto reply = reader.take(*line)) {
                require(reply->values.size() <= RecStation::RigReplyReader::MostLines, "an answer has no end");
                static_cast<void>(RecStation::rigErrorText(reply->code));
                reader = RecStation::RigReplyReader("get_mode");
            }
        }
    }
}

void readPacket(const std::string& input)
{
    const auto spectrum = RecStation::parseRigPacket(input).spectrum;
    if (spectrum) {
        require(2 * spectrum->levelsDb.size() <= input.size(), "a packet has more cells than digits");
        RecStation::RigValues values("rig", "/Devices/Rx1", true, 0);
        values.show(*spectrum, 1);
        values.forgetSpectrum(2);
    }
}

}  // namespace

void runRig(const std::string& input)
{
    const values::Tree tree;
    try {
        readAnswers(input);
    } catch (const RecStation::ConnectionError&) {
        // told to the user
    }
    try {
        readPacket(input);
    } catch (const RecStation::RigPacketError&) {
        // likewise
    }
}

std::vector<std::string> rigSeeds()
{
    return {
        "get_mode:\nMode: USB\nPassband: 2400\nRPRT 0\n",
        "ChkVFO: 0\nget_mode: currVFO\r\n-54\nRPRT -11\n",
        R"({"seq": 109, "rig": {"id": "rig_id", "name": "IC-7300"}, "spectra": [{"minLevel": 0, "maxLevel": 160,
"minStrength": -80, "maxStrength": 0, "lowFreq": 3693000, "highFreq": 3743000, "length": 4, "data": "121514A0"}]})",
    };
}

}  // namespace Fuzzing
