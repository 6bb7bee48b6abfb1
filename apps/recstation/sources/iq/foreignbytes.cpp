// The first bytes of packed files, archives and sound files.
#include "sources/iq/knownsamples.h"

#include <algorithm>
#include <array>

namespace RecStation {

namespace {

struct Beginning {
    std::string_view bytes;
    const char* clause;
};

using std::string_view_literals::operator""sv;

// Three bytes and more: samples begin like that once in sixteen million recordings.
constexpr std::array Beginnings = {
    Beginning{"\x1F\x8B\x08"sv, "is packed by gzip: unpack it first"},
    Beginning{"\x28\xB5\x2F\xFD"sv, "is packed by Zstandard: unpack it first"},
    Beginning{"\xFD\x37zXZ\0"sv, "is packed by xz: unpack it first"},
    Beginning{"BZh91AY"sv, "is packed by bzip2: unpack it first"},
    Beginning{"PK\x03\x04"sv, "is a ZIP archive: unpack it first"},
    Beginning{"fLaC"sv, "is FLAC: make a WAV file of it first"},
    Beginning{"riff\x2E\x91\xCF\x11"sv, "is Wave64: make a file of WAV or RF64 of it first"},
    Beginning{"RIFX"sv, "is a WAV file of big-endian numbers: make an ordinary one of it first"},
};

}  // namespace

std::string whyNoSamples(std::string_view first)
{
    const auto* const found = std::find_if(Beginnings.begin(), Beginnings.end(), [first](const Beginning& beginning) {
        return first.starts_with(beginning.bytes);
    });
    if (found != Beginnings.end()) {
        return found->clause;
    }
    const bool wav = (first.starts_with("RIFF") || first.starts_with("RF64")) && first.find("WAVE") == 8;
    return wav ? "is WAV, which can only be read from a file: name that" : "";
}

}  // namespace RecStation
