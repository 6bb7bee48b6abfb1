// Going from chunk to chunk of WAV files, in bounded steps whatever they say of their sizes, and decoding their samples
// with libsndfile.
#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <sndfile.h>

#include <system/stopsignal.h>

#include "sources/iq/knownsamples.h"
#include "sources/iq/wavheader.h"

namespace RecStation {

// ---- the header

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

// ---- the samples

namespace {

constexpr int IqChannels = 2;

[[noreturn]] void failWav(const QString& file, const std::string& problem)
{
    throw std::runtime_error("iq: " + file.toStdString() + " " + problem);
}

ReadAt readAtOf(QFile& file)
{
    return [&file](std::uint64_t offset, char* buffer, std::size_t size) -> std::size_t {
        if (offset > static_cast<std::uint64_t>(file.size()) || !file.seek(static_cast<qint64>(offset))) {
            return 0;
        }
        return static_cast<std::size_t>(std::max<qint64>(0, file.read(buffer, static_cast<qint64>(size))));
    };
}

WavHeader headerOf(const QString& file, QFile& bytes)
{
    if (!bytes.open(QIODevice::ReadOnly)) {
        failWav(file, "cannot be opened: " + bytes.errorString().toStdString());
    }
    try {
        return readWavHeader(readAtOf(bytes));
    } catch (const std::runtime_error& error) {
        failWav(file, std::string("cannot be read as WAV: ") + error.what());
    }
}

/// How libsndfile calls the numbers.
int subtypeOf(const QString& file, const WavHeader& header)
{
    static constexpr std::array<int, 5> Integers = {0, SF_FORMAT_PCM_U8, SF_FORMAT_PCM_16, SF_FORMAT_PCM_24,
                                                    SF_FORMAT_PCM_32};
    static constexpr std::array<int, 9> Floats = {0, 0, 0, 0, SF_FORMAT_FLOAT, 0, 0, 0, SF_FORMAT_DOUBLE};
    if (header.channels != IqChannels) {
        failWav(file, "has " + std::to_string(header.channels) + (header.channels == 1 ? " channel" : " channels") +
                          "; samples of IQ are WAV of two, I and Q");
    }
    const std::size_t bytes = header.blockBytes % IqChannels == 0 ? header.blockBytes / IqChannels : 0;
    int subtype = 0;
    if (header.kind == WavIntegers && bytes < Integers.size()) {
        subtype = Integers.at(bytes);
    } else if (header.kind == WavFloats && bytes < Floats.size()) {
        subtype = Floats.at(bytes);
    }
    if (subtype == 0) {
        failWav(file, "is compressed WAV, only numbers of 8, 16, 24, 32 or 64 bits can be IQ");
    }
    return subtype;
}

/// Of the chunk "data" as much as the file has.
std::uint64_t dataBytesOf(const WavHeader& header, const QFile& file)
{
    const auto size = static_cast<std::uint64_t>(file.size());
    const std::uint64_t left = size > header.dataOffset ? size - header.dataOffset : 0;
    return std::min(header.dataBytes.value_or(left), left);
}

/// The bytes of the samples and nothing else, so that no header misleads the library.
class WavData {
public:
    explicit WavData(const QString& name) : m_file(name)
    {
        const WavHeader header = headerOf(name, m_file);
        m_begin = header.dataOffset;
        m_size = dataBytesOf(header, m_file);
        SF_INFO info{};
        info.format = SF_FORMAT_RAW | SF_ENDIAN_LITTLE | subtypeOf(name, header);
        info.channels = IqChannels;
        info.samplerate = 1;  // of no consequence
        SF_VIRTUAL_IO calls{&WavData::length, &WavData::seek, &WavData::read, &WavData::write, &WavData::tell};
        m_file.seek(static_cast<qint64>(m_begin));
        m_sound = sf_open_virtual(&calls, SFM_READ, &info, this);
        if (m_sound == nullptr) {
            failWav(name, std::string("cannot be read: ") + sf_strerror(nullptr));
        }
    }
    ~WavData() { sf_close(m_sound); }
    WavData(const WavData&) = delete;
    WavData& operator=(const WavData&) = delete;

    /// Samples of I and Q: how many there were. @throws std::runtime_error
    std::size_t readSamples(std::vector<float>& floats)
    {
        const auto wanted = static_cast<sf_count_t>(floats.size() / IqChannels);
        const sf_count_t count = sf_readf_float(m_sound, floats.data(), wanted);
        if (m_file.error() != QFileDevice::NoError) {
            failWav(m_file.fileName(), "cannot be read: " + m_file.errorString().toStdString());
        }
        return static_cast<std::size_t>(std::max<sf_count_t>(0, count));
    }

private:
    static WavData& of(void* data) { return *static_cast<WavData*>(data); }
    static sf_count_t length(void* data) { return static_cast<sf_count_t>(of(data).m_size); }
    static sf_count_t tell(void* data)
    {
        return static_cast<sf_count_t>(static_cast<std::uint64_t>(of(data).m_file.pos()) - of(data).m_begin);
    }
    static sf_count_t seek(sf_count_t offset, int whence, void* data)
    {
        const sf_count_t from = whence == SEEK_CUR ? tell(data) : whence == SEEK_END ? length(data) : 0;
        of(data).m_file.seek(static_cast<qint64>(of(data).m_begin) + from + offset);
        return tell(data);
    }
    static sf_count_t read(void* buffer, sf_count_t count, void* data)
    {
        const sf_count_t left = std::max<sf_count_t>(0, length(data) - tell(data));
        return std::max<sf_count_t>(0, of(data).m_file.read(static_cast<char*>(buffer), std::min(count, left)));
    }
    static sf_count_t write(const void* /*buffer*/, sf_count_t /*count*/, void* /*data*/) { return 0; }

    QFile m_file;
    std::uint64_t m_begin = 0;
    std::uint64_t m_size = 0;
    SNDFILE* m_sound = nullptr;
};

}  // namespace

bool isWav(const QString& file)
{
    QFile bytes(file);
    return QFileInfo(file).isFile() && bytes.open(QIODevice::ReadOnly) && beginsAsWav(readAtOf(bytes));
}

KnownWav readWav(const QString& file)
{
    QFile bytes(file);
    const WavHeader header = headerOf(file, bytes);
    static_cast<void>(subtypeOf(file, header));
    KnownWav out;
    out.known = knownByName(QFileInfo(file).completeBaseName());
    out.known.format = "cf32_le";
    out.known.rateHz = header.rateHz > 0 ? std::optional<double>(header.rateHz) : std::nullopt;
    KnownCapture& capture = out.known.captures.front();
    capture.centreHz = header.centreHz ? header.centreHz : capture.centreHz;
    capture.startTime = header.startTime ? header.startTime : capture.startTime;
    out.known.localTime = out.known.localTime && !header.startTime;
    const std::uint64_t size = dataBytesOf(header, bytes);
    out.neverFinished = !header.dataBytes;
    out.cut = header.dataBytes.value_or(0) > size;
    out.unknownAuxi = header.hasAuxi && !header.startTime && !header.centreHz;
    capture.samples = size / header.blockBytes;
    return out;
}

ByteInput openWav(const QString& file)
{
    const auto wav = std::make_shared<WavData>(file);
    struct State {
        std::vector<float> floats;
        std::size_t position = 0;  // bytes
    };
    return [wav, state = State()](char* buffer, std::size_t size) mutable -> std::size_t {
        constexpr std::size_t PieceSamples = 8192;
        if (state.position == state.floats.size() * sizeof(float)) {
            if (System::StopSignal::requested()) {
                return 0;
            }
            state.floats.resize(PieceSamples * IqChannels);
            state.floats.resize(wav->readSamples(state.floats) * IqChannels);
            state.position = 0;
        }
        const std::size_t count = std::min(size, state.floats.size() * sizeof(float) - state.position);
        if (count > 0) {
            std::memcpy(buffer, reinterpret_cast<const char*>(state.floats.data()) + state.position, count);
        }
        state.position += count;
        return count;
    };
}

}  // namespace RecStation
