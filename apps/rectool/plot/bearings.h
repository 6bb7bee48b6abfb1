// The bearings of recordings as a picture shows them: relative to the antenna or to true north, a colour a channel.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include <QColor>
#include <QString>

#include "bearingpoints.h"
#include "replay/linesofbearing.h"

namespace RecTool {

/// Bearings of one colour: those of a channel, or of all channels that have none of their own.
struct PlottedGroup {
    std::optional<double> frequencyHz;
    std::uint64_t bearings;
    QString name;
    QColor colour;
    BearingPoints points;
    double lastAzimuthDeg = 0;
};

/// Takes the bearings of all devices in two passes: the first one counts them, the second one puts them into groups.
class Bearings {
public:
    /// @param relative to the antenna, also where the heading was recorded
    Bearings(Recordings& source, bool relative);

    /// Takes every record of a pass.
    void visit(const PlacedRecord& plotted);
    /// Makes the picture begin with the first bearing. From now on azimuths are true where a heading was met.
    void endCounting();
    /// The channels with the most bearings get a colour each; before them, all others are grey.
    void beginGroups(int width, int height);

    [[nodiscard]] std::uint64_t count() const { return m_count; }
    [[nodiscard]] const std::vector<PlottedGroup>& groups() const { return m_groups; }
    [[nodiscard]] std::size_t otherChannels() const { return m_others; }
    [[nodiscard]] bool areTrue() const { return m_areTrue; }
    /// Bearings without a heading then, which have no true azimuth.
    [[nodiscard]] std::uint64_t withoutHeading() const { return m_withoutHeading; }
    /// Tells what was left out. @return the result, Damaged where it was Fine and records were no bearings
    [[nodiscard]] ExitCode tellLeftOut(ExitCode result) const;

private:
    void beginPass();
    void take(const TakenBearing& bearing, double momentMs);

    Recordings& m_source;
    bool m_relative;
    std::optional<AllBearings> m_all;  // of this pass
    BearingCounts m_counts;
    std::uint64_t m_count = 0;
    double m_firstMs = std::numeric_limits<double>::infinity();
    std::size_t m_others = 0;
    std::vector<PlottedGroup> m_groups;
    bool m_areTrue = false;
    bool m_headingIsRecorded = false;
    std::uint64_t m_withoutHeading = 0;
};

}  // namespace RecTool
