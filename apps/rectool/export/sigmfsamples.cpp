// Finding IQ samples and their metadata, and counting them.
#include "sigmfsamples.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include <QDateTime>

#include "printing/output.h"
#include "system/filenames.h"

namespace RecTool {

namespace fs = std::filesystem;

namespace {

struct SuffixFormat {
    std::string_view suffix;
    const char* format;
};

constexpr std::array<SuffixFormat, 10> SuffixFormats{{{".cu8", "cu8"},
                                                      {".ci8", "ci8"},
                                                      {".cs8", "ci8"},
                                                      {".ci16", "ci16_le"},
                                                      {".cs16", "ci16_le"},
                                                      {".sc16", "ci16_le"},
                                                      {".cf32", "cf32_le"},
                                                      {".fc32", "cf32_le"},
                                                      {".fc32le", "cf32_le"},
                                                      {".cfile", "cf32_le"}}};

std::string formatBySuffix(const fs::path& file)
{
    for (const SuffixFormat& known : SuffixFormats) {
        if (known.suffix == utf8(file.extension())) {
            return known.format;
        }
    }
    return "";
}

/// Of a sample, I and Q together; 0 for a format that is none.
std::uint64_t bytesOf(const std::string& dataType)
{
    const std::size_t end = dataType.find('_');
    const std::string numbers = dataType.substr(0, end);
    const std::string order = end == std::string::npos ? "" : dataType.substr(end);
    const bool isComplex = numbers.substr(0, 1) == "c";
    if ((!isComplex && numbers.substr(0, 1) != "r") || (!order.empty() && order != "_le" && order != "_be")) {
        return 0;
    }
    constexpr std::array<std::pair<std::string_view, std::uint64_t>, 8> Kinds{
        {{"f32", 4}, {"f64", 8}, {"i32", 4}, {"i16", 2}, {"u32", 4}, {"u16", 2}, {"i8", 1}, {"u8", 1}}};
    for (const auto& [kind, bytes] : Kinds) {
        if (numbers.substr(1) == kind) {
            return isComplex ? 2 * bytes : bytes;
        }
    }
    return 0;
}

/// "2026-11-21T08:30:00.250010Z" in microseconds since 1970.
std::optional<std::int64_t> usOf(const std::string& text)
{
    constexpr std::int64_t UsPerMs = 1000;
    constexpr int Digits = 6;
    const std::size_t point = text.find('.');
    const QDateTime second =
        QDateTime::fromString(QString::fromStdString(text.substr(0, point)).remove('Z') + 'Z', Qt::ISODate);
    if (!second.isValid() || text.empty() || text.back() != 'Z') {
        return std::nullopt;
    }
    std::int64_t us = 0;
    for (std::size_t i = 0; i < Digits; ++i) {
        const std::size_t at = point == std::string::npos ? text.size() : point + 1 + i;
        const bool isDigit = at < text.size() && text[at] >= '0' && text[at] <= '9';
        us = us * 10 + (isDigit ? text[at] - '0' : 0);
    }
    return second.toMSecsSinceEpoch() * UsPerMs + us;
}

/// @return why the metadata cannot be used; empty when they can
std::string takeMetadata(IqSamples& samples)
{
    const Json* global = samples.metadata.find("global");
    const Json* captures = samples.metadata.find("captures");
    const Json* annotations = samples.metadata.find("annotations");
    if (global == nullptr || !global->isObject() || captures == nullptr || !captures->isArray() ||
        (annotations != nullptr && !annotations->isArray())) {
        return "it has no object \"global\" and no lists \"captures\" and \"annotations\"";
    }
    const auto textOf = [](const Json* json) { return json == nullptr ? std::nullopt : json->text(); };
    const auto numberOf = [](const Json* json) { return json == nullptr ? std::nullopt : json->number(); };
    samples.dataType = textOf(global->find("core:datatype")).value_or("");
    samples.rateHz = numberOf(global->find("core:sample_rate")).value_or(0);
    if (numberOf(global->find("core:num_channels")).value_or(1) != 1) {
        return "only samples of one channel can be annotated";
    }
    if (captures->size() > 0) {
        const Json& first = captures->at(0);
        const std::string time = textOf(first.find("core:datetime")).value_or("");
        samples.firstUs = usOf(time);
        const double begin = numberOf(first.find("core:sample_start")).value_or(0);
        if (samples.firstUs && samples.rateHz > 0) {
            constexpr double UsPerSecond = 1e6;
            *samples.firstUs -= std::llround(begin / samples.rateHz * UsPerSecond);
        }
    }
    return "";
}

/// @return false, told, when there are metadata that cannot be used
bool readMetadata(IqSamples& samples)
{
    std::ifstream file(native(samples.metadataFile), std::ios::binary);
    if (!file) {
        samples.metadataFile.clear();
        return true;
    }
    std::string problem;
    try {
        samples.metadata = Json::parse({std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()});
        problem = takeMetadata(samples);
    } catch (const std::invalid_argument& error) {
        problem = std::string("it is not valid JSON (") + error.what() + ")";
    }
    if (!problem.empty()) {
        complain(samples.metadataFile, "This SigMF metadata cannot be used: " + problem + '.');
    }
    return problem.empty();
}

}  // namespace

std::optional<IqSamples> findSamples(const SigMfExportOptions& options)
{
    IqSamples samples;
    const fs::path beside = native(options.output).replace_extension(".sigmf-data");
    samples.file = options.samples.empty() ? utf8(beside) : options.samples;
    std::error_code error;
    const std::uintmax_t bytes = fs::file_size(native(samples.file), error);
    if (error) {
        complain(samples.file, "There is no such file of samples; --samples names the one to annotate.");
        return std::nullopt;
    }
    samples.metadataFile = utf8(native(samples.file).replace_extension(".sigmf-meta"));
    if (!readMetadata(samples)) {
        return std::nullopt;
    }
    samples.dataType = !options.format.empty()    ? options.format
                       : samples.dataType.empty() ? formatBySuffix(native(samples.file))
                                                  : samples.dataType;
    samples.rateHz = options.rateHz > 0 ? options.rateHz : samples.rateHz;
    const std::uint64_t sampleBytes = bytesOf(samples.dataType);
    if (sampleBytes == 0 || !(samples.rateHz > 0)) {
        complain(samples.file, sampleBytes != 0 ? "How many samples a second these are is not known: say --rate."
                               : samples.dataType.empty()
                                   ? "Which format these samples have is not known: say --format."
                                   : "SigMF has no format of samples " + samples.dataType + '.');
        return std::nullopt;
    }
    samples.count = bytes / sampleBytes;
    return samples;
}

}  // namespace RecTool
