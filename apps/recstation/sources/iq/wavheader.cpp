// Going from chunk to chunk of a WAV file, in bounded steps whatever it says of their sizes.
#include "sources/iq/wavheader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include <QDateTime>
#include <QtEndian>

namespace RecStation {

namespace {

constexpr std::size_t WordBytes = 2;
constexpr std::uint32_t SizeElsewhere = std::numeric_limits<std::uint32_t>::max();

template <std::size_t Size>
class Bytes {
public:
    bool read(const ReadAt& readAt, std::uint64_t offset) { return readAt(offset, m_bytes.data(), Size) == Size; }
    [[nodiscard]] std::string_view tag(std::size_t at) const { return {m_bytes.data() + at, 4}; }
    [[nodiscard]] std::uint16_t word(std::size_t at) const { return number<quint16>(at); }
    [[nodiscard]] std::uint32_t dword(std::size_t at) const { return number<quint32>(at); }
    [[nodiscard]] std::uint64_t qword(std::size_t at) const { return number<quint64>(at); }

private:
    template <typename Number>
    [[nodiscard]] Number number(std::size_t at) const
    {
        return qFromLittleEndian<Number>(m_bytes.data() + at);
    }

    std::array<char, Size> m_bytes{};
};

// The digits behind NAME=" in a text.
std::optional<unsigned long long> attributeIn(const std::string& text, const std::string& name)
{
    const std::size_t found = text.find(name + "=\"");
    if (found == std::string::npos) {
        return std::nullopt;
    }
    const char* const begin = text.data() + found + name.size() + 2;
    unsigned long long number = 0;
    const auto [end, error] = std::from_chars(begin, text.data() + text.size(), number);
    return error == std::errc() && number > 0 ? std::optional(number) : std::nullopt;
}

// Some write XML in one or two bytes a letter, of which the second is 0.
void readXmlAuxi(const ReadAt& readAt, std::uint64_t offset, std::uint64_t size, WavHeader& out)
{
    constexpr std::uint64_t Longest = 65'536;
    constexpr unsigned long long MicrosecondsPerSecond = 1'000'000;
    constexpr unsigned long long LastSecond = 253'402'300'799;  // of the year 9999
    std::string text(static_cast<std::size_t>(std::min(size, Longest)), '\0');
    text.resize(readAt(offset, text.data(), text.size()));
    text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
    if (const auto hertz = attributeIn(text, "RadioCenterFreq")) {
        out.centreHz = static_cast<double>(*hertz);
    }
    if (const auto seconds = attributeIn(text, "UTCSeconds"); seconds && *seconds <= LastSecond) {
        out.startTime = *seconds * MicrosecondsPerSecond;
    }
}

// Two times of eight words each (year, month, day of the week, day, hour, minute, second, millisecond), then the
// receiver's frequency.
void readAuxi(const ReadAt& readAt, std::uint64_t offset, std::uint64_t size, WavHeader& out)
{
    constexpr std::size_t Needed = 36;
    constexpr std::size_t FrequencyAt = 32;
    constexpr unsigned long long MicrosecondsPerMillisecond = 1000;
    out.hasAuxi = true;
    Bytes<Needed> bytes;
    if (size < Needed || !bytes.read(readAt, offset)) {
        return;
    }
    const auto field = [&bytes](std::size_t index) { return static_cast<int>(bytes.word(index * WordBytes)); };
    const QDate day(field(0), field(1), field(3));
    const QTime time(field(4), field(5), field(6), field(7));
    const bool undated = bytes.dword(0) == 0;  // some write the frequency alone
    if (!undated && (!day.isValid() || !time.isValid())) {
        return readXmlAuxi(readAt, offset, size, out);
    }
    const qint64 milliseconds = undated ? 0 : QDateTime(day, time, Qt::UTC).toMSecsSinceEpoch();
    if (milliseconds > 0) {
        out.startTime = static_cast<unsigned long long>(milliseconds) * MicrosecondsPerMillisecond;
    }
    if (bytes.dword(FrequencyAt) > 0) {
        out.centreHz = static_cast<double>(bytes.dword(FrequencyAt));
    }
}

void readFormat(const ReadAt& readAt, std::uint64_t offset, std::uint64_t size, WavHeader& out)
{
    constexpr std::size_t Needed = 16;
    constexpr std::uint16_t KindFollows = 0xFFFE;
    constexpr std::uint64_t KindAt = 24;
    Bytes<Needed> bytes;
    if (size < Needed || !bytes.read(readAt, offset)) {
        throw std::runtime_error("its chunk \"fmt \" is cut off");
    }
    out.kind = bytes.word(0);
    out.channels = bytes.word(2);
    out.rateHz = bytes.dword(4);
    out.blockBytes = bytes.word(12);
    Bytes<WordBytes> kind;
    if (out.kind == KindFollows && size >= KindAt + WordBytes && kind.read(readAt, offset + KindAt)) {
        out.kind = kind.word(0);
    }
}

std::uint64_t longDataSize(const ReadAt& readAt, std::uint64_t offset, std::uint64_t size)
{
    constexpr std::size_t Needed = 16;
    constexpr std::size_t DataSizeAt = 8;
    Bytes<Needed> bytes;
    if (size < Needed || !bytes.read(readAt, offset)) {
        throw std::runtime_error("its chunk \"ds64\" is cut off");
    }
    return bytes.qword(DataSizeAt);
}

// A length that was not known when the header was written is 0, or as much as its field holds.
std::optional<std::uint64_t> knownLength(std::uint64_t size)
{
    return size == 0 || size > std::numeric_limits<std::uint64_t>::max() / 2 ? std::nullopt : std::optional(size);
}

bool isTag(std::string_view tag)
{
    return std::all_of(tag.begin(), tag.end(), [](char letter) { return letter >= ' ' && letter <= '~'; });
}

}  // namespace

bool beginsAsWav(const ReadAt& readAt)
{
    Bytes<12> start;
    return start.read(readAt, 0) && (start.tag(0) == "RIFF" || start.tag(0) == "RF64") && start.tag(8) == "WAVE";
}

WavHeader readWavHeader(const ReadAt& readAt)
{
    constexpr std::uint64_t HeadBytes = 8;
    constexpr std::uint64_t FirstChunk = 12;
    constexpr int MostChunks = 1000;
    WavHeader out;
    std::uint64_t longSize = 0;
    bool hasFormat = false;
    Bytes<HeadBytes> head;
    std::uint64_t next = FirstChunk;
    for (int i = 0; i < MostChunks && head.read(readAt, next); ++i) {
        const std::uint64_t begin = next + HeadBytes;
        std::uint64_t size = head.dword(4);
        if (out.dataBytes && *out.dataBytes % 2 == 0 && !isTag(head.tag(0))) {
            out.dataBytes.reset();  // more samples, of which the header was not told any more
        } else if (head.tag(0) == "ds64") {
            longSize = longDataSize(readAt, begin, size);
        } else if (head.tag(0) == "fmt ") {
            readFormat(readAt, begin, size, out);
            hasFormat = true;
        } else if (head.tag(0) == "auxi") {
            readAuxi(readAt, begin, size, out);
        } else if (head.tag(0) == "data") {
            if (out.dataOffset > 0) {
                throw std::runtime_error("it has more than one chunk \"data\"");
            }
            out.dataOffset = begin;
            out.dataBytes = knownLength(size == SizeElsewhere ? longSize : size);
            size = out.dataBytes.value_or(SizeElsewhere);
        }
        if (size > std::numeric_limits<std::uint64_t>::max() - begin - 1 || (out.dataOffset > 0 && !out.dataBytes)) {
            break;  // nothing can follow
        }
        next = begin + size + size % 2;
    }
    if (!hasFormat || out.dataOffset == 0) {
        throw std::runtime_error(hasFormat ? "it has no chunk \"data\"" : "it has no chunk \"fmt \"");
    }
    return out;
}

}  // namespace RecStation
