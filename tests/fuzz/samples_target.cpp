// Files of IQ samples as others wrote them: WAV headers, SigMF metadata, names; packed texts; an rtl_tcp server's
// greeting.
#include <QString>

#include "input/unpacking.h"
#include "scratchfile.h"
#include "sources/iq/knownsamples.h"
#include "sources/iq/wavheader.h"
#include "sources/rtltcp/rtltcpreceiver.h"
#include "target.h"

namespace Fuzzing {

namespace {

void readHeader(const std::string& input)
{
    const RecStation::ReadAt readAt = [&input](std::uint64_t offset, char* buffer, std::size_t size) {
        return offset > input.size() ? std::size_t{0} : input.copy(buffer, size, static_cast<std::size_t>(offset));
    };
    static_cast<void>(RecStation::beginsAsWav(readAt));
    try {
        const auto header = RecStation::readWavHeader(readAt);
        require(header.dataOffset <= input.size(), "samples begin behind the end of the file");
        require(!header.startTime || header.hasAuxi, "a time comes from nowhere");
    } catch (const std::runtime_error& error) {
        require(*error.what() != '\0', "an error says nothing");
    }
}

void readMetadata(const std::string& input)
{
    const ScratchFile file(input);
    try {
        static_cast<void>(RecStation::samplesOfSigMf(QString::fromStdString(file.path())));
        const auto known = RecStation::readSigMf(QString::fromStdString(file.path()));
        require(!known.captures.empty(), "there is no capture");
        const auto before = [](const auto& a, const auto& b) { return a.firstByte < b.firstByte; };
        require(std::is_sorted(known.captures.begin(), known.captures.end(), before), "captures lie in disorder");
    } catch (const std::runtime_error& error) {
        require(*error.what() != '\0', "an error says nothing");
    }
}

void unpackAll(const std::string& input)
{
    constexpr std::size_t Most = 16'777'216;  // a few bytes may be packed zeros without an end
    std::size_t position = 0;
    const auto unpacked = RecStation::unpackedWhereNeeded(
        [&](char* buffer, std::size_t size) {
            const std::size_t count = input.copy(buffer, std::min<std::size_t>(size, 64), position);
            position += count;
            return count;
        },
        "input");
    std::vector<char> piece(4096);
    std::size_t all = 0;
    try {
        while (const std::size_t count = unpacked(piece.data(), piece.size())) {
            require(count <= piece.size(), "more bytes than fit");
            all += count;
            if (all > Most) {
                break;
            }
        }
    } catch (const std::runtime_error& error) {
        require(*error.what() != '\0', "an error says nothing");
    }
}

}  // namespace

void runSamples(const std::string& input)
{
    readHeader(input);
    readMetadata(input);
    unpackAll(input);
    const auto known = RecStation::knownByName(QString::fromStdString(input));
    require(!known.rateHz || *known.rateHz > 0, "a name tells a rate of 0");
    static_cast<void>(RecStation::whyNoSamples(input));
    static_cast<void>(RecStation::isRtlTcpGreeting(input));
}

std::vector<std::string> samplesSeeds()
{
    using namespace std::string_literals;
    const std::string format = "fmt \x10\0\0\0\1\0\2\0\x80\xbb\0\0\0\xee\2\0\4\0\x10\0"s;
    const std::string time = "\xe4\7\1\0\4\0\2\0\3\0\4\0\5\0\xfa\0"s;
    const std::string auxi = "auxi\x44\0\0\0"s + time + time + "\x60\x56\x6c\0"s + std::string(32, '\0');
    return {
        "RIFF\x90\0\0\0WAVE"s + format + auxi + "data\x8\0\0\0\1\2\3\4\5\6\7\x8"s,
        "RF64\xff\xff\xff\xffWAVEds64\x1c\0\0\0\0\0\0\0\0\0\0\0\x8\0\0\0\0\0\0\0\2\0\0\0\0\0\0\0\0\0\0\0"s + format +
            "data\xff\xff\xff\xff\1\2\3\4\5\6\7\x8"s,
        R"({"global": {"core:datatype": "ci8", "core:sample_rate": 64000, "core:offset": 10}, "captures": [)"
        R"({"core:sample_start": 10, "core:header_bytes": 3, "core:frequency": 1e6, "core:datetime": )"
        R"("2020-01-02T03:04:05Z"}, {"core:sample_start": 74, "core:frequency": 2e6}]})",
        "RIFF\x90\0\0\0WAVE"s + format +
            "auxi\x3e\0\0\0<Definition RadioCenterFreq=\"7100000\" UTCSeconds=\"1577934245\" data\x8\0\0\0\1\2\3\4\5\6\7\x8"s,
        "HDSDR_20200102_030405Z_7100kHz_RF",
        "RTL-SDR-20200102_030405-433_92MHz-1MSps-1MHz",
        "baseband_7100000Hz_03-04-05_02-01-2020",
        "gqrx_20200102_030405_7100000_1800000_fc",
        "RTL0\0\0\0\5\0\0\0\x1d"s,
        "\x1f\x8b\x08\0\0\0\0\0\2\3\xcb\xcf\x4b\xe5\2\0\x87\x30\xf6\x1f\4\0\0\0"s,
        "\x28\xb5\x2f\xfd\x04\x58\x21\0\0one\n\x1a\xb7\xb7\x1f"s};
}

}  // namespace Fuzzing
