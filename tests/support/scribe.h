// Stores what a value says about its changes, as the recorder does.
#pragma once

#include <cstdint>
#include <string>

#include <recording2/fileaccess.h>
#include <values/value.h>
#include <vkbase/observer.h>

namespace TestSupport {

class Scribe final : public IObserver {
public:
    /// @param timeMs of what is stored next; it outlives this
    Scribe(Recording2::CFileAccess& file, values::ValueBase& value, std::int32_t code, const std::uint64_t& timeMs)
        : m_file(file), m_value(value), m_code(code), m_timeMs(timeMs)
    {
        m_value.CommandRecordingOn();
        m_value.AddObserver(this);
    }
    Scribe(const Scribe&) = delete;
    Scribe& operator=(const Scribe&) = delete;
    ~Scribe() override { m_value.RemoveObserver(this); }

    void storeState(bool isRangeDefinition = false) { store(m_value.GetStringForRecording(false), isRangeDefinition); }

private:
    void Update(void* /*subject*/, TChangeCode /*code*/) override { store(m_value.GetStringForRecording(true), false); }
    void store(const std::string& text, bool isRangeDefinition)
    {
        Recording2::CVTCmdData record;
        record.set_cmd(m_code);
        record.set_str(text.data(), static_cast<std::int32_t>(text.size()));
        m_file.write(record, m_timeMs, isRangeDefinition);
    }

    Recording2::CFileAccess& m_file;
    values::ValueBase& m_value;
    std::int32_t m_code;
    const std::uint64_t& m_timeMs;
};

}  // namespace TestSupport
