// What the first version of the journal took of its bytes.
#include "sampledjournal.h"

#include "wordchecksum.h"

namespace Recording2::Format::Journal::Sampled {

namespace {

/// A number and the length, all of short bytes, and of longer ones 8 of every 512 and the last.
WordChecksum& addSample(WordChecksum& checksum, std::uint32_t number, std::string_view bytes)
{
    constexpr std::size_t Stride = 512;
    constexpr std::size_t Short = 64;
    constexpr std::size_t WordBytes = sizeof(std::uint64_t);
    checksum.add(std::uint64_t{number} << 32U ^ bytes.size());
    if (bytes.size() <= Short) {
        return checksum.add(bytes);
    }
    for (std::size_t i = 0; i + WordBytes <= bytes.size(); i += Stride) {
        checksum.add(getInt64(bytes.data() + i));
    }
    return checksum.add(getInt64(bytes.data() + bytes.size() - WordBytes));
}

std::uint32_t half(const WordChecksum& checksum)
{
    return checksum.value() >> 13U & 0xffffU;
}

WordChecksum ofEntry(std::uint64_t seed, std::uint64_t timeMs, std::uint32_t place)
{
    return WordChecksum(seed).add(timeMs ^ std::uint64_t{place} << 32U);
}

}  // namespace

std::uint64_t checksum(std::uint64_t seed, std::string_view bytes)
{
    return WordChecksum(seed).add(bytes).value();
}

std::uint64_t checksumOfNumber(std::uint64_t seed, std::uint64_t number)
{
    return WordChecksum(seed).add(number).value();
}

std::uint64_t checksumOfHeader(std::uint64_t seed, std::string_view record)
{
    return WordChecksum(seed).add(record.size()).add(record).value();
}

std::uint64_t checksumOfTypes(std::uint64_t nonce, std::string_view block)
{
    WordChecksum checksum(nonce);
    return addSample(checksum, 0, block).value();
}

std::uint64_t checksumOfStopTime(std::uint64_t seed, std::uint64_t milliseconds)
{
    return seed ^ milliseconds * WordChecksum::Factor;
}

bool isSound(std::uint32_t checksum, std::uint64_t seed, std::uint64_t timeMs, std::uint32_t place)
{
    return checksum != 0 && checksum >> 16U == half(ofEntry(seed, timeMs, place));
}

std::uint32_t checksumOfRecord(std::uint64_t seed, const Entry& entry, std::int32_t code, std::string_view data)
{
    WordChecksum checksum = ofEntry(seed, entry.timeMs, placeOf(entry.position, entry.channelRange));
    const std::uint32_t upper = half(checksum) << 16U;
    return upper | half(addSample(checksum, static_cast<std::uint32_t>(code), data)) | 1U;
}

}  // namespace Recording2::Format::Journal::Sampled
