// Bands and rows of sweeps, and writing them.
#include "csvsweep.h"

#include <algorithm>
#include <cmath>

#include <terminaltext/quantity.h>

#include "printing/recordjson.h"
#include "printing/text.h"
#include "replay/frequencies.h"

namespace RecTool {

namespace {

constexpr double HighestSweepHz = 1e12;
constexpr float HighestSweepDb = 1000;
constexpr double AloneHz = 1;  // the width of an only channel, which nobody knows

bool isInSweep(float level)
{
    return std::abs(level) <= HighestSweepDb;
}

}  // namespace

std::string SweepRows::take(const values::ChannelRange& range)
{
    constexpr double SideBySide = 1e-6;  // of a channel's width
    m_rows.clear();
    const double known = std::abs(channelWidthHz(range));
    const double widthHz = known > 0 ? known : AloneHz;
    for (const std::size_t channel : byFrequency(range)) {
        const bool goesOn =
            !m_rows.empty() && std::abs(range.frequencyHz(channel) - range.frequencyHz(m_rows.back().channels.back()) -
                                        widthHz) <= SideBySide * widthHz;
        if (!goesOn) {
            close(range, widthHz);
            m_rows.emplace_back();
        }
        m_rows.back().channels.push_back(channel);
    }
    close(range, widthHz);
    if (m_rows.empty()) {
        return "";
    }
    m_lowHz = range.frequencyHz(m_rows.front().channels.front()) - widthHz / 2;
    m_highHz = range.frequencyHz(m_rows.back().channels.back()) + widthHz / 2;
    if (m_lowHz < 0 || m_highHz > HighestSweepHz) {
        return "The sweep form has no frequencies below 0 and above 1 THz, and the spectrum reaches from " +
               frequency(m_lowHz) + " to " + frequency(m_highHz) + "; --form long takes it.";
    }
    return "";
}

/// Ends the last row.
void SweepRows::close(const values::ChannelRange& range, double widthHz)
{
    if (m_rows.empty()) {
        return;
    }
    Row& row = m_rows.back();
    const double low = range.frequencyHz(row.channels.front()) - widthHz / 2;
    const double high = low + widthHz * static_cast<double>(row.channels.size());
    row.band = TerminalText::shortest(low) + ", " + TerminalText::shortest(high) + ", " +
               TerminalText::shortest(widthHz) + ", 1";
}

void CsvSweep::takeRange(const LevelMap& map)
{
    if (m_range && *m_range == map.GetChannelRange()) {
        return;
    }
    m_range = map.GetChannelRange();
    m_problem = m_rows.take(*m_range);
}

void CsvSweep::add(const PlacedRecord& placed, const values::ValueBase& value)
{
    if (value.GetType() != values::ValueType::LevelMap) {
        if (m_records.areNamed()) {
            m_records.leaveOut(placed.type);
        }
        return;
    }
    const auto& map = static_cast<const LevelMap&>(value);
    const std::span<const float> levels = map.GetCells();
    if (!m_problem.empty() || std::none_of(levels.begin(), levels.end(), isInSweep)) {
        return;
    }
    if (m_type && !(*m_type == placed.type)) {
        m_problem = "The sweep form holds one spectrum of one device, and there are more: choose with --type.";
        return;
    }
    m_type = placed.type;
    takeRange(map);
    if (!m_problem.empty()) {
        return;
    }
    m_joined += m_sweeps > 0 && m_rows.lowHz() >= m_lastHighHz ? 1U : 0U;
    m_lastHighHz = m_rows.highHz();
    ++m_sweeps;
    const std::string begin = m_time.dateAndTime(placed.momentMs) + ", ";
    for (const SweepRows::Row& row : m_rows.rows()) {
        m_text = begin + row.band;
        for (const std::size_t channel : row.channels) {
            m_text += ", ";
            if (isInSweep(levels[channel])) {
                appendLevelJson(m_text, levels[channel]);
            } else {
                m_text += "nan";
            }
        }
        m_text += '\n';
        m_file.write(m_text);
    }
}

}  // namespace RecTool
