// Parsing packets and the cells of their spectra, which are written as hexadecimal digits.
#include "sources/rig/rigspectrum.h"

#include <cmath>

#include <nlohmann/json.hpp>

#include "input/fields.h"

namespace RecStation {

namespace {

using RigJson = nlohmann::json;

constexpr std::size_t MostCells = 32'768;  // a datagram holds no more

[[noreturn]] void failPacket(const std::string& why)
{
    throw RigPacketError(why);
}

const RigJson& needed(const RigJson& object, const char* key)
{
    const auto found = object.find(key);
    if (found == object.end()) {
        failPacket(std::string("a packet has no \"") + key + "\"");
    }
    return *found;
}

double finite(const RigJson& object, const char* key)
{
    const RigJson& value = needed(object, key);
    if (!value.is_number() || !std::isfinite(value.get<double>())) {
        failPacket(std::string("\"") + key + "\" of a packet is no number");
    }
    return value.get<double>();
}

std::string textOf(const RigJson& object, const char* key)
{
    constexpr std::size_t Longest = 64;
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get_ref<const std::string&>().substr(0, Longest) : "";
}

int digit(char c)
{
    constexpr int Ten = 10;
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | ' ');
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + Ten : -1;
}

// Where the raw levels lie: from minLevel at minStrength dB to maxLevel at maxStrength dB.
struct Scale {
    double fromLevel;
    double fromDb;
    double dbPerLevel;
};

Scale scaleOf(const RigJson& json, RigSpectrum& spectrum)
{
    spectrum.lowestDb = finite(json, "minStrength");
    spectrum.highestDb = finite(json, "maxStrength");
    const double lowest = finite(json, "minLevel");
    const double highest = finite(json, "maxLevel");
    if (!(highest > lowest && spectrum.highestDb > spectrum.lowestDb)) {
        failPacket("the levels of a packet have no range");
    }
    return {lowest, spectrum.lowestDb, (spectrum.highestDb - spectrum.lowestDb) / (highest - lowest)};
}

std::vector<float> cellsOf(const RigJson& json, const Scale& scale)
{
    constexpr int PerDigit = 16;
    const RigJson& data = needed(json, "data");
    if (!data.is_string()) {
        failPacket("\"data\" of a packet is no text");
    }
    const auto& digits = data.get_ref<const std::string&>();
    const double length = finite(json, "length");
    if (digits.size() % 2 != 0 || digits.size() < 4 || digits.size() > 2 * MostCells ||
        length * 2 != static_cast<double>(digits.size())) {
        failPacket("\"data\" of a packet has not the length that it tells");
    }
    std::vector<float> cells;
    cells.reserve(digits.size() / 2);
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const int high = digit(digits[i]);
        const int low = digit(digits[i + 1]);
        if (high < 0 || low < 0) {
            failPacket("\"data\" of a packet is not hexadecimal");
        }
        cells.push_back(
            static_cast<float>(scale.fromDb + (high * PerDigit + low - scale.fromLevel) * scale.dbPerLevel));
    }
    return cells;
}

RigSpectrum spectrumOf(const RigJson& json)
{
    constexpr double HighestHz = 1e12;
    if (!json.is_object()) {
        failPacket("a spectrum of a packet is no object");
    }
    RigSpectrum spectrum;
    spectrum.lowHz = finite(json, "lowFreq");
    spectrum.highHz = finite(json, "highFreq");
    if (!(spectrum.lowHz >= 0 && spectrum.highHz > spectrum.lowHz && spectrum.highHz <= HighestHz)) {
        failPacket("the frequencies of a packet are no band");
    }
    spectrum.levelsDb = cellsOf(json, scaleOf(json, spectrum));
    return spectrum;
}

}  // namespace

RigPacket parseRigPacket(std::string_view bytes)
{
    // In a packet of a datagram's size nothing can be deep enough to matter.
    const RigJson json = RigJson::parse(bytes.begin(), bytes.end(), nullptr, false);
    if (!json.is_object()) {
        failPacket("a packet is no JSON: " + shown(bytes));
    }
    RigPacket packet;
    if (const auto rig = json.find("rig"); rig != json.end() && rig->is_object()) {
        packet.rig = textOf(*rig, "id") + " " + textOf(*rig, "name");
    }
    if (const auto seq = json.find("seq"); seq != json.end() && seq->is_number_unsigned()) {
        packet.seq = seq->get<std::uint32_t>();
    }
    const auto spectra = json.find("spectra");
    if (spectra != json.end() && spectra->is_array() && !spectra->empty()) {
        packet.spectrum = spectrumOf(spectra->front());
    }
    return packet;
}

}  // namespace RecStation
