// What random recordings are made of, the same on every platform.
#pragma once

#include <random>

#include "support/recordingbytes.h"
#include "support/testing.h"

namespace DifferentialTests {

using TestSupport::HeaderFields;
using TestSupport::TypeFields;

/// Random choices that are the same on every platform.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : m_engine(seed) {}

    std::uint64_t any() { return m_engine(); }
    std::uint64_t below(std::uint64_t count) { return m_engine() % count; }
    bool oneIn(std::uint64_t count) { return below(count) == 0; }
    template <typename T>
    const T& of(const std::vector<T>& items)
    {
        return items[below(items.size())];
    }
    std::int32_t int32()
    {
        const std::int32_t bits = static_cast<std::int32_t>(static_cast<std::uint32_t>(any()));
        return oneIn(2) ? bits : bits % 100;
    }
    /// Any bytes, those more often that mean something to a reader.
    std::string bytes(std::size_t count)
    {
        static const std::string special("#\0#0123456789-+ \n\r\x1a", 19);
        std::string text(count, '\0');
        std::generate(text.begin(), text.end(),
                      [this] { return oneIn(3) ? special[below(special.size())] : static_cast<char>(below(256)); });
        return text;
    }
    std::string name(std::size_t longest)
    {
        std::string text = bytes(below(longest + 1));
        std::replace(text.begin(), text.end(), '\0', 'n');
        return text;
    }

private:
    std::mt19937_64 m_engine;
};

struct Stored {
    std::int32_t code = 0;
    std::string data;
    std::uint64_t time = 0;
    bool rangeDef = false;
};

/// What one random recording is made of.
struct Script {
    HeaderFields header;
    std::optional<std::vector<TypeFields>> types;
    std::vector<Stored> records;
    bool sound = true;  ///< the header record fits into its area and its texts hold no NUL
};

inline float randomFloat(Dice& dice)
{
    const auto mantissa = static_cast<float>(dice.int32());
    return dice.oneIn(2) ? mantissa : mantissa * 1e-7F;
}

inline HeaderFields randomHeader(Dice& dice, bool& sound)
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

inline std::vector<TypeFields> randomTypes(Dice& dice)
{
    std::vector<TypeFields> types(dice.below(12));
    for (TypeFields& type : types) {
        type = {dice.int32(), dice.int32(), dice.bytes(dice.below(20)), dice.bytes(dice.below(40))};
    }
    return types;
}

/// Mostly near the time before; also equal, earlier and huge ones.
inline std::uint64_t randomTime(Dice& dice, std::uint64_t before)
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

inline Script randomScript(Dice& dice)
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
