// Reading the JSON of SigMF metadata, and refusing recordings laid out in another way.
#include "sources/iq/sigmf.h"

#include <stdexcept>

#include <QFile>

#include <nlohmann/json.hpp>

#include "input/isotime.h"

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

std::optional<std::string> textOf(const json& parent, const std::string& key)
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

/// Takes over only recordings whose samples lie one after the other from the first byte on.
void expectAbsentOr(const json& parent, const std::string& key, double expected)
{
    const double found = numberOf(parent, key).value_or(expected);
    if (found != expected) {
        throw std::runtime_error("\"" + key + "\" is " + QString::number(found, 'g', 15).toStdString() + ", and only " +
                                 QString::number(expected).toStdString() + " is supported");
    }
}

void readGlobal(const json& global, SigMfMetadata& out)
{
    const auto dataType = textOf(global, "core:datatype");
    if (!dataType) {
        throw std::runtime_error("\"core:datatype\" is missing");
    }
    out.dataType = *dataType;
    out.rateHz = numberOf(global, "core:sample_rate");
    if (out.rateHz && !(*out.rateHz > 0)) {
        throw std::runtime_error("\"core:sample_rate\" must be greater than 0");
    }
    expectAbsentOr(global, "core:num_channels", 1);
}

void readCapture(const json& capture, SigMfMetadata& out)
{
    expectAbsentOr(capture, "core:sample_start", 0);
    expectAbsentOr(capture, "core:header_bytes", 0);
    out.centreHz = numberOf(capture, "core:frequency");
    if (const auto time = textOf(capture, "core:datetime")) {
        out.startTime = parseIsoTime(*time);
        if (!out.startTime) {
            throw std::runtime_error("\"core:datetime\" must be a time such as 2026-11-21T08:30:00.25Z");
        }
    }
}

SigMfMetadata interpret(const json& document)
{
    SigMfMetadata out;
    readGlobal(object(document, "global"), out);
    const auto captures = document.find("captures");
    if (captures == document.end() || !captures->is_array() || captures->empty()) {
        throw std::runtime_error("it has no list \"captures\" with an entry");
    }
    if (captures->size() > 1) {
        throw std::runtime_error("it describes " + std::to_string(captures->size()) +
                                 " captures, only one can be read");
    }
    if (!captures->front().is_object()) {
        throw std::runtime_error("the entry of \"captures\" must be an object");
    }
    readCapture(captures->front(), out);
    return out;
}

}  // namespace

SigMfMetadata readSigMf(const QString& file)
{
    try {
        return interpret(parseFile(file));
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("the SigMF metadata " + file.toStdString() + " cannot be used: " + error.what());
    }
}

}  // namespace RecStation
