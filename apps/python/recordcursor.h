// Records one after the other, for Python's loops.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <vector>

#include <recording2/inspection/inspection.h>

#include "reading.h"
#include "rectool/replay/recordedvalues.h"

namespace RecPython {

/// Which records are wanted, by the times that they are filed under.
struct RecordRequest : Request {
    bool decode = true;  ///< values too, and not only the bytes
};

/// Goes through the files in order of their start. One thread at a time.
class RecordCursor {
public:
    explicit RecordCursor(const RecordRequest& request);

    /// Goes to the next record. Without the interpreter's lock. @return false behind the last one @throws Interrupted
    bool next();

    [[nodiscard]] const Recording2::Inspection::Record& record() const { return m_record; }
    [[nodiscard]] std::size_t part() const { return m_part; }
    [[nodiscard]] RecTool::TrackType type() const;
    /// On the axis of all files; nothing where its time is lost.
    [[nodiscard]] std::optional<double> timeMs() const;
    /// Null where it is not understood, or not wanted. Good until the next record.
    [[nodiscard]] const values::ValueBase* value() const { return m_value; }
    [[nodiscard]] const Reading& reading() const { return m_reading; }
    [[nodiscard]] std::vector<FoundDamage> damage() const;

private:
    [[nodiscard]] bool open();
    void close();
    [[nodiscard]] bool isWanted() const;

    RecordRequest m_request;
    Reading m_reading;
    std::optional<std::vector<RecTool::TrackType>> m_types;
    std::vector<RecTool::RecordedValues> m_recorded;  // of the tracks
    std::optional<Recording2::Inspection::RecordReader> m_reader;
    Recording2::Inspection::Record m_record;
    const values::ValueBase* m_value = nullptr;
    std::size_t m_part = 0;
    std::vector<FoundDamage> m_damage;  // in records
    Patience m_patience;
};

}  // namespace RecPython
