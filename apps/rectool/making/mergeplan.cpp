// Surveying the inputs, finding which continues which, and giving merged types their numbers.
#include "mergeplan.h"

#include <optional>
#include <set>
#include <utility>

#include "printing/text.h"
#include "replay/walk.h"
#include "system/interrupt.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;
using Inspection::TypeEntry;

namespace {

/// How the second of two recordings stands to the first.
enum class Relation : std::uint8_t {
    Apart,      ///< their records do not overlap
    Continues,  ///< they do by a few milliseconds only: the second goes on where the first ends
    Overlaps,
};

// A record whose millisecond is taken moves on, so a recording may run a little past its stop; and the records of the
// state that another begins with take some milliseconds, too.
constexpr std::uint64_t MostHandoverMs = 1000;

// Recorders store the state that they begin with from this time on; what is cut begins as early as it can.
constexpr std::uint64_t FirstTimeOfRecorder = 10;

/// @param later begins no earlier
Relation relate(const MergeInput& earlier, const MergeInput& later)
{
    if (earlier.empty() || later.empty() || later.firstMs > earlier.lastMs || later.lastMs < earlier.firstMs) {
        return Relation::Apart;
    }
    const bool startsAtItsStop = later.summary.header.startMs >= earlier.summary.header.stopMs;
    const bool onlyStateOverlaps = later.bodyMs == 0 || later.bodyMs >= earlier.lastMs;
    const bool few = earlier.lastMs - later.firstMs <= MostHandoverMs;
    return few && (startsAtItsStop || onlyStateOverlaps) ? Relation::Continues : Relation::Overlaps;
}

class Planner {
public:
    Planner(const std::vector<MergeInput>& inputs, bool separate) : m_inputs(inputs), m_separate(separate)
    {
        for (const MergeInput& input : inputs) {
            for (const TypeEntry& type : input.summary.types) {
                m_reserved.insert(type.typeNumber);
            }
            for (const auto& [number, type] : input.types) {
                m_reserved.insert(number);
            }
        }
    }

    MergePlan run()
    {
        m_plan.numbers.resize(m_inputs.size());
        m_plan.notBefore.resize(m_inputs.size());
        for (std::size_t input = 0; input < m_inputs.size() && m_plan.refusal.empty(); ++input) {
            add(input);
        }
        return std::move(m_plan);
    }

private:
    void add(std::size_t input)
    {
        std::vector<Relation> relations;
        for (std::size_t earlier = 0; earlier < input; ++earlier) {
            relations.push_back(relate(m_inputs[earlier], m_inputs[input]));
        }
        std::map<std::int32_t, std::int32_t>& numbers = m_plan.numbers[input];
        for (const TypeEntry& type : m_inputs[input].summary.types) {
            if (m_plan.refusal.empty() &&
                numbers.count(type.typeNumber) == 0) {  // a number that stands there twice counts once
                place(input, type, true, relations);
            }
        }
        for (const auto& [number, type] : m_inputs[input].types) {
            if (m_plan.refusal.empty() && numbers.count(number) == 0) {
                place(input, {number, 0, "", ""}, false, relations);
            }
        }
    }

    void place(std::size_t input, const TypeEntry& type, bool named, const std::vector<Relation>& relations)
    {
        MergedType* merged = find(type, named);
        const std::optional<std::size_t> overlapping =
            merged == nullptr || !records(input, type.typeNumber) ? std::nullopt : findOverlapping(*merged, relations);
        if (overlapping && !m_separate) {
            refuse(*merged, *overlapping, input, type.typeNumber);
            return;
        }
        if (overlapping) {
            merged = &addType(apart(type, input), named, true);
        } else if (merged == nullptr) {
            merged = &addType(type, named, isTaken(type.typeNumber));
        } else if (named && !merged->named) {
            merged->entry = type;
            merged->named = true;
        }
        m_plan.numbers[input][type.typeNumber] = merged->entry.typeNumber;
        if (merged->entry.typeNumber != type.typeNumber) {
            m_plan.renumbered.push_back({input, type.typeNumber, merged->entry, overlapping.has_value()});
        }
        if (records(input, type.typeNumber)) {
            handOver(*merged, input, relations);
            merged->inputs.push_back(input);
        }
    }

    static std::optional<std::size_t> findOverlapping(const MergedType& merged, const std::vector<Relation>& relations)
    {
        const auto found = std::find_if(merged.inputs.begin(), merged.inputs.end(),
                                        [&](std::size_t earlier) { return relations[earlier] == Relation::Overlaps; });
        return found == merged.inputs.end() ? std::nullopt : std::optional(*found);
    }

    /// The merged value that a type of a further file is, null for a new one. A number without a name is what another
    /// file calls it.
    MergedType* find(const TypeEntry& type, bool named)
    {
        const auto sameValue = [&](const MergedType& merged) {
            return named && merged.named && merged.entry.keyword == type.keyword &&
                   merged.entry.valuePath == type.valuePath && merged.entry.valueType == type.valueType;
        };
        const auto sameNumber = [&](const MergedType& merged) {
            return (!named || !merged.named) && merged.entry.typeNumber == type.typeNumber &&
                   m_unchanged.count(type.typeNumber) > 0;
        };
        auto found = std::find_if(m_plan.types.begin(), m_plan.types.end(), sameValue);
        if (found == m_plan.types.end()) {
            found = std::find_if(m_plan.types.begin(), m_plan.types.end(), sameNumber);
        }
        return found == m_plan.types.end() ? nullptr : &*found;
    }

    [[nodiscard]] bool records(std::size_t input, std::int32_t number) const
    {
        return m_inputs[input].types.count(number) > 0;
    }

    [[nodiscard]] bool isTaken(std::int32_t number) const
    {
        return std::any_of(m_plan.types.begin(), m_plan.types.end(),
                           [&](const MergedType& type) { return type.entry.typeNumber == number; });
    }

    MergedType& addType(TypeEntry type, bool named, bool needsNumber)
    {
        if (needsNumber) {
            type.typeNumber = freeNumber();
        } else {
            m_unchanged.insert(type.typeNumber);
        }
        m_plan.types.push_back({std::move(type), named, {}});
        return m_plan.types.back();
    }

    std::int32_t freeNumber()
    {
        constexpr std::int32_t LastOfRecorder = 48;  // numbers up to this one mean certain keywords to recorders
        std::int32_t number = LastOfRecorder + 1;
        while (m_reserved.count(number) > 0) {
            ++number;
        }
        m_reserved.insert(number);
        return number;
    }

    static TypeEntry apart(TypeEntry type, std::size_t input)
    {
        const std::string number = std::to_string(input + 1);
        if (!type.keyword.empty() || !type.valuePath.empty()) {
            type.keyword.append("_").append(number);
            type.valuePath.insert(0, number).insert(0, 1, '/');
        }
        return type;
    }

    void handOver(const MergedType& merged, std::size_t input, const std::vector<Relation>& relations)
    {
        for (const std::size_t earlier : merged.inputs) {
            if (relations[earlier] == Relation::Continues) {
                std::uint64_t& notBefore = m_plan.notBefore[input];
                notBefore = std::max(notBefore, m_inputs[earlier].lastMs + 1);
            }
        }
    }

    void refuse(const MergedType& merged, std::size_t earlier, std::size_t input, std::int32_t number)
    {
        const TypeEntry& entry = merged.entry;
        const std::string name =
            merged.named ? oneLine(fromLatin1(entry.keyword)) + " (" + oneLine(fromLatin1(entry.valuePath)) + ')'
                         : "Type " + std::to_string(number);
        const std::uint64_t from = std::max(m_inputs[input].types.at(number).firstMs, m_inputs[earlier].firstMs);
        m_plan.refusal = name + " is recorded here and in " + m_inputs[earlier].file + " at the same time, from " +
                         utc(from) + " on, so that its changes have no common order; --separate keeps the two apart.";
        m_plan.refusedInput = input;
    }

    const std::vector<MergeInput>& m_inputs;
    bool m_separate;
    std::set<std::int32_t> m_reserved;   // numbers that any input uses, or the merged recording
    std::set<std::int32_t> m_unchanged;  // numbers that mean what they meant in the inputs
    MergePlan m_plan;
};

}  // namespace

MergeInput surveyForMerge(std::string file, Inspection::Summary summary)
{
    MergeInput input;
    input.file = std::move(file);
    input.summary = std::move(summary);
    const std::uint64_t start = input.summary.header.startMs;
    bool inState = true;
    std::int32_t lastCode = 0;
    input.findings = walk(input.file, input.summary, [&](const Inspection::Record& record) {
        if (record.timeMs == 0) {
            ++input.withoutTime;
            return !Interrupt::requested();
        }
        const std::uint64_t clock = start + record.timeMs;
        const bool first = input.types.empty();
        MergeInput::Type& type = input.types[record.code];
        const bool again = type.records > 0 && record.code != lastCode;  // one value may take two records
        lastCode = record.code;
        input.firstMs = first ? clock : input.firstMs;
        input.isPart = first ? record.timeMs < FirstTimeOfRecorder : input.isPart;
        if (inState && (input.isPart ? clock > input.firstMs + input.stateRecords : again)) {
            inState = false;
            input.bodyMs = clock;
        }
        input.stateRecords += inState ? 1 : 0;
        input.lastMs = clock;
        type.firstMs = type.records == 0 ? clock : type.firstMs;
        ++type.records;
        type.dataBytes += static_cast<std::int64_t>(record.data.size());
        type.lengthDigits += static_cast<std::int64_t>(std::to_string(record.data.size()).size());
        return !Interrupt::requested();
    });
    return input;
}

MergePlan planMerge(const std::vector<MergeInput>& inputs, bool separate)
{
    return Planner(inputs, separate).run();
}

}  // namespace RecTool
