// Choosing types and devices, with what else there is where they are not there. Complaints as exceptions, and the
// interpreter's signals.
#include <pybind11/pybind11.h>

#include "reading.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include <QString>

#include <terminaltext/nearestword.h>

#include "rectool/printing/text.h"
#include "rectool/replay/spectra.h"

namespace RecPython {

namespace {

constexpr std::int64_t UsPerMs = 1000;

/// For guesses at what a mistyped one means.
std::vector<std::string> recordedKeywords(const RecTool::Recordings& recordings)
{
    std::vector<std::string> keywords;
    for (const auto& part : recordings.parts()) {
        for (const auto& type : part.summary.types) {
            keywords.push_back(RecTool::fromLatin1(type.keyword));
        }
    }
    return keywords;
}

std::string upperCase(const std::string& utf8)
{
    return QString::fromStdString(utf8).toUpper().toStdString();
}

}  // namespace

void Kept::require(RecTool::ExitCode code) const
{
    if (code != RecTool::ExitCode::Fine) {
        refuse(code);
    }
}

void Kept::refuse(RecTool::ExitCode code, const std::string& more) const
{
    throw Refusal(code, m_complaints.file(), m_complaints.text() + more);
}

void Patience::look()
{
    const pybind11::gil_scoped_acquire locked;
    if (PyErr_CheckSignals() != 0) {
        throw Interrupted();
    }
}

Reading::Reading(const Request& request) : m_request(request)
{
    const Kept kept;
    RecTool::RecordingsOptions options;
    options.files = request.files;
    options.from = request.from;
    options.to = request.to;
    options.fromName = "start";
    options.toName = request.toName;
    m_recordings = std::make_unique<RecTool::Recordings>(options, 1);
    kept.require(m_recordings->state());
    if (request.device.empty()) {
        return;
    }
    std::string all;
    for (std::size_t track = 0; track < m_recordings->tracks().size(); ++track) {
        if (isWanted(track)) {
            return;
        }
        all += (all.empty() ? "" : ", ") + RecTool::oneLine(deviceOf(track));
    }
    throw Refusal(RecTool::ExitCode::Usage, m_recordings->file(),
                  "There is no device \"" + RecTool::oneLine(request.device) +
                      "\" in the recordings. Their devices: " + all + '.');
}

bool Reading::isWanted(std::size_t track) const
{
    return m_request.device.empty() || deviceOf(track) == m_request.device;
}

const std::string& Reading::deviceOf(std::size_t track) const
{
    return m_recordings->tracks()[track].device;
}

std::string Reading::keywordOf(const RecTool::TrackType& type) const
{
    return RecTool::keywordOf(m_recordings->tracks()[type.track].names, type.code);
}

std::vector<RecTool::TrackType> Reading::named() const
{
    const std::string keyword = upperCase(m_request.keyword);
    if (keyword == "RFSPECTRUM" || keyword == "IFSPECTRUM") {  // which the type table may not name
        const auto spectra =
            RecTool::wantedSpectra(*m_recordings, {}, keyword == "RFSPECTRUM", keyword == "IFSPECTRUM");
        std::vector<RecTool::TrackType> types;
        std::transform(spectra->begin(), spectra->end(), std::back_inserter(types),
                       [](const RecTool::Spectrum& spectrum) { return spectrum.type; });
        const auto isNamed = [this](const RecTool::TrackType& type) {
            return isWanted(type.track) && m_recordings->tracks()[type.track].names.find(type.code) != nullptr;
        };
        if (std::any_of(types.begin(), types.end(), isNamed)) {
            types.erase(std::remove_if(types.begin(), types.end(), std::not_fn(isNamed)), types.end());
        }
        if (!types.empty()) {
            return types;
        }
    }
    const Kept kept;
    const auto types = m_recordings->takeTypes({m_request.keyword});
    if (!types) {
        const auto nearest = TerminalText::nearestWord(keyword, recordedKeywords(*m_recordings));
        kept.refuse(RecTool::ExitCode::Usage, nearest ? " Did you mean " + RecTool::oneLine(*nearest) + '?' : "");
    }
    return *types;
}

std::vector<RecTool::TrackType> Reading::types() const
{
    std::vector<RecTool::TrackType> wanted = named();
    wanted.erase(
        std::remove_if(wanted.begin(), wanted.end(), [this](const auto& type) { return !isWanted(type.track); }),
        wanted.end());
    if (wanted.empty()) {
        throw Refusal(RecTool::ExitCode::Usage, m_recordings->file(),
                      RecTool::oneLine(m_request.device) + " has no " + RecTool::oneLine(m_request.keyword) + '.');
    }
    requireOneDevice(wanted);
    return wanted;
}

void Reading::requireOneDevice(const std::vector<RecTool::TrackType>& types) const
{
    std::vector<std::string> devices;
    for (const RecTool::TrackType& type : types) {
        if (std::find(devices.begin(), devices.end(), deviceOf(type.track)) == devices.end()) {
            devices.push_back(deviceOf(type.track));
        }
    }
    if (devices.size() < 2) {
        return;
    }
    std::string all;
    for (const std::string& device : devices) {
        all += (all.empty() ? "" : ", ") + RecTool::oneLine(device);
    }
    throw Refusal(RecTool::ExitCode::Usage, m_recordings->file(),
                  "Several devices have " + RecTool::oneLine(m_request.keyword) + ": " + all +
                      ". Choose one, device=\"" + RecTool::oneLine(devices.front()) + "\".");
}

std::int64_t Reading::startUs() const
{
    const std::uint64_t startMs = m_recordings->startMs();
    return startMs <= RecTool::EndOfYear9999Ms ? static_cast<std::int64_t>(startMs) * UsPerMs : 0;
}

std::int64_t Reading::sinceStartUs(const RecTool::PlacedRecord& placed) const
{
    constexpr double Farthest = 4e18;
    const double us = std::round(placed.exactMomentMs(m_recordings->startMs()) * static_cast<double>(UsPerMs));
    return std::abs(us) < Farthest ? static_cast<std::int64_t>(us) : 0;
}

std::vector<FoundDamage> Reading::damage() const
{
    std::vector<FoundDamage> all;
    for (const auto& part : m_recordings->parts()) {
        for (const auto* findings : {&part.summary.findings, &part.inRecords}) {
            for (const auto& finding : *findings) {
                all.push_back({part.file, finding.offset, finding.text});
            }
        }
    }
    return all;
}

void TypeReading::walk(const std::function<void(const RecTool::PlacedRecord& placed, bool isOfType)>& visit)
{
    const Kept quiet;
    Patience patience;
    recordings().walk([&](const RecTool::PlacedRecord& placed) {
        patience.next();
        visit(placed, std::find(m_types.begin(), m_types.end(), placed.type) != m_types.end());
    });
}

FoundType TypeReading::found(std::uint64_t notUnderstood) const
{
    return {keyword(), deviceOf(m_types.front().track), startUs(), notUnderstood, damage()};
}

}  // namespace RecPython
