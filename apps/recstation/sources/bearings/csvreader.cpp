// Reading CSV character by character: quotes, line ends, and the guess which separator it has.
#include "sources/bearings/csvreader.h"

#include <algorithm>
#include <array>
#include <utility>

#include "input/fields.h"

namespace RecStation {

namespace {

constexpr std::size_t BufferSize = 65'536;
constexpr std::size_t LongestRecord = 1'048'576;
constexpr std::string_view LineEnds = "\r\n";

bool endsLine(char c)
{
    return LineEnds.find(c) != std::string_view::npos;
}

bool isBlankRecord(const CsvRecord& record)
{
    return record.problem.empty() && std::all_of(record.fields.begin(), record.fields.end(),
                                                 [](const std::string& field) { return field.empty(); });
}

}  // namespace

char guessSeparator(std::string_view line, bool decimalComma)
{
    static constexpr std::array Candidates = {',', ';', '\t'};
    std::array<std::size_t, Candidates.size()> counts{};
    bool quoted = false;
    for (const char c : line) {
        quoted = quoted != (c == '"');
        const auto* const found = std::find(Candidates.begin(), Candidates.end(), c);
        if (!quoted && found != Candidates.end() && !(decimalComma && c == ',')) {
            ++counts.at(static_cast<std::size_t>(found - Candidates.begin()));
        }
    }
    return Candidates.at(static_cast<std::size_t>(std::max_element(counts.begin(), counts.end()) - counts.begin()));
}

CsvReader::CsvReader(ByteInput input, std::optional<char> separator, bool decimalComma)
    : m_input(std::move(input)), m_separator(separator), m_decimalComma(decimalComma), m_buffer(BufferSize)
{
}

std::optional<CsvRecord> CsvReader::next()
{
    if (!std::exchange(m_begun, true)) {
        begin();
    }
    CsvRecord record;
    while (const auto c = peek()) {
        if (endsLine(*c)) {
            take();
            continue;
        }
        if (*c == '#') {
            skipLine();
            ++m_comments;
            continue;
        }
        if (!m_separator) {
            m_separator = guessSeparator(lineAhead(), m_decimalComma);
        }
        record = readRecord();
        if (m_cut || !isBlankRecord(record)) {
            return noteDamage(record);
        }
    }
    record.line = m_line;
    return noteDamage(record).problem.empty() ? std::nullopt : std::optional(record);
}

void CsvReader::begin()
{
    while (m_filled < ByteOrderMark.size() && readMore()) {
    }
    if (std::string_view(m_buffer.data(), m_filled).substr(0, ByteOrderMark.size()) == ByteOrderMark) {
        m_position = ByteOrderMark.size();
    }
}

// The line that begins at the next byte, as far as the buffer holds it.
std::string_view CsvReader::lineAhead()
{
    std::copy(m_buffer.begin() + static_cast<std::ptrdiff_t>(m_position),
              m_buffer.begin() + static_cast<std::ptrdiff_t>(m_filled), m_buffer.begin());
    m_filled -= std::exchange(m_position, 0);
    const auto ahead = [this] { return std::string_view(m_buffer.data(), m_filled); };
    while (m_filled < m_buffer.size() && ahead().find_first_of(LineEnds) == std::string_view::npos && readMore()) {
    }
    return ahead().substr(0, ahead().find_first_of(LineEnds));
}

void CsvReader::skipLine()
{
    for (auto c = peek(); c && !endsLine(*c); c = peek()) {
        take();
    }
}

bool CsvReader::fill()
{
    m_position = 0;
    m_filled = 0;
    m_cut = !readMore() && !m_damage.empty();
    return m_filled > 0;
}

// Behind what the buffer holds. What cannot be unpacked is the end of the input.
bool CsvReader::readMore()
{
    const std::size_t before = m_filled;
    try {
        m_filled += m_damage.empty() ? m_input(m_buffer.data() + m_filled, m_buffer.size() - m_filled) : 0;
    } catch (const DamagedInput& error) {
        m_damage = error.what();
    }
    return m_filled > before;
}

// The record that the damage cut, or one of its own behind the last that is whole.
CsvRecord& CsvReader::noteDamage(CsvRecord& record)
{
    if (m_cut && !std::exchange(m_damageTold, true)) {
        record.problem = m_damage;
    }
    return record;
}

std::optional<char> CsvReader::peek()
{
    if (m_position == m_filled && !fill()) {
        return std::nullopt;
    }
    return m_buffer[m_position];
}

// Only after a peek that saw a character.
char CsvReader::take()
{
    const char c = m_buffer[m_position++];
    if (c == '\r' || (c == '\n' && m_last != '\r')) {
        ++m_line;
    }
    m_last = c;
    return c;
}

CsvRecord CsvReader::readRecord()
{
    CsvRecord record;
    record.line = m_line;
    record.decimalComma = m_decimalComma;
    m_recordBytes = 0;
    readField(record);
    while (peek() == m_separator) {
        take();
        readField(record);
    }
    return record;
}

void CsvReader::readField(CsvRecord& record)
{
    // Fields count too, so that a line of nothing but separators stays bounded.
    if (fits(record)) {
        record.fields.emplace_back();
    }
    skipSpaces();
    if (peek() != '"') {
        readPlain(record);
        return;
    }
    readQuoted(record);
    skipSpaces();
    if (!atFieldEnd()) {
        record.problem = "text stands behind a closing quote";
        readPlain(record);
    }
}

void CsvReader::readQuoted(CsvRecord& record)
{
    take();
    while (peek()) {
        const char c = take();
        if (c == '"') {
            if (peek() != '"') {
                return;
            }
            take();
        }
        keep(record, c);
    }
    record.problem = "a quote is not closed up to the end, line " + std::to_string(m_line);
}

void CsvReader::readPlain(CsvRecord& record)
{
    while (!atFieldEnd()) {
        keep(record, take());
    }
    std::string& field = record.fields.back();
    field.erase(field.find_last_not_of(' ') + 1);
}

void CsvReader::skipSpaces()
{
    while (peek() == ' ' && m_separator != ' ') {
        take();
    }
}

bool CsvReader::atFieldEnd()
{
    const auto c = peek();
    return !c || c == m_separator || endsLine(*c);
}

void CsvReader::keep(CsvRecord& record, char c)
{
    if (fits(record)) {
        record.fields.back() += c;
    }
}

bool CsvReader::fits(CsvRecord& record)
{
    if (++m_recordBytes > LongestRecord) {
        record.problem = "it is longer than 1 MiB";
        return false;
    }
    return true;
}

}  // namespace RecStation
