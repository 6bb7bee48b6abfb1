// Which cells a record of a bearing map carries, whether they changed or not.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <values/maps.h>

namespace RecTool {

class CarriedCells {
public:
    /// Looks at a record's text. @param range of the map after the record @return false when the text is refused
    bool read(const std::string& text, const values::ChannelRange& range);

    [[nodiscard]] const std::vector<std::size_t>& channels() const { return m_channels; }  ///< ascending
    [[nodiscard]] unsigned long long timeStampUs() const { return m_map.GetTimeStamp(); }
    /// The text carries the whole map, whatever was measured.
    [[nodiscard]] bool all() const { return m_channels.size() == m_map.size(); }

private:
    values::FastValueMap<values::Bearing, values::BearingHandler> m_map;
    std::vector<values::Bearing> m_marks;
    std::vector<std::size_t> m_channels;
};

}  // namespace RecTool
