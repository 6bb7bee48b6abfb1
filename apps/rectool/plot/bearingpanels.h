// Bearings over time and as seen from above, as panels of a picture.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include <QColor>
#include <QString>

#include "axes.h"
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

/// Azimuth up, time across.
class AzimuthPanel final : public Panel {
public:
    /// @param pixels how wide the rect will be, about @param margins around the rect, at least
    /// @param withLabels the bookmarks' texts stand here
    AzimuthPanel(Picture& picture, const Bearings& bearings, int pixels, const QMargins& margins, bool withLabels);

    void mark() override { markBookmarks(m_picture, *m_rect.axis(QCPAxis::atBottom), m_withLabels); }
    [[nodiscard]] Json json() const override;
    [[nodiscard]] const QCPAxisRect& rect() const { return m_rect; }

private:
    const Bearings& m_bearings;
    QCPAxisRect& m_rect;
    bool m_withLabels;
};

/// A bearing points to where it was taken from; the later, the farther from the middle.
class FromAbovePanel final : public Panel {
public:
    /// @param square its width and height, in pixels
    FromAbovePanel(Picture& picture, const Bearings& bearings, QCPLayoutGrid& grid, int square);

    void finish() override;
    /// Where the circle is among the pixels of the picture.
    [[nodiscard]] Json json() const override;

private:
    /// The name of a direction, just outside of the circle.
    struct Name;

    [[nodiscard]] Name nameOf(int degrees) const;
    [[nodiscard]] double largestRadius() const;
    void addRing(double radius);
    void addDirection(int degrees, double radius);
    void addGroup(const PlottedGroup& group);

    const Bearings& m_bearings;
    QCPAxisRect& m_rect;
    QCPAxis& m_x;
    QCPAxis& m_y;
};

}  // namespace RecTool
