// Reading the JSON of SigMF metadata, and finding where its captures lie in the file.
#include "sources/iq/knownsamples.h"

#include <stdexcept>

#include <QFile>
#include <QFileInfo>

#include <nlohmann/json.hpp>

#include "input/timetext.h"
#include "iqspectra/sampleformat.h"

namespace RecStation {

namespace {

using nlohmann::json;

json parseFile(const QString& name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error(file.errorString().toStdString());
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        throw std::runtime_error(file.errorString().toStdString());
    }
    try {
        return json::parse(bytes.begin(), bytes.end());
    } catch (const json::exception& error) {
        throw std::runtime_error(std::string("it is not valid JSON (") + error.what() + ")");
    }
}

const json& object(const json& parent, const std::string& key)
{
    const auto found = parent.find(key);
    if (found == parent.end() || !found->is_object()) {
        throw std::runtime_error("it has no object \"" + key + "\"");
    }
    return *found;
}

std::optional<double> numberOf(const json& parent, const std::string& key)
{
    const auto found = parent.find(key);
    if (found == parent.end()) {
        return std::nullopt;
    }
    if (!found->is_number()) {
        throw std::runtime_error("\"" + key + "\" must be a number");
    }
    return found->get<double>();
}

std::optional<std::string> textIn(const json& parent, const std::string& key)
{
    const auto found = parent.find(key);
    if (found == parent.end()) {
        return std::nullopt;
    }
    if (!found->is_string()) {
        throw std::runtime_error("\"" + key + "\" must be a text");
    }
    return found->get<std::string>();
}

/// A count of samples or bytes; 0 when it is missing.
std::uint64_t countOf(const json& parent, const std::string& key)
{
    const auto found = parent.find(key);
    if (found == parent.end()) {
        return 0;
    }
    constexpr std::uint64_t Most = std::uint64_t{1} << 43U;  // no sum of a million of them overflows
    if (!found->is_number_unsigned() || found->get<std::uint64_t>() > Most) {
        throw std::runtime_error("\"" + key + "\" must be a whole number, 0 or more");
    }
    return found->get<std::uint64_t>();
}

void readGlobal(const json& global, const std::string& format, KnownSamples& out)
{
    const auto dataType = format.empty() ? textIn(global, "core:datatype") : format;
    if (!dataType) {
        throw std::runtime_error("\"core:datatype\" is missing");
    }
    out.format = *dataType;
    out.rateHz = numberOf(global, "core:sample_rate");
    if (out.rateHz && !(*out.rateHz > 0)) {
        throw std::runtime_error("\"core:sample_rate\" must be greater than 0");
    }
    const double channels = numberOf(global, "core:num_channels").value_or(1);
    if (channels != 1) {
        throw std::runtime_error("\"core:num_channels\" is " + QString::number(channels, 'g', 15).toStdString() +
                                 ", and only 1 is supported");
    }
    out.trailingBytes = countOf(global, "core:trailing_bytes");
}

KnownCapture readCapture(const json& capture)
{
    if (!capture.is_object()) {
        throw std::runtime_error("the entry of \"captures\" must be an object");
    }
    KnownCapture out;
    out.firstSample = countOf(capture, "core:sample_start");
    out.firstByte = countOf(capture, "core:header_bytes");
    out.centreHz = numberOf(capture, "core:frequency");
    if (const auto time = textIn(capture, "core:datetime")) {
        out.startTime = parseIsoTime(*time);
        if (!out.startTime) {
            throw std::runtime_error("\"core:datetime\" must be a time such as 2026-11-21T08:30:00.25Z");
        }
    }
    return out;
}

/// Numbers samples from the file's first one on, and finds where each capture lies behind its header.
void place(std::vector<KnownCapture>& captures, std::uint64_t offset, std::size_t sampleSize)
{
    std::uint64_t headers = 0;
    std::uint64_t before = offset;
    for (KnownCapture& capture : captures) {
        if (capture.firstSample < before) {
            throw std::runtime_error("\"core:sample_start\" of a capture lies before that of the one before it");
        }
        before = capture.firstSample;
        headers += capture.firstByte;
        capture.firstSample -= offset;
        capture.firstByte = headers + capture.firstSample * sampleSize;
    }
    for (std::size_t i = 0; i + 1 < captures.size(); ++i) {
        captures[i].samples = captures[i + 1].firstSample - captures[i].firstSample;
    }
}

QString nameOfSamples(const json& document, const QString& file)
{
    const json& global = object(document, "global");
    const QFileInfo info(file);
    if (const auto only = global.find("core:metadata_only"); only != global.end() && *only == true) {
        throw std::runtime_error("it says \"core:metadata_only\", so there are no samples");
    }
    const auto name = textIn(global, "core:dataset");
    return info.path() + QLatin1Char('/') +
           (name ? QString::fromStdString(*name) : info.completeBaseName() + QStringLiteral(".sigmf-data"));
}

KnownSamples interpret(const json& document, const std::string& ofSamples)
{
    constexpr std::size_t MostCaptures = 1'000'000;
    KnownSamples out;
    const json& global = object(document, "global");
    readGlobal(global, ofSamples, out);
    const auto captures = document.find("captures");
    if (captures == document.end() || !captures->is_array() || captures->empty()) {
        throw std::runtime_error("it has no list \"captures\" with an entry");
    }
    if (captures->size() > MostCaptures) {
        throw std::runtime_error("it has more than 1000000 captures");
    }
    out.captures.clear();
    for (const json& capture : *captures) {
        out.captures.push_back(readCapture(capture));
    }
    const auto format = sampleFormatByName(out.format);
    place(out.captures, countOf(global, "core:offset"), format ? sampleBytes(*format) : 1);
    return out;
}

/// @param use gets the document, and throws what is wrong with it
template <typename Use>
auto ofMetadata(const QString& file, Use use)
{
    try {
        return use(parseFile(file));
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("the SigMF metadata " + file.toStdString() + " cannot be used: " + error.what());
    }
}

}  // namespace

QString samplesOfSigMf(const QString& file)
{
    return ofMetadata(file, [&file](const json& document) { return nameOfSamples(document, file); });
}

KnownSamples readSigMf(const QString& file, const std::string& format)
{
    return ofMetadata(file, [&format](const json& document) { return interpret(document, format); });
}

}  // namespace RecStation
