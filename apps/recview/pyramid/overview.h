// What one recording file looks like from afar: levels at every zoom, and the state at any time within milliseconds.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <shared_mutex>
#include <span>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>
#include <values/maps.h>
#include "rectool/replay/frequencies.h"
#include "rectool/replay/inforce.h"
#include "store.h"
#include "view.h"

namespace RecView {

using Recording2::Inspection::Record;
using Recording2::Inspection::Summary;

// Times are milliseconds since 1970 UTC. "The time" of a record is the one it is filed under: that of rectool cat and
// state. Its "moment" is when its value was measured (rectool's measuredtime), as rectool plot shows it: never before
// that of the record of its type before it, and never after the end of the recording. Sweeps are drawn by their moment.
// A recording that does not tell when it began, begins at 0.

/// A record on its way past, in the one pass in which overviews are made.
struct PassedRecord {
    const Record& record;  ///< good during the call
    double timeMs = 0;
    double momentMs = 0;
    /// The value as it is after the record, null when its data is not understood; good during the call. Null, too, for
    /// most sweeps (levels), which are not made into values in this pass: ask isSweep first.
    const values::ValueBase* value = nullptr;
    bool isSweep = false;  ///< a record of levels that was understood
};

/// What somebody else finds out in the same pass, and keeps in columns of the same store (kinds from FirstForeignKind
/// on). Of an overview that is opened again no part is made: its columns are read from the overview's store.
class OverviewPart {
public:
    OverviewPart() = default;
    OverviewPart(const OverviewPart&) = delete;
    OverviewPart& operator=(const OverviewPart&) = delete;
    virtual ~OverviewPart() = default;

    /// Every record whose time is not lost, in their order, under the overview's lock for writing. It may append a
    /// twelfth of the bytes of the records (data, 30 bytes more a record); coarser after that.
    virtual void add(const PassedRecord& passed) = 0;
    /// After the last record, under the same lock: what is still in memory goes into the store.
    virtual void finish() {}
};
/// Makes the part of an overview; may be empty. The store outlives it.
using MakePart = std::function<std::unique_ptr<OverviewPart>(Store& store, const Summary& summary)>;

/// Where a record stands.
struct RecordPlace {
    std::int64_t position = 0;  ///< in the file; 0: the first record
    std::uint64_t number = 0;   ///< 0 is the first record
};

/// Visits the records from the one at a place on, in their order, until the visitor gives false. Any thread, several at
/// once.
using RecordSource = std::function<void(const RecordPlace& place, const std::function<bool(const Record&)>& visit)>;
/// Those of a finished file. Its tables are read when first needed; those of the last files are kept.
RecordSource recordsOf(const std::string& path);
/// Those of a file that is being written ("NAME.tmp"), as far as they were accepted; also after it was closed.
RecordSource growingRecords(const std::string& path);

/// Sweeps of one type over one channel range. A series begins anew after a pause, but remains the same one.
struct Series {
    std::int32_t code = 0;
    std::uint32_t number = 0;  ///< within its type
    values::ChannelRange range;
    /// Of ranges too many to be told apart: then range is a grid that all of them are entered into.
    bool isMixed = false;
    RecTool::FrequencySpan span;
    std::uint64_t sweeps = 0;
    double firstMs = 0;  ///< moments of the first and the last one
    double lastMs = 0;
    double usualMs = 0;  ///< the median distance from a sweep to the next of its type; 0 where there is none
};

/// When the channel range in force changed.
struct RangeChange {
    double ms = 0;  ///< moment
    RecTool::FrequencySpan span;
};

/// A spectrum of the recording.
struct Spectrum {
    std::int32_t code = 0;
    RecTool::FrequencySpan span;  ///< of all series
    double firstMs = 0;
    double lastMs = 0;
    std::uint64_t sweeps = 0;
};

/// A sweep as the recording has it.
struct Sweep {
    Record record;
    double momentMs = 0;
    std::optional<double> previousMs;  ///< moments of its neighbours of the same type in this file
    std::optional<double> nextMs;
    values::ChannelRange range;
    std::vector<float> levels;
};

/// Levels over frequency, or of a channel over time.
struct Curve {
    double hz = 0;           ///< the middle of the channel, for a channel over time; 0 where none is there
    std::vector<double> at;  ///< Hz, or milliseconds since 1970 UTC; the middle of each point
    std::vector<float> max;  ///< NaN where nothing was measured
    std::vector<float> min;
    std::vector<float> mean;
    bool exact = true;

    [[nodiscard]] std::vector<float>& levels(Combine of)
    {
        return of == Combine::Max ? max : of == Combine::Min ? min : mean;
    }
};

/// How far a recording is known, in the store.
struct OverviewHead {
    double startMs = 0;
    double endMs = 0;     ///< of the recording; while it grows: time of its last record
    double growthMs = 0;  ///< time of the last record
    double lengthMs = 0;  ///< what was measured later than this was stamped by a wrong clock; 0: not known
    std::uint64_t records = 0;
    std::int64_t bytes = 0;  ///< end of the last record in the file that is in
};

class OverviewBuilder;

/// Made by an OverviewBuilder, which may still add to it, or opened from the cache. All const members may be called
/// from any thread at any time; they lock by themselves (writers wait for them, a draw holds the lock for some
/// milliseconds). Whoever reads columns of the store directly holds lock() meanwhile. Never call members that lock
/// while holding it.
class Overview {
public:
    /// Opens what a finished builder put into a store. @return null when the store holds something else
    static std::shared_ptr<Overview> open(std::unique_ptr<Store> store, RecordSource records);
    Overview(const Overview&) = delete;
    Overview& operator=(const Overview&) = delete;
    ~Overview();

    [[nodiscard]] OverviewHead head() const;
    [[nodiscard]] bool isComplete() const;  ///< the builder has finished

    /// Types that hold spectra, by type number; those without any sweep are left out.
    [[nodiscard]] std::vector<Spectrum> spectra() const;
    /// By type number and the order in which they appeared.
    [[nodiscard]] std::vector<Series> series() const;
    /// The changes of channel range within a stretch, and the one in force at its beginning; of very many the first.
    [[nodiscard]] std::vector<RangeChange> ranges(std::int32_t code, const Stretch& span, std::size_t most) const;

    /// Draws what the recording has in the grid's view. From blocks a picture of any zoom takes some milliseconds. With
    /// view.exact it is made of single sweeps where those in the view have less than 24 MB in the file, else of blocks.
    /// @param ofSingleUnits from blocks that are the finest in frequency, where there are any
    void draw(Grid& grid, bool ofSingleUnits = false) const;
    /// How many bytes of records an exact drawing would read; for a decision about several files together.
    [[nodiscard]] std::uint64_t bytesOfExact(const View& view) const;
    /// Largest, smallest and mean level by frequency over a stretch of time.
    [[nodiscard]] Curve spectrumOver(std::int32_t code, const Stretch& time, const RecTool::FrequencySpan& span,
                                     std::size_t points) const;
    /// A channel over time: the one whose frequencies hold hz.
    [[nodiscard]] Curve channelOver(std::int32_t code, double hz, const Stretch& time, std::size_t columns) const;
    /// The sweep in force at a moment: the last one that was measured then or before; nothing without one.
    [[nodiscard]] std::optional<Sweep> sweepAt(std::int32_t code, double ms) const;
    /// All sweeps of a type whose moments lie in a stretch (both ends included), in their order, until false is given.
    /// What is given is good during the call.
    using SweepVisitor =
        std::function<bool(const Record&, double momentMs, const values::ChannelRange&, std::span<const float> levels)>;
    void sweeps(std::int32_t code, const Stretch& time, const SweepVisitor& visit) const;

    /// The state in force at a time: exactly that of applying all records up to then, as rectool state does.
    [[nodiscard]] RecTool::InForce stateAt(double ms) const;
    /// The records whose times lie in a stretch (both ends included), with the state after each of them, until the
    /// visitor gives false. The state is complete: it begins with a checkpoint before the stretch.
    /// @param last when set, takes the state after the last record up to the end of the stretch
    void walk(const Stretch& time, const std::function<bool(const Record&, const RecTool::InForce&)>& visit,
              RecTool::InForce* last = nullptr) const;

    /// For columns of one's own.
    [[nodiscard]] std::shared_lock<std::shared_mutex> lock() const;
    [[nodiscard]] const Store& store() const;
    /// Keeps a complete overview's store under a name, as Store::keep does.
    bool keepAs(const std::filesystem::path& path);
    /// Where the records are read again: of a file that grew, after it was renamed.
    void setRecords(RecordSource records);

private:
    friend class OverviewBuilder;
    struct Private;
    struct Beginning;
    explicit Overview(std::unique_ptr<Private> parts);
    [[nodiscard]] Beginning sweepsFrom(std::int32_t code, double momentMs) const;
    void drawSweeps(Grid& grid) const;
    std::unique_ptr<Private> d;
};

/// Makes an overview, record by record: of a finished file in one go, of one that grows as its records come. One
/// thread. Memory: some 60 MB at most, whatever the records hold. Disk: a quarter of the bytes of the records at most,
/// with the columns of the part; where sweeps are small, blocks hold more of them.
class OverviewBuilder {
public:
    /// @param summary header and types (its times are not looked at); of a file that grows: what is known of it
    /// @param records where they are read again
    OverviewBuilder(std::unique_ptr<Store> store, const Summary& summary, RecordSource records,
                    const MakePart& makePart = {});
    OverviewBuilder(const OverviewBuilder&) = delete;
    OverviewBuilder& operator=(const OverviewBuilder&) = delete;
    ~OverviewBuilder();

    /// The next record. One whose time is lost (0) is passed over: it has no place in time.
    void add(const Record& record);
    /// After the last one. @param endMs of the recording, 0: time of the last record
    void finish(double endMs = 0);
    /// Good from the beginning on, and after the builder's end.
    [[nodiscard]] std::shared_ptr<Overview> overview() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}  // namespace RecView
