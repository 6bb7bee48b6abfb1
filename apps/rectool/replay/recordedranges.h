// The frequencies that the maps of a recording cover, as their records tell them.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "frequencies.h"

namespace RecTool {

/// Takes the channel ranges of records, whose cells it does not look at.
class RecordedRanges {
public:
    /// Takes the range that a record's text carries, if it does.
    void add(std::string_view text);
    /// From the lowest to the highest channels, by frequency: ranges that overlap or follow each other in a step are
    /// one. Of very many, those next to each other are joined.
    [[nodiscard]] const std::vector<FrequencySpan>& spans() const { return m_spans; }
    /// Distances of channels in Hz, of the ranges that are evenly spaced; of very many the first ones found.
    [[nodiscard]] const std::set<double>& steps() const { return m_steps; }

private:
    void addSpan(double lowHz, double highHz, double stepHz);
    void addEven(std::string_view fields);
    void addList(std::string_view fields);
    void joinNearest();

    std::string m_last;  // most records carry the range of the one before
    std::vector<FrequencySpan> m_spans;
    std::set<double> m_steps;
};

}  // namespace RecTool
