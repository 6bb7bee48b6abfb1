// What the first version of the journal took of its bytes.
#include "sampledjournal.h"

#include "wordcheck.h"

namespace Recording2::Format::Journal::Sampled {

namespace {

/// A number and the length, all of short bytes, and of longer ones 8 of every 512 and the last.
WordCheck& addSample(WordCheck& check, std::uint32_t number, std::string_view bytes)
{
    constexpr std::size_t Stride = 512;
    constexpr std::size_t Short = 64;
    constexpr std::size_t WordBytes = sizeof(std::uint64_t);
    check.add(std::uint64_t{number} << 32U ^ bytes.size());
    if (bytes.size() <= Short) {
        return check.add(bytes);
    }
    for (std::size_t i = 0; i + WordBytes <= bytes.size(); i += Stride) {
        check.add(getInt64(bytes.data() + i));
    }
    return check.add(getInt64(bytes.data() + bytes.size() - WordBytes));
}

std::uint32_t half(const WordCheck& check)
{
    return check.value() >> 13U & 0xffffU;
}

WordCheck ofEntry(std::uint64_t seed, std::uint64_t timeMs, std::uint32_t place)
{
    return WordCheck(seed).add(timeMs ^ std::uint64_t{place} << 32U);
}

}  // namespace

std::uint64_t check(std::uint64_t seed, std::string_view bytes)
{
    return WordCheck(seed).add(bytes).value();
}

std::uint64_t checkOfNumber(std::uint64_t seed, std::uint64_t number)
{
    return WordCheck(seed).add(number).value();
}

std::uint64_t checkOfHeader(std::uint64_t seed, std::string_view record)
{
    return WordCheck(seed).add(record.size()).add(record).value();
}

std::uint64_t checkOfTypes(std::uint64_t salt, std::string_view block)
{
    WordCheck check(salt);
    return addSample(check, 0, block).value();
}

std::uint64_t checkOfStopTime(std::uint64_t seed, std::uint64_t milliseconds)
{
    return seed ^ milliseconds * WordCheck::Factor;
}

bool isSound(std::uint32_t check, std::uint64_t seed, std::uint64_t timeMs, std::uint32_t place)
{
    return check != 0 && check >> 16U == half(ofEntry(seed, timeMs, place));
}

std::uint32_t checkOfRecord(std::uint64_t seed, const Entry& entry, std::int32_t code, std::string_view data)
{
    WordCheck check = ofEntry(seed, entry.timeMs, placeOf(entry.position, entry.channelRange));
    const std::uint32_t upper = half(check) << 16U;
    return upper | half(addSample(check, static_cast<std::uint32_t>(code), data)) | 1U;
}

}  // namespace Recording2::Format::Journal::Sampled
