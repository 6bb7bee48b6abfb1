// The bearings of recordings as a picture shows them: relative to the antenna or to true north, a colour a channel.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include <QColor>
#include <QString>

#include "bearingpoints.h"
#include "source.h"

namespace RecTool {

/// A bearing as it is drawn.
struct ShownBearing {
    double frequencyHz;
    double momentMs;
    double azimuthDeg;
};

/// Walks over the bearings of all devices.
class Bearings {
public:
    using Show = std::function<void(const ShownBearing&)>;

    Bearings(PlotSource& source, bool relative);
    ~Bearings();
    Bearings(const Bearings&) = delete;
    Bearings& operator=(const Bearings&) = delete;

    [[nodiscard]] bool areRecorded() const;

    /// Begins a pass: visit takes every record, and shows the bearings of the span.
    void begin(Show show);
    void visit(const PlottedRecord& record);
    /// A pass of its own.
    void replay(const Show& show);

    /// Whether a pass met a heading.
    [[nodiscard]] bool headingIsRecorded() const { return m_headingIsRecorded; }
    /// From now on azimuths are those from true north.
    void makeTrue() { m_isTrue = true; }
    [[nodiscard]] bool areTrue() const { return m_isTrue; }
    [[nodiscard]] std::uint64_t passedOver() const;
    /// Bearings in front of the first heading, which have no true azimuth.
    [[nodiscard]] std::uint64_t withoutHeading() const { return m_withoutHeading; }

private:
    struct Finder;  // what a device has in force

    PlotSource& m_source;
    bool m_relative;
    std::vector<Finder> m_finders;  // by track
    Show m_show;
    bool m_isTrue = false;
    bool m_headingIsRecorded = false;
    std::uint64_t m_withoutHeading = 0;
};

/// Points of one colour.
struct PlottedGroup {
    QString name;
    QColor colour;
    BearingPoints points;
    double lastAzimuthDeg = 0;
};

/// The channels with the most bearings, each in its colour; in front of them all others in grey.
class BearingGroups {
public:
    BearingGroups(const BearingCount& count, const TimeSpan& span, int width, int height);

    void add(const ShownBearing& bearing);
    [[nodiscard]] double lastAzimuthDeg(double frequencyHz) const
    {
        return m_groups[groupOf(frequencyHz)].lastAzimuthDeg;
    }
    [[nodiscard]] std::size_t others() const { return m_count.channels() - m_frequencies.size(); }
    [[nodiscard]] const std::vector<double>& frequencies() const { return m_frequencies; }
    /// Those that are drawn.
    [[nodiscard]] std::vector<const PlottedGroup*> shown() const;

private:
    [[nodiscard]] std::size_t groupOf(double frequencyHz) const;
    [[nodiscard]] std::uint64_t bearingsOf(const std::vector<double>& frequencies) const;

    const BearingCount& m_count;
    std::vector<double> m_frequencies;
    std::vector<PlottedGroup> m_groups;
};

}  // namespace RecTool
