// Records one after the other, for Python's loops.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <recording2/inspection/inspection.h>

#include "pythonvalues.h"
#include "reading.h"
#include "rectool/replay/recordedvalues.h"

namespace RecPython {

/// Goes through the files in order of their start. One thread at a time.
class Records {
public:
    /// Which records are wanted, by the times that they are filed under. @param decode values too, and not only the
    /// bytes
    /// @throws Refusal
    Records(const std::vector<std::string>& files, const std::string& keyword, const std::string& device,
            const std::string& from, const std::string& to, bool decode);

    /// The next record: ms of the axis or None, device, keyword, type number, file, bytes, value.
    /// @throws Interrupted, and the end of Python's loop
    pybind11::tuple next();
    [[nodiscard]] pybind11::list damage() const;
    [[nodiscard]] std::int64_t startUs() const { return m_reading.startUs(); }

private:
    [[nodiscard]] bool goOn();
    [[nodiscard]] bool open();
    void close();
    [[nodiscard]] RecTool::TrackType type() const;
    [[nodiscard]] std::optional<double> timeMs() const;
    [[nodiscard]] bool isWanted() const;

    Request m_request;
    bool m_decode;
    Reading m_reading;
    std::optional<std::vector<RecTool::TrackType>> m_types;
    std::vector<RecTool::RecordedValues> m_recorded;  // of the tracks
    std::optional<Recording2::Inspection::RecordReader> m_reader;
    Recording2::Inspection::Record m_record;
    const values::ValueBase* m_value = nullptr;  // null where it is not understood, or not wanted
    std::size_t m_part = 0;
    std::vector<FoundDamage> m_damage;  // in records
    Patience m_patience;
    ValueConverter m_converter;
    // Texts that many records share are made once.
    std::map<std::pair<std::size_t, std::int32_t>, pybind11::str> m_keywords;
    std::map<std::size_t, pybind11::str> m_devices;
    std::map<std::size_t, pybind11::str> m_files;
};

}  // namespace RecPython
