// Reading on until a record is wanted.
#include "recordcursor.h"

#include <algorithm>

namespace RecPython {

RecordCursor::RecordCursor(const RecordRequest& request) : m_request(request), m_reading(request)
{
    if (!request.keyword.empty()) {
        m_types = m_reading.types();
    }
    m_recorded.resize(m_reading.recordings().tracks().size());
}

RecTool::TrackType RecordCursor::type() const
{
    return {m_reading.recordings().parts()[m_part].track, m_record.code};
}

std::optional<double> RecordCursor::timeMs() const
{
    const double offset = m_reading.recordings().parts()[m_part].offsetMs;
    return m_record.timeMs == 0 ? std::nullopt : std::optional(offset + static_cast<double>(m_record.timeMs));
}

bool RecordCursor::open()
{
    const auto& parts = m_reading.recordings().parts();
    while (m_part < parts.size() && !m_reading.isWanted(parts[m_part].track)) {
        ++m_part;
    }
    if (m_part < parts.size()) {
        m_reader.emplace(parts[m_part].file, parts[m_part].summary);
    }
    return m_reader.has_value();
}

void RecordCursor::close()
{
    for (const auto& finding : m_reader->findings()) {
        m_damage.push_back({m_reading.recordings().parts()[m_part].file, finding.offset, finding.text});
    }
    m_reader.reset();
    ++m_part;
}

bool RecordCursor::isWanted() const
{
    return !m_types || std::find(m_types->begin(), m_types->end(), type()) != m_types->end();
}

bool RecordCursor::next()
{
    m_value = nullptr;
    while (m_reader || open()) {
        m_patience.next();
        const bool isThere = m_reader->next(m_record);
        const std::optional<double> time = isThere ? timeMs() : std::nullopt;
        const bool isBehind = time && !m_request.to.empty() && *time > m_reading.recordings().span().toMs;
        if (!isThere || isBehind) {
            close();
            continue;
        }
        if (!isWanted()) {
            continue;
        }
        m_value = m_request.decode ? m_recorded[type().track].apply(m_record) : nullptr;
        const bool isLost = !time && !(m_request.from.empty() && m_request.to.empty());
        if (!isLost && !(time && m_reading.recordings().isBefore(*time))) {
            return true;
        }
    }
    return false;
}

std::vector<FoundDamage> RecordCursor::damage() const
{
    std::vector<FoundDamage> all = m_reading.damage();
    all.insert(all.end(), m_damage.begin(), m_damage.end());
    return all;
}

}  // namespace RecPython
