// Taking records by clock time, and leaving out states that a continuing part tells again.
#include "merger.h"

#include <algorithm>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "printing/output.h"
#include "replay/inforce.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

/// Takes the records of all inputs in the order of their clock times. Files are open only while their records come.
class Merger {
public:
    Merger(const std::vector<MergeInput>& inputs, const MergePlan& plan, std::uint64_t startMs, NewRecording& output)
        : m_plan(plan), m_startMs(startMs), m_output(output)
    {
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            m_sources.emplace_back(inputs[i], i);
            m_bytesInAll += Inspection::RecordReader(inputs[i].file, inputs[i].summary).bytesInAll();
            const bool joins = i > 0 && inputs[i].isPart;
            m_continued = m_continued || joins || plan.notBefore[i] > 0;
            if (joins) {
                m_next.emplace(inputs[i].cutMs(), Step::Join, i);
            } else if (!inputs[i].empty()) {
                m_next.emplace(std::max(inputs[i].firstMs, plan.notBefore[i]), Step::Put, i);
            }
        }
    }

    void run()
    {
        Progress progress("merging");
        constexpr std::int64_t ProgressBytes = std::int64_t{1} << 20;
        std::int64_t nextProgress = ProgressBytes;
        while (!m_next.empty() && !Interrupt::requested()) {
            const auto [clockMs, step, index] = *m_next.begin();
            m_next.erase(m_next.begin());
            Source& source = m_sources[index];
            if (!source.opened) {
                open(source, step);
            }
            if (step == Step::Join) {
                join(source);
            } else {
                put(source, clockMs);
                goOn(source);
            }
            if (m_bytesRead >= nextProgress) {
                progress.show(m_bytesRead, m_bytesInAll);
                nextProgress = m_bytesRead + ProgressBytes;
            }
        }
        putOtherRanges();
    }

    [[nodiscard]] const Adjustments& adjustments() const { return m_adjustments; }

private:
    /// What comes next of an input; in this order at the same clock time.
    enum class Step : std::uint8_t {
        Join,  ///< whether the state that it begins with is that of what was merged up to here
        Put,   ///< a record
    };
    struct Source {
        Source(const MergeInput& file, std::size_t place)
            : input(file),
              index(place),
              ranges(file.summary.channelRangeTimes.begin(), file.summary.channelRangeTimes.end())
        {
        }

        const MergeInput& input;
        std::size_t index;
        std::set<std::uint64_t> ranges;  // times of the file's channel range table, of records that are still to come
        std::unique_ptr<Inspection::RecordReader> reader;
        std::deque<Inspection::Record> ahead;  // read already
        Inspection::Record record;             // the next one
        bool opened = false;
        std::uint64_t taken = 0;  // records that came
    };

    [[nodiscard]] static std::uint64_t clockOf(const Source& source)
    {
        return source.input.summary.header.startMs + source.record.timeMs;
    }

    void open(Source& source, Step step)
    {
        source.opened = true;
        source.reader = std::make_unique<Inspection::RecordReader>(source.input.file, source.input.summary);
        if (step == Step::Put) {
            static_cast<void>(advance(source));
            return;
        }
        Inspection::Record record;
        while (source.ahead.size() < source.input.stateRecords && read(source, record)) {
            source.ahead.push_back(record);
        }
    }

    /// Reads on to the next record that has a time.
    bool read(Source& source, Inspection::Record& record)
    {
        if (source.reader == nullptr) {
            return false;
        }
        const std::int64_t before = source.reader->bytesRead();
        bool more = source.reader->next(record);
        while (more && record.timeMs == 0) {
            more = source.reader->next(record);
        }
        m_bytesRead += source.reader->bytesRead() - before;
        if (!more) {
            source.reader = nullptr;
        }
        return more;
    }

    bool advance(Source& source)
    {
        ++source.taken;
        if (source.ahead.empty()) {
            return read(source, source.record);
        }
        source.record = std::move(source.ahead.front());
        source.ahead.pop_front();
        return true;
    }

    void goOn(Source& source)
    {
        if (advance(source)) {
            m_next.emplace(std::max(clockOf(source), m_plan.notBefore[source.index]), Step::Put, source.index);
        }
    }

    /// A part that was cut out begins with the state in force at its first moment. Where all records up to that moment
    /// are here, they say the same, and the state is left out.
    void join(Source& source)
    {
        if (beginsWithStateInForce(source)) {
            for (const Inspection::Record& record : source.ahead) {
                source.ranges.erase(record.timeMs);
            }
            source.taken = source.ahead.size();
            m_adjustments.repeatedStates += source.ahead.size();
            source.ahead.clear();
        }
        goOn(source);
    }

    [[nodiscard]] bool beginsWithStateInForce(const Source& source) const
    {
        const std::map<std::int32_t, std::int32_t>& numbers = m_plan.numbers[source.index];
        std::map<std::int32_t, std::int32_t> before;  // merged number to that of the file
        for (const auto& [number, merged] : numbers) {
            before.emplace(merged, number);
        }
        std::uint64_t at = 0;
        for (const auto& [code, last] : m_inForce.inOrder()) {
            const auto number = before.find(code);
            if (number == before.end()) {
                continue;  // of another station
            }
            for (const std::string& text : m_inForce.completeTexts(code)) {
                const auto isNext = [&] {
                    return at < source.ahead.size() && source.ahead[at].code == number->second &&
                           source.ahead[at].data == text;
                };
                if (!isNext()) {
                    return false;
                }
                // A map with its range is told twice in a row where the channel range table names it.
                const bool named = source.ranges.count(source.ahead[at].timeMs) > 0;
                at += 1;
                at += named && isNext() ? 1U : 0U;
            }
        }
        return at == source.ahead.size();
    }

    void put(Source& source, std::uint64_t clockMs)
    {
        const bool isRange = source.ranges.erase(source.record.timeMs) > 0;
        source.record.code = m_plan.numbers[source.index].at(source.record.code);
        const std::uint64_t clock = clockOf(source);
        const std::uint64_t wanted = clock - std::min(clock, m_startMs);
        if (repeatsState(source) || isThereAlready(source, wanted)) {
            ++m_adjustments.repeatedStates;
            return;
        }
        const std::uint64_t time = std::max(clockMs - std::min(clockMs, m_startMs), m_lastTime + 1);
        if (time > wanted) {
            ++m_adjustments.movedRecords;
            m_adjustments.movedByMs = std::max(m_adjustments.movedByMs, time - wanted);
        }
        m_output.write(source.record.code, source.record.data, time, isRange);
        m_lastTime = time;
        if (m_continued) {
            m_wanted[source.record.code] = wanted;
            source.record.timeMs = time;
            m_inForce.apply(source.record);
        }
    }

    /// Whether the part before ends with the record with which this one begins: both hold the moment of the cut.
    [[nodiscard]] bool isThereAlready(const Source& source, std::uint64_t wanted) const
    {
        const LastRecord* last = source.input.isPart ? m_inForce.find(source.record.code) : nullptr;
        return last != nullptr && m_wanted.at(source.record.code) == wanted && last->record.data == source.record.data;
    }

    /// Whether a record of the state that a continuing file begins with would have to be moved, and says nothing new.
    [[nodiscard]] bool repeatsState(const Source& source) const
    {
        const bool inState = source.taken <= source.input.stateRecords;
        if (!inState || clockOf(source) >= m_plan.notBefore[source.index]) {
            return false;
        }
        InForce alone;
        alone.apply(source.record);
        return alone.completeTexts(source.record.code) == m_inForce.completeTexts(source.record.code);
    }

    /// Those in the tables at whose time no record stands.
    void putOtherRanges()
    {
        for (const Source& source : m_sources) {
            for (const std::uint64_t time : source.ranges) {
                const std::uint64_t clock = source.input.summary.header.startMs + time;
                m_output.addChannelRange(std::max<std::uint64_t>(clock - std::min(clock, m_startMs), 1));
            }
        }
    }

    const MergePlan& m_plan;
    std::uint64_t m_startMs;
    NewRecording& m_output;
    std::vector<Source> m_sources;
    std::set<std::tuple<std::uint64_t, Step, std::size_t>> m_next;  // by clock time, one for each input
    std::uint64_t m_lastTime = 0;
    bool m_continued = false;                        // some input continues another
    InForce m_inForce;                               // by merged time
    std::map<std::int32_t, std::uint64_t> m_wanted;  // the time that the last record of a type had before it was moved
    Adjustments m_adjustments;
    std::int64_t m_bytesRead = 0;
    std::int64_t m_bytesInAll = 0;
};

}  // namespace

Adjustments mergeRecords(const std::vector<MergeInput>& inputs, const MergePlan& plan, std::uint64_t startMs,
                         NewRecording& output)
{
    Merger merger(inputs, plan, startMs, output);
    merger.run();
    return merger.adjustments();
}

}  // namespace RecTool
