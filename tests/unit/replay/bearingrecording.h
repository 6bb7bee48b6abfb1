// Recordings of bearings for the tests of MappingGenerator.
#pragma once

#include <recording2/mappinggenerator.h>
#include <values/maps.h>
#include <vkbase/observer.h>

#include "replay_fixture.h"
#include "stepreplay.h"

namespace ReplayTests {

using BearingMap = Recording2::MappingGenerator::BearingMap;
using LiveMap = values::ValueMap<values::Bearing, values::BearingHandler>;

constexpr std::int32_t DfSpectrum = 20;
constexpr std::int32_t Level = 36;

inline bool carriesRange(const std::string& text)
{
    return text.find("34;") != std::string::npos;
}

/// Notes the time stamp of a map at every change of it.
class ChangeCounter final : public IObserver {
public:
    explicit ChangeCounter(BearingMap& map) : m_map(map) { m_map.AddObserver(this); }
    ~ChangeCounter() override { m_map.RemoveObserver(this); }
    ChangeCounter(const ChangeCounter&) = delete;
    ChangeCounter& operator=(const ChangeCounter&) = delete;
    void Update(void* /*subject*/, TChangeCode /*code*/) override { m_stamps.push_back(m_map.GetTimeStamp()); }

    [[nodiscard]] const std::vector<std::uint64_t>& stamps() const { return m_stamps; }

private:
    BearingMap& m_map;
    std::vector<std::uint64_t> m_stamps;
};

inline std::string stateOf(const BearingMap& map)
{
    return map.GetObjectStateStringForRecording();
}

/// The state of a map that was given these texts, one after the other.
inline std::string stateAfter(const std::vector<std::string>& texts)
{
    BearingMap map;
    for (const std::string& text : texts) {
        map.ApplyRecordedState(text, 0, true);
    }
    return stateOf(map);
}

class MappingTest : public ReplayTest {
protected:
    static constexpr std::uint64_t StartMs = 1'700'000'000'123;
    static constexpr std::uint64_t StopMs = StartMs + 60'000;

    /// Writes records with the library; each gets the time under which it stands in the file.
    void record(std::vector<StoredRecord>& records) const
    {
        auto file = openForWriting(Name);
        std::uint64_t last = 0;
        for (StoredRecord& record : records) {
            write(*file, record.code, record.text, record.time, record.isDefinition);
            last = std::max(last + 1, record.time);
            record.time = last;
        }
        HeaderFields header{.startMs = StartMs, .stopMs = StopMs};
        close(*file, header);
    }
    bool load()
    {
        return m_generator.LoadRecording(m_start, m_stop, TestSupport::fileName8(filePath(Name)).c_str(), nullptr);
    }
    /// @param start, stop milliseconds from the start of the recording
    void request(BearingMap& map, std::uint64_t start, std::uint64_t stop)
    {
        m_generator.RequestMapping(map, micros(start), micros(stop));
    }
    static long long micros(std::uint64_t offset) { return static_cast<long long>((StartMs + offset) * 1000); }

    Recording2::MappingGenerator m_generator;
    long long m_start = 0;
    long long m_stop = 0;
};

}  // namespace ReplayTests
