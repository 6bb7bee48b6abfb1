// A recording made from Python: a station of the values that are given, and the real recorder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

namespace RecPython {

using PlainValue = std::variant<bool, double, std::string>;

struct StationOptions {
    std::string folder;
    std::string device;
    std::string deviceType;
    std::string caption;  ///< begins the files' names; empty: none
    std::string journal;  ///< "process", "power" or "off"
    std::uint64_t startUs = 0;
    std::vector<std::pair<std::string, PlainValue>> values;            ///< keywords and what they begin with
    std::vector<std::pair<std::string, std::vector<double>>> spectra;  ///< keywords and channels in Hz
};

/// Records while it lives, in the thread that made it. One at a time: it puts value tree, clock and configuration of
/// the process in force. Everything throws Refusal.
class StationRecorder {
public:
    explicit StationRecorder(const StationOptions& options);
    StationRecorder(const StationRecorder&) = delete;
    StationRecorder& operator=(const StationRecorder&) = delete;
    ~StationRecorder();  ///< closes the recording

    /// Times are microseconds since 1970 UTC and never go back.
    void set(const std::string& keyword, const PlainValue& value, std::uint64_t timeUs);
    void setChannels(const std::string& keyword, const std::vector<double>& channelsHz, std::uint64_t timeUs);
    void setLevels(const std::string& keyword, std::size_t first, std::span<const float> levels, std::uint64_t timeUs);
    /// Gives the files their names. Again: nothing.
    void close();
    [[nodiscard]] bool isOpen() const { return m_station != nullptr; }
    /// In the order of their making; as they are named when the recorder is closed.
    [[nodiscard]] const std::vector<std::string>& files() const { return m_files; }
    [[nodiscard]] std::uint64_t nowUs() const { return m_nowUs; }

private:
    class Station;
    void goTo(std::uint64_t timeUs);
    void afterChange();
    void noteFile();
    void requireThread() const;

    std::unique_ptr<Station> m_station;
    std::vector<std::string> m_files;
    std::uint64_t m_nowUs = 0;
    std::thread::id m_thread = std::this_thread::get_id();
};

}  // namespace RecPython
