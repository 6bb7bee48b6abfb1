// Finding the samples of WAV files, whatever their headers look like, and decoding them with libsndfile.

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <vector>

#include <QFile>
#include <QFileInfo>

#include <sndfile.h>

#include <system/stopsignal.h>

#include "sources/iq/knownsamples.h"
#include "sources/iq/wavheader.h"

namespace RecStation {

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
