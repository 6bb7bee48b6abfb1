// Finds out, in the one pass in which a pyramid is made, what numbers, texts and bearings there are and when they
// changed.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "keptcolumns.h"
#include "pyramid/overview.h"
#include "rectool/replay/linesofbearing.h"

namespace RecView {

/// How much may be kept: a share of what was read. What matters least is left out first.
class KeptBudget {
public:
    /// @param part of what was read: 16 for a sixteenth
    explicit KeptBudget(std::uint64_t part) : m_part(part) {}

    void read(std::size_t bytes) { m_read += bytes; }
    /// @param share of all that may be kept, 0 to 1
    [[nodiscard]] bool allows(std::size_t bytes, double share) const;
    void keep(std::size_t bytes) { m_kept += bytes; }

private:
    std::uint64_t m_part;
    std::uint64_t m_read = 0;
    std::uint64_t m_kept = 0;
};

class ValuePart final : public OverviewPart {
public:
    ValuePart(Store& store, const Summary& summary);

    void add(const PassedRecord& passed) override;
    void finish() override;

private:
    struct Numbers {
        Column* all = nullptr;
        bool isOpen = true;             // every one is still kept
        std::vector<KeptBlock> blocks;  // of each level, not yet full
        std::vector<std::uint32_t> counts;
    };
    struct Changes {
        Column* column = nullptr;
        std::string text;  // of the last one, which was at
        double ms = 0;
        bool isFirst = true;
        std::uint32_t leftOut = 0;
    };

    void noteKind(const PassedRecord& passed);
    void addNumber(const PassedRecord& passed, double value);
    void addToBlocks(std::int32_t code, Numbers& numbers, const KeptBlock& one);
    void pushBlock(std::int32_t code, Numbers& numbers, std::uint32_t level);
    void addChange(const PassedRecord& passed);
    std::uint32_t keepText(const std::string& text);
    void addBearing(const RecTool::BearingTaker::Taken& taken);
    void addPosition(double ms);
    void keepPosition();

    Store& m_store;
    std::vector<Recording2::Inspection::TypeEntry> m_types;
    KeptBudget m_budget{16};
    KeptBudget m_positionBudget{48};  // a twelfth together
    std::map<std::int32_t, Kind> m_kinds;
    std::map<std::int32_t, Numbers> m_numbers;
    std::map<std::int32_t, Changes> m_changes;
    std::unordered_map<std::string, std::uint32_t> m_texts;  // those that were kept lately
    RecTool::BearingTaker m_taker;
    std::int64_t m_position = 0;  // of the record being added
    std::int32_t m_code = 0;
    double m_momentMs = 0;
    KeptBearing m_lastBearing;
    std::uint32_t m_bearingsLeftOut = 0;
    KeptPosition m_lastPosition;
    bool m_positionIsKept = true;
};

/// A bearing as it is kept. @param ms when it was measured @param record that tells it
[[nodiscard]] KeptBearing keptBearing(const RecTool::BearingTaker::Taken& taken, double ms, std::int32_t code,
                                      std::int64_t position);

/// For the maker of overviews.
[[nodiscard]] std::unique_ptr<OverviewPart> makeValuePart(Store& store, const Summary& summary);

/// A plain value on one line, cut where it is long.
[[nodiscard]] std::string changeText(const Record& record, const values::ValueBase* value);
/// NaN where the value is no number.
[[nodiscard]] double numberOf(const values::ValueBase* value);

}  // namespace RecView
