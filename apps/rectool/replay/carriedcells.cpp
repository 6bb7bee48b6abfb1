// Marking all cells of a map, and looking which marks a record's text overwrites.
#include "carriedcells.h"

namespace RecTool {

namespace {

constexpr double Mark = -1e300;  // no direction finder says it

}  // namespace

// A text overwrites the cells that it carries: those of marked cells that are not marked any more.
bool CarriedCells::read(const std::string& text, const values::ChannelRange& range)
{
    m_channels.clear();
    m_map.SetChannelRange(range);
    m_marks.resize(range.size());
    for (values::Bearing& mark : m_marks) {
        mark.azimuthDeg = Mark;
    }
    m_map.SetCells(0, m_marks, 0);
    if (!m_map.ApplyRecordedState(text, 0, false)) {
        return false;
    }
    for (std::size_t i = 0; i < m_map.size(); ++i) {
        if (m_map.GetCells()[i].azimuthDeg != Mark) {
            m_channels.push_back(i);
        }
    }
    return true;
}

}  // namespace RecTool
