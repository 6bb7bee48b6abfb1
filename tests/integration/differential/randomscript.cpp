// Draws headers, type tables and records, with what is odd among them more often than by chance.
#include "randomscript.h"

namespace DifferentialTests {

namespace {

float randomFloat(Dice& dice)
{
    const auto mantissa = static_cast<float>(dice.int32());
    return dice.oneIn(2) ? mantissa : mantissa * 1e-7F;
}

HeaderFields randomHeader(Dice& dice, bool& sound)
{
    HeaderFields header;
    header.majorVersion = static_cast<std::int16_t>(2 + dice.below(dice.oneIn(8) ? 30'000 : 1));
    header.minorVersion = static_cast<std::int16_t>(dice.int32());
    header.startFrequency = randomFloat(dice);
    header.stopFrequency = randomFloat(dice);
    header.stepWidth = randomFloat(dice);
    header.minLevel = dice.int32();
    header.maxLevel = dice.int32();
    header.startMs = dice.below(18'446'744'073'709'551ULL);
    header.stopMs = dice.below(18'446'744'073'709'551ULL);
    header.jobId = dice.name(60);
    header.deviceName = dice.name(60);
    header.deviceType = dice.name(60);
    header.automatic = dice.oneIn(2);
    if (dice.oneIn(12)) {
        header.deviceName = dice.bytes(dice.below(40));
        header.deviceName += '\0' + dice.name(5);
        sound = false;
    }
    if (dice.oneIn(12)) {
        header.deviceType = dice.name(20) + std::string(600, 'x');
        sound = false;
    }
    return header;
}

std::vector<TypeFields> randomTypes(Dice& dice)
{
    std::vector<TypeFields> types(dice.below(12));
    for (TypeFields& type : types) {
        type = {dice.int32(), dice.int32(), dice.bytes(dice.below(20)), dice.bytes(dice.below(40))};
    }
    return types;
}

/// Mostly near the time before; also equal, earlier and huge ones.
std::uint64_t randomTime(Dice& dice, std::uint64_t before)
{
    switch (dice.below(12)) {
        case 0:
        case 1:
        case 2:
            return before;
        case 3:
            return before - dice.below(before + 1);
        case 4:
            return before + dice.below(1'000'000);
        case 5:
            return dice.oneIn(20) ? ~std::uint64_t{0} - dice.below(1'000'000) : before + dice.below(5);
        default:
            return before + dice.below(30);
    }
}

}  // namespace

Script randomScript(Dice& dice)
{
    Script script;
    script.header = randomHeader(dice, script.sound);
    if (!dice.oneIn(5)) {
        script.types = randomTypes(dice);
    }
    const std::vector<std::int32_t> codes{dice.int32(), dice.int32(), 1, 2, 0};
    const bool rangeDefs = dice.oneIn(2);
    std::uint64_t time = dice.oneIn(2) ? 10 : dice.below(200);
    script.records.resize(dice.oneIn(10) ? 0 : dice.below(dice.oneIn(5) ? 200 : 20));
    for (Stored& record : script.records) {
        record.code = dice.of(codes);
        record.data = dice.bytes(dice.oneIn(8) ? 0 : dice.below(dice.oneIn(25) ? 20'000 : 60));
        time = randomTime(dice, time);
        record.time = time;
        record.rangeDef = rangeDefs && dice.oneIn(4);
    }
    return script;
}

}  // namespace DifferentialTests
