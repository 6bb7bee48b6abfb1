// Decoding WAV with libsndfile; its header is looked through for what that library does not tell.
#include "sources/iq/wavsamples.h"

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

#include "sources/iq/recordername.h"
#include "sources/iq/wavheader.h"

namespace RecStation {

namespace {

constexpr int IqChannels = 2;

struct CloseWav {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using WavFile = std::unique_ptr<SNDFILE, CloseWav>;

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

bool isPlain(int format)
{
    static constexpr std::array Plain = {SF_FORMAT_PCM_U8, SF_FORMAT_PCM_16, SF_FORMAT_PCM_24,
                                         SF_FORMAT_PCM_32, SF_FORMAT_FLOAT,  SF_FORMAT_DOUBLE};
    return std::find(Plain.begin(), Plain.end(), format & SF_FORMAT_SUBMASK) != Plain.end();
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

WavFile openFile(const QString& file, SF_INFO& info)
{
    WavFile wav(sf_open(QFile::encodeName(file).constData(), SFM_READ, &info));
    if (!wav) {
        failWav(file, std::string("cannot be read as WAV: ") + sf_strerror(nullptr));
    }
    if (info.channels != IqChannels) {
        failWav(file, "has " + std::to_string(info.channels) + (info.channels == 1 ? " channel" : " channels") +
                          "; samples of IQ are WAV of two, I and Q");
    }
    if (!isPlain(info.format)) {
        failWav(file, "is compressed WAV, only numbers of 8, 16, 24, 32 or 64 bits can be IQ");
    }
    return wav;
}

/// The library takes a length of 0 at its word; what was never finished is opened as the bytes that it is.
WavFile openUnfinished(const QString& file, const WavHeader& header, SF_INFO info)
{
    info.format = SF_FORMAT_RAW | SF_ENDIAN_LITTLE | (info.format & SF_FORMAT_SUBMASK);
    WavFile wav(sf_open(QFile::encodeName(file).constData(), SFM_READ, &info));
    auto offset = static_cast<sf_count_t>(header.dataOffset);
    if (!wav || sf_command(wav.get(), SFC_SET_RAW_START_OFFSET, &offset, sizeof offset) != 0) {
        failWav(file, std::string("cannot be read: ") + sf_strerror(wav.get()));
    }
    return wav;
}

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
    SF_INFO info{};
    static_cast<void>(openFile(file, info));
    if (header.rateHz == 0 || header.blockBytes == 0) {
        failWav(file, "cannot be read as WAV: it has no rate");
    }
    KnownWav out;
    out.known = knownByName(QFileInfo(file).completeBaseName());
    out.known.format = "cf32_le";
    out.known.rateHz = header.rateHz;
    KnownCapture& capture = out.known.captures.front();
    capture.centreHz = header.centreHz ? header.centreHz : capture.centreHz;
    capture.startTime = header.startTime ? header.startTime : capture.startTime;
    const auto size = static_cast<std::uint64_t>(bytes.size());
    const std::uint64_t left = size > header.dataOffset ? size - header.dataOffset : 0;
    out.neverFinished = !header.dataBytes;
    out.cut = header.dataBytes.value_or(0) > left;
    out.unknownAuxi = header.hasAuxi && !header.startTime && !header.centreHz;
    capture.samples = std::min(header.dataBytes.value_or(left), left) / header.blockBytes;
    return out;
}

ByteInput openWav(const QString& file)
{
    QFile bytes(file);
    const WavHeader header = headerOf(file, bytes);
    SF_INFO info{};
    std::shared_ptr<SNDFILE> wav = openFile(file, info);
    if (!header.dataBytes) {
        wav = openUnfinished(file, header, info);
    }
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
            const sf_count_t count = sf_readf_float(wav.get(), state.floats.data(), PieceSamples);
            state.floats.resize(static_cast<std::size_t>(std::max<sf_count_t>(0, count)) * IqChannels);
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
