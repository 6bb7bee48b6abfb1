// Bearings over time and as seen from above, as panels of a picture.
#pragma once

#include "axes.h"
#include "bearings.h"

namespace RecTool {

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
