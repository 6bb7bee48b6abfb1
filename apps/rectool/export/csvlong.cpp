// Writing levels and numbers as lines of CSV.
#include "csvlong.h"

#include <cmath>

#include <terminaltext/quantity.h>

#include "printing/recordjson.h"
#include "printing/text.h"
#include "printing/valuetext.h"

namespace RecTool {

namespace {

constexpr std::size_t PieceOfText = 65'536;

}  // namespace

CsvLong::CsvLong(NewFile& file, ExportedRecords& records, ExportTime time)
    : m_file(file), m_records(records), m_time(std::move(time))
{
    m_file.write("time,device,keyword,frequency_hz,value\n");
}

void CsvLong::Frequencies::take(const values::ChannelRange& newRange)
{
    if (range == newRange && !ends.empty()) {
        return;
    }
    range = newRange;
    texts.clear();
    ends.clear();
    for (std::size_t i = 0; i < range.size(); ++i) {
        texts += TerminalText::shortest(range.frequencyHz(i)) + ',';
        ends.push_back(texts.size());
    }
}

void CsvLong::add(const PlacedRecord& placed, const values::ValueBase& value)
{
    m_begin = m_time.iso(placed.momentMs) + ',' + csvText(m_records.device(placed.type)) + ',' +
              csvText(m_records.keyword(placed.type)) + ',';
    const values::ValueType kind = value.GetType();
    if (kind == values::ValueType::LevelMap) {
        addLevels(placed.type, static_cast<const LevelMap&>(value));
    } else if (const std::optional<double> number = plainNumber(&value)) {
        m_text += m_begin + ',' + (std::isfinite(*number) ? TerminalText::shortest(*number) : "") + '\n';
        ++m_lines;
    } else if (kind == values::ValueType::BearingMap || kind == values::ValueType::FastBearingMap) {
        m_records.leaveOut(placed.type);
    } else if (m_records.areNamed()) {
        m_text += m_begin + ',' + csvText(oneLine(value.GetText().toStdString())) + '\n';
        ++m_lines;
    }
    m_file.write(m_text);
    m_text.clear();
}

void CsvLong::addLevels(const TrackType& type, const LevelMap& map)
{
    Frequencies& frequencies = m_frequencies[{type.track, type.code}];
    frequencies.take(map.GetChannelRange());
    const std::span<const float> levels = map.GetCells();
    std::size_t begin = 0;
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const std::size_t end = frequencies.ends[i];
        if (std::isfinite(levels[i])) {
            m_text += m_begin;
            m_text.append(frequencies.texts, begin, end - begin);
            appendLevelJson(m_text, levels[i]);
            m_text += '\n';
            ++m_lines;
            if (m_text.size() > PieceOfText) {
                m_file.write(m_text);
                m_text.clear();
            }
        }
        begin = end;
    }
}

}  // namespace RecTool
