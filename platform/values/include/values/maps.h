// Map values: one cell per channel of a channel range (a spectrum of levels, a range of bearings).
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include <values/valuebase.h>

namespace values {

/// The channels that a map's cells stand for: evenly spaced (start, step, count) or an explicit list, in Hz.
struct VALUES_EXPORT ChannelRange {
    double startHz = 0;
    double stepHz = 0;
    std::size_t count = 0;
    std::vector<double> channelsHz;  ///< if not empty, the channels themselves; count is then its size

    static ChannelRange Even(double startHz, double stepHz, std::size_t count);
    static ChannelRange List(std::vector<double> channelsHz);
    [[nodiscard]] bool isList() const { return !channelsHz.empty(); }
    [[nodiscard]] std::size_t size() const { return isList() ? channelsHz.size() : count; }
    [[nodiscard]] double frequencyHz(std::size_t channel) const;
    bool operator==(const ChannelRange&) const = default;
};

/// One direction-finding result.
struct VALUES_EXPORT Bearing {
    double azimuthDeg = std::numeric_limits<double>::quiet_NaN();    ///< 0..360, relative to the antenna; NaN: none
    double elevationDeg = std::numeric_limits<double>::quiet_NaN();  ///< -90..90; NaN: not measured
    double levelDb = std::numeric_limits<double>::quiet_NaN();       ///< NaN: not measured
    double quality = std::numeric_limits<double>::quiet_NaN();       ///< 0..100; NaN: not measured
};

/// Process-wide settings of the map handlers.
class VALUES_EXPORT HandlerBase {
public:
    HandlerBase() = delete;
    /// On (initially): a change's text carries the cells that changed. Off: it carries every cell.
    [[nodiscard]] static bool GetDataCompressMode();
    static void SetDataCompressMode(bool on);
};

/// How level cells are written into recording texts: NaN is "no measurement", resolution 0.01 dB.
struct VALUES_EXPORT levelHandler {};
/// How bearing cells are written into recording texts: shortest exact decimals.
struct VALUES_EXPORT BearingHandler {};

/// What all maps share.
class VALUES_EXPORT MappingBase : public ValueBase {
public:
    ~MappingBase() override;

    [[nodiscard]] const ChannelRange& GetChannelRange() const { return m_range; }
    /// Sets another range and empties the cells (setting the same range does nothing).
    /// @param range 16,777,216 channels at most, frequencies finite; the start and step of a list are not kept
    /// @throws VKException for any other range; nothing is changed then
    /// The time stamp goes back to 0: there is no measurement of the new range yet.
    void SetChannelRange(const ChannelRange& range, IObserver* originator = nullptr);
    [[nodiscard]] std::size_t size() const { return m_range.size(); }
    /// Time of the newest measurement in microseconds since 1970 UTC, 0 when the map has none of its own.
    [[nodiscard]] unsigned long long GetTimeStamp() const { return m_timeStamp; }

protected:
    MappingBase() = default;

    /// Empties the cells, one per channel of a range of that size. On failure nothing changes.
    virtual void ResizeCells(std::size_t count) = 0;

    /// Sets a range without telling anybody. @return false when the map has it already
    bool ReplaceRange(ChannelRange range);
    /// Notes written cells for the next text, while command recording is on.
    void CollectCells(std::size_t first, std::size_t count);
    /// Ends a change with the code that maps give.
    void NotifyMapChange(const IObserver* originator);
    /// Ends the application of a recording text.
    void EndApplied(bool changed, bool notify);

    void ClearCollectedChange(bool wasGiven) override;
    void CommandRecordingStarted() override;

    /// Cells [first, end) that were written.
    struct CellRun {
        std::size_t first;
        std::size_t end;
    };

    /// The written cells, in order and apart from each other.
    [[nodiscard]] const std::vector<CellRun>& WrittenCells() const { return m_written; }
    /// Whether the next text carries every cell: because it must, or because that is the shorter text.
    [[nodiscard]] bool SendsEveryCell() const;
    [[nodiscard]] bool SendsRange() const { return m_allPending; }

    ChannelRange m_range;
    unsigned long long m_timeStamp = 0;

private:
    std::vector<CellRun> m_written;
    bool m_allPending = false;  // the next text carries the range and every cell
};

/// Cells and their recording texts. Writing cells always notifies, once a call, also when the same is written again.
template <typename Entry, typename Handler>
class VALUES_EXPORT CellMap : public MappingBase {
public:
    CellMap();
    ~CellMap() override;

    [[nodiscard]] std::span<const Entry> GetCells() const { return m_cells; }  ///< one per channel
    /// Writes cells from a channel on. Cells past the end of the range throw VKException, nothing is changed.
    /// @param timeStamp microseconds since 1970 UTC, 0: none; it becomes the map's time stamp
    void SetCells(std::size_t first, std::span<const Entry> cells, unsigned long long timeStamp,
                  IObserver* originator = nullptr);
    void SetCell(std::size_t channel, const Entry& cell, unsigned long long timeStamp, IObserver* originator = nullptr);

    [[nodiscard]] QString GetText() const override;
    [[nodiscard]] std::string GetObjectStateStringForRecording() const override;
    bool ApplyRecordedState(const std::string& text, std::int32_t originatorKey, bool notify) override;

protected:
    void AppendChangeText(std::string& text) const override;
    void ResizeCells(std::size_t count) override;

private:
    void WriteCells(std::size_t first, std::span<const Entry> cells);
    void AppendHead(std::string& text) const;
    void AppendEveryCell(std::string& text) const;

    std::vector<Entry> m_cells;
};

/// The map that direction finders publish.
template <typename Entry, typename Handler>
class VALUES_EXPORT ValueMap final : public CellMap<Entry, Handler> {
public:
    [[nodiscard]] ValueType GetType() const override;
};

/// The map for spectra and for replay.
template <typename Entry, typename Handler>
class VALUES_EXPORT FastValueMap final : public CellMap<Entry, Handler> {
public:
    [[nodiscard]] ValueType GetType() const override;
};

extern template class CellMap<float, levelHandler>;
extern template class CellMap<Bearing, BearingHandler>;
extern template class ValueMap<Bearing, BearingHandler>;
extern template class FastValueMap<float, levelHandler>;
extern template class FastValueMap<Bearing, BearingHandler>;

}  // namespace values
