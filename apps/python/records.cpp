// Reading on until a record is wanted, and giving it as a tuple.
#include "records.h"

#include <algorithm>

namespace RecPython {

namespace py = pybind11;

namespace {

/// @param text made where the key is a new one
template <typename Key, typename MakeText>
const py::str& known(std::map<Key, py::str>& texts, const Key& key, const MakeText& text)
{
    const auto [entry, isNew] = texts.try_emplace(key);
    if (isNew) {
        entry->second = text();
    }
    return entry->second;
}

}  // namespace

Records::Records(const std::vector<std::string>& files, const std::string& keyword, const std::string& device,
                 const std::string& from, const std::string& to, bool decode)
    : m_request{files, keyword, device, from, to}, m_decode(decode), m_reading(m_request)
{
    if (!keyword.empty()) {
        m_types = m_reading.types();
    }
    m_recorded.resize(m_reading.recordings().tracks().size());
}

py::tuple Records::next()
{
    bool isThere = false;
    {
        const py::gil_scoped_release unlocked;
        isThere = goOn();
    }
    if (!isThere) {
        throw py::stop_iteration();
    }
    const RecTool::TrackType now = type();
    const auto time = timeMs();
    return py::make_tuple(
        time ? py::object(py::float_(*time)) : py::none(),
        known(m_devices, now.track, [&] { return pythonText(m_reading.deviceOf(now.track)); }),
        known(m_keywords, {now.track, now.code}, [&] { return pythonText(m_reading.keywordOf(now)); }), now.code,
        known(m_files, m_part, [&] { return pythonName(m_reading.recordings().fileOf(m_part)); }),
        py::bytes(m_record.data), m_converter.convert(m_value, now));
}

RecTool::TrackType Records::type() const
{
    return {m_reading.recordings().parts()[m_part].track, m_record.code};
}

/// On the axis of all files; nothing where its time is lost.
std::optional<double> Records::timeMs() const
{
    const double offset = m_reading.recordings().parts()[m_part].offsetMs;
    return m_record.timeMs == 0 ? std::nullopt : std::optional(offset + static_cast<double>(m_record.timeMs));
}

bool Records::open()
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

void Records::close()
{
    for (const auto& finding : m_reader->findings()) {
        m_damage.push_back({m_reading.recordings().parts()[m_part].file, finding.offset, finding.text});
    }
    m_reader.reset();
    ++m_part;
}

bool Records::isWanted() const
{
    return !m_types || std::find(m_types->begin(), m_types->end(), type()) != m_types->end();
}

/// Goes to the next record. Without the interpreter's lock. @return false behind the last one
bool Records::goOn()
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
        m_value = m_decode ? m_recorded[type().track].apply(m_record) : nullptr;
        const bool isLost = !time && !(m_request.from.empty() && m_request.to.empty());
        if (!isLost && !(time && m_reading.recordings().isBefore(*time))) {
            return true;
        }
    }
    return false;
}

py::list Records::damage() const
{
    std::vector<FoundDamage> all = m_reading.damage();
    all.insert(all.end(), m_damage.begin(), m_damage.end());
    return pythonDamage(all);
}

}  // namespace RecPython
