// Parsing a KrakenSDR's answer, whichever form it has.
#include "sources/kraken/krakenanswer.h"

#include <algorithm>
#include <cmath>
#include <map>

#include <QXmlStreamReader>

#include "input/fields.h"

namespace RecStation {

namespace {

constexpr std::size_t MostFields = 1024;
constexpr std::size_t MostBearings = 64;  // a KrakenSDR has 16 receiving channels

using Elements = std::map<std::string, std::string>;

// The texts of the elements below the first one, by name; nothing when it is no XML to its end.
std::optional<Elements> elementsOf(const std::string& body, QString& root)
{
    Elements found;
    QXmlStreamReader xml(QByteArray::fromStdString(body));
    QString name;
    while (!xml.atEnd()) {
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            name = xml.name().toString();
            root = root.isEmpty() ? name : root;
        } else if (token == QXmlStreamReader::EndElement) {
            name.clear();
        } else if (token == QXmlStreamReader::Characters && !name.isEmpty()) {
            found[name.toStdString()] += std::string(trimmed(xml.text().toString().toStdString()));
        }
    }
    return xml.hasError() ? std::nullopt : std::optional(found);
}

std::string_view element(const Elements& elements, const char* name)
{
    const auto found = elements.find(name);
    return found == elements.end() ? std::string_view() : std::string_view(found->second);
}

LoggedBearing bearingOf(const Elements& elements, bool mirrored)
{
    constexpr double HzPerMhz = 1e6;
    constexpr double PowerOffset = 100;
    constexpr double MostQuality = 100;
    LoggedBearing bearing;
    bearing.time = krakenTime(element(elements, "TIME"));
    bearing.frequencyHz = krakenFrequency(element(elements, "FREQUENCY"), HzPerMhz);
    bearing.azimuthDeg = azimuthOf(requireNumber(element(elements, "DOA"), "DOA"), mirrored);
    const double power = krakenNumberOrNone(element(elements, "PWR"));
    const std::string_view confidence = element(elements, "CONF");
    const double quality = requireNumber(confidence, "CONF");
    const bool asInCsv = power < 0 || confidence.find('.') != std::string_view::npos;
    bearing.levelDb = asInCsv ? power : power - PowerOffset;
    bearing.quality = std::clamp(asInCsv ? quality : quality / 100, 0.0, MostQuality);
    bearing.headingDeg = azimuthOf(krakenNumberOrNone(element(elements, "HEADING")), false);
    bearing.station = element(elements, "STATION_ID");
    setKrakenPosition(bearing, element(elements, "LATITUDE"), element(elements, "LONGITUDE"));
    return bearing;
}

}  // namespace

std::vector<LoggedBearing> KrakenAnswers::parse(const std::string& body)
{
    const std::string_view text = trimmed(body);
    if (text.empty()) {
        return {};  // nothing is heard
    }
    auto bearings = text.front() == '<' ? parseXml(body) : parseLines(text);
    m_brokenInARow = bearings.empty() ? m_brokenInARow + 1 : 0;
    constexpr int MostBroken = 10;
    if (m_brokenInARow >= MostBroken) {
        m_brokenInARow = 0;
        throw ConnectionError("its answers are no bearings of a KrakenSDR");
    }
    return bearings;
}

std::vector<LoggedBearing> KrakenAnswers::parseLines(std::string_view body)
{
    if (body.front() < '0' || body.front() > '9') {
        throw ConnectionError("its answer is neither CSV nor XML of a KrakenSDR: is this the document?");
    }
    std::vector<LoggedBearing> bearings;
    while (!body.empty()) {
        const std::size_t end = std::min(body.find('\n'), body.size());
        const std::string_view line = trimmed(body.substr(0, end));
        body.remove_prefix(std::min(end + 1, body.size()));
        if (line.empty()) {
            continue;
        }
        try {
            if (bearings.size() < MostBearings) {
                bearings.push_back(m_rows.parse(CommaFields(line).rest(MostFields)));
                continue;
            }
        } catch (const LineError&) {  // counted
        }
        ++m_broken;
    }
    return bearings;
}

std::vector<LoggedBearing> KrakenAnswers::parseXml(const std::string& body)
{
    QString root;
    const auto elements = elementsOf(body, root);
    if (!root.isEmpty() && root != QLatin1String("DATA")) {
        const bool page = root.compare(QLatin1String("html"), Qt::CaseInsensitive) == 0;
        throw ConnectionError(page ? "it answers a page of HTML and no bearings: is this the document?"
                                   : "its answer is another XML than a KrakenSDR's");
    }
    if (elements && elements->count("DOA") > 0 && elements->count("FREQUENCY") == 0) {
        throw ConnectionError("its answer tells no frequency: let it write the format Kraken App or DF Aggregator");
    }
    try {
        if (elements) {
            return {bearingOf(*elements, m_mirror != Mirror::No)};
        }
    } catch (const LineError&) {  // counted
    }
    ++m_broken;
    return {};
}

}  // namespace RecStation
