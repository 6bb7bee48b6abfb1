// Looking at a recording for the table: its head, and then its records where it may be listed.
#include "listedrecording.h"

#include <cctype>
#include <set>

#include <recording2/inspection/recordingname.h>
#include <recording2/inspection/scan.h>
#include <recording2/inspection/verify/verification.h>

#include "listing.h"
#include "printing/json.h"
#include "printing/text.h"
#include "printing/typenames.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

bool takesHeader(const ListChoice& choice, const ListedRecording& listed)
{
    const bool isDevice = inSmallLetters(listed.device).find(choice.device) != std::string::npos;
    return isDevice && (!choice.sinceMs || listed.stopMs >= *choice.sinceMs) &&
           (!choice.untilMs || listed.startMs <= *choice.untilMs);
}

bool takesRanges(const ListChoice& choice, const ListedRecording& listed)
{
    return !choice.coversHz || std::any_of(listed.ranges.begin(), listed.ranges.end(),
                                           [&](const FrequencySpan& span) { return span.holds(*choice.coversHz); });
}

/// Which types are spectra, and which tell frequencies.
class MapTypes {
public:
    explicit MapTypes(const std::vector<Inspection::TypeEntry>& types)
    {
        for (const Inspection::TypeEntry& type : types) {
            const bool isSpectrum = type.keyword == "RFSPECTRUM" || type.keyword == "IFSPECTRUM";
            if (isSpectrum) {
                m_spectra.insert(type.typeNumber);
            }
            if (isSpectrum || type.keyword == DirectionFindingKeyword) {
                m_maps.insert(type.typeNumber);
            }
            m_named.insert(type.typeNumber);
        }
        for (const std::int32_t usual : {1, 2}) {  // a recorder names only one of both spectra
            if (m_named.count(usual) == 0) {
                m_spectra.insert(usual);
                m_maps.insert(usual);
            }
        }
    }
    [[nodiscard]] bool isSpectrum(std::int32_t code) const { return m_spectra.count(code) > 0; }
    [[nodiscard]] bool isMap(std::int32_t code) const { return m_maps.count(code) > 0; }

private:
    std::set<std::int32_t> m_spectra;
    std::set<std::int32_t> m_maps;
    std::set<std::int32_t> m_named;
};

std::string deviceOf(const Inspection::Header& header)
{
    const std::string name = oneLine(fromLatin1(header.deviceName));
    const std::string type = oneLine(fromLatin1(header.deviceType));
    return type.empty() ? name : name + (name.empty() ? "(" : " (") + type + ')';
}

void takeHeader(const Inspection::Summary& summary, ListedRecording& listed)
{
    listed.readability = summary.readability;
    listed.state = stateName(listed.file, summary);
    listed.bytes = summary.fileSize;
    if (listed.closed()) {
        listed.device = deviceOf(summary.header);
        listed.startMs = summary.header.startMs;
        listed.stopMs = summary.header.stopMs;
        listed.whole = summary.findings.empty();
    } else {
        listed.startMs = Inspection::startInName(listed.file).value_or(0);
        listed.stopMs = listed.startMs;
    }
}

void takeRecords(const Inspection::Summary& summary, ListedRecording& listed)
{
    const MapTypes types(summary.types);
    RecordedRanges ranges;
    const Inspection::RecordScan scan = Inspection::scanRecords(
        listed.file, summary,
        [&](std::int32_t code) {
            listed.spectra += types.isSpectrum(code) ? 1U : 0U;
            return types.isMap(code);
        },
        [&](std::int32_t, const std::string& data) { ranges.add(data); });
    listed.records = scan.records;
    listed.whole = listed.whole && scan.whole;
    listed.ranges = ranges.spans();
    const Inspection::Header& header = summary.header;
    if (listed.ranges.empty() && header.stopFrequencyHz > 0 && header.startFrequencyHz <= header.stopFrequencyHz) {
        listed.ranges.push_back({double{header.startFrequencyHz}, double{header.stopFrequencyHz}});
    }
}

void check(ListedRecording& listed)
{
    const Inspection::Verification verification = Inspection::verify(listed.file);
    listed.damage = verification.count(Inspection::Severity::Damage);
}

}  // namespace

const char* stateName(const std::string& file, const Inspection::Summary& summary)
{
    const bool open = summary.readability == Inspection::Readability::NeverClosed ||
                      summary.readability == Inspection::Readability::Empty;  // all of it is still in its journal
    return open && Inspection::isBeingWritten(file) ? "being-written" : name(summary.readability);
}

std::string inSmallLetters(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
    return text;
}

std::optional<ListedRecording> look(const std::string& file, const ListChoice& choice, bool verify)
{
    const Inspection::Summary summary = Inspection::inspectHead(file);
    ListedRecording listed;
    listed.file = file;
    takeHeader(summary, listed);
    if (!takesHeader(choice, listed)) {
        return std::nullopt;
    }
    if (listed.closed()) {
        takeRecords(summary, listed);
    }
    if (!takesRanges(choice, listed)) {
        return std::nullopt;
    }
    if (listed.closed() && verify) {
        check(listed);
    }
    return listed;
}

}  // namespace RecTool
