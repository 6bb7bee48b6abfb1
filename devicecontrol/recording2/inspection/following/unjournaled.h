// A recording without a journal that is being written: what of it has reached the system.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <system/nativefile.h>
#include "../../format/bytesource.h"
#include "../inspection.h"
#include "recordwindow.h"

namespace Recording2::Inspection {

/// Records are walked from the type table on, each as soon as all of it is there. Nobody knows their times.
class Unjournaled final : private Format::ByteSource {
public:
    /// @param recording open; must outlive this
    explicit Unjournaled(const System::NativeFile& recording) : m_recording(recording) {}

    bool next(Record& record);
    /// The recording was closed: what stands from there on is no record.
    void endAt(std::int64_t position) { m_end = position; }
    [[nodiscard]] std::uint64_t number() const { return m_number; }
    [[nodiscard]] const std::vector<TypeEntry>& types() const { return m_types; }

private:
    bool readTypes();
    [[nodiscard]] bool isKnown(std::int32_t code) const;
    std::size_t readAt(std::int64_t offset, char* out, std::size_t size) override;
    [[nodiscard]] std::int64_t size() override { return m_end.value_or(m_recording.size()); }

    const System::NativeFile& m_recording;
    std::vector<TypeEntry> m_types;
    std::optional<std::int64_t> m_end;
    std::int64_t m_at = 0;  // 0 until the type table was read
    std::uint64_t m_number = 0;
    RecordWindow m_window;
};

}  // namespace Recording2::Inspection
