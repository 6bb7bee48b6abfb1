// Ticks and labels of time, frequency and number axes, and lines for the bookmarks.
#include "axes.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "labels.h"
#include "printing/text.h"

namespace RecTool {

namespace {

/// As few digits as tell ticks of a distance apart.
int digitsFor(double step)
{
    constexpr double Rounding = 1e-6;
    int digits = 0;
    for (double scaled = step; digits < 9 && std::abs(scaled - std::round(scaled)) > Rounding * scaled; ++digits) {
        scaled *= 10;
    }
    return digits;
}

class NumberTicker final : public QCPAxisTicker {
public:
    /// @param edge how near to the ends of the axis a tick has no label, in its coordinates
    explicit NumberTicker(double edge) : m_edge(edge) {}

protected:
    double getTickStep(const QCPRange& range) override
    {
        m_step = QCPAxisTicker::getTickStep(range);
        m_range = range;
        return m_step;
    }
    QString getTickLabel(double tick, const QLocale& /*locale*/, QChar /*format*/, int /*precision*/) override
    {
        if (tick < m_range.lower + m_edge || tick > m_range.upper - m_edge) {
            return {};
        }
        const bool isZero = std::abs(tick) < m_step / 2;
        return QString::number(isZero ? 0 : tick, 'f', digitsFor(m_step)).replace('-', QChar(0x2212));
    }

private:
    double m_edge;
    double m_step = 1;
    QCPRange m_range;
};

/// Where there is no room for more: the middle of the axis.
void setMiddleTick(QCPAxis& axis)
{
    constexpr double Exact = 0.01;
    const double middle = axis.range().center();
    const int digits = std::clamp(static_cast<int>(std::ceil(-std::log10(axis.range().size() * Exact))), 0, 9);
    const QSharedPointer<QCPAxisTickerText> ticker(new QCPAxisTickerText);
    ticker->addTick(middle, QString::number(middle, 'f', digits));
    axis.setTicker(ticker);
}

/// Whether lines across the picture would cover it.
bool areCrowded(const std::vector<double>& pixels)
{
    constexpr double Near = 12;
    constexpr std::size_t Many = 10;
    std::size_t near = 0;
    for (std::size_t i = 1; i < pixels.size(); ++i) {
        near += std::abs(pixels[i] - pixels[i - 1]) < Near ? 1U : 0U;
    }
    return near > Many;
}

bool hasClock(const Picture& picture)
{
    return isClockTime(picture.source().startMs(), picture.source().span());
}

/// Lines across a rect at bookmarks, and labels at their far ends.
class BookmarkLines {
public:
    BookmarkLines(Picture& picture, const QCPAxis& timeAxis)
        : m_picture(picture),
          m_isLying(timeAxis.orientation() == Qt::Horizontal),
          m_rect(timeAxis.axisRect()->rect()),
          m_near(m_isLying ? m_rect.bottom() : m_rect.left()),
          m_far(m_isLying ? m_rect.top() : m_rect.right()),
          m_bookmarks(picture.source().bookmarks())
    {
        for (const auto& bookmark : m_bookmarks) {
            m_pixels.push_back(timeAxis.coordToPixel(static_cast<double>(bookmark.timeMs)));
        }
    }

    void addLines()
    {
        constexpr double NextToNothing = 0.1;
        const bool isCrowded = areCrowded(m_pixels);
        const double inwards = m_isLying ? -Bend : Bend;
        double last = std::numeric_limits<double>::quiet_NaN();
        for (const double pixel : m_pixels) {
            if (std::abs(pixel - last) < NextToNothing) {
                continue;  // one on the other: there may be very many
            }
            last = pixel;
            if (isCrowded) {
                m_picture.addLine(point(pixel, m_near), point(pixel, m_near + inwards), m_pen);
                m_picture.addLine(point(pixel, m_far), point(pixel, m_far - inwards / 2), m_pen);
            } else {
                addWithHalo(point(pixel, m_near), point(pixel, m_far));
            }
        }
    }

    void addLabels()
    {
        constexpr std::size_t Few = 9;  // more may not all have room, which is then said below the labels
        const double size = m_picture.lineHeight() + 6;
        const double low = m_isLying ? m_rect.left() : m_rect.top();
        const double high = m_isLying ? m_rect.right() : m_rect.bottom();
        const double note = m_isLying || m_pixels.size() < Few ? 0 : size;
        const std::vector<std::optional<double>> places = placeLabels(m_pixels, size, low, high - note);
        for (std::size_t i = 0; i < places.size(); ++i) {
            if (places[i]) {
                const QPointF place = point(*places[i], m_isLying ? m_far + Bend : m_far - Bend);
                addWithHalo(point(m_pixels[i], m_far), place);
                addLabel(place, QString::fromStdString(oneLine(fromLatin1(m_bookmarks[i].text))));
            }
        }
        if (const auto without = std::count(places.begin(), places.end(), std::nullopt); without > 0) {
            QCPItemText& text = addText(QStringLiteral("%1 bookmarks without a label").arg(without), Qt::AlignBottom);
            const int left = m_isLying ? m_rect.left() + Bend : m_rect.right() - Bend;
            text.position->setPixelPosition(QPointF(left, m_rect.bottom() - 4));
        }
    }

private:
    static constexpr int Bend = 16;

    [[nodiscard]] QPointF point(double along, double across) const
    {
        return m_isLying ? QPointF(along, across) : QPointF(across, along);
    }
    void addWithHalo(const QPointF& from, const QPointF& to)
    {
        m_picture.addLine(from, to, QPen(QColor(255, 255, 255, 170), 3.4));
        m_picture.addLine(from, to, m_pen);
    }
    QCPItemText& addText(const QString& text, Qt::Alignment vertical)
    {
        auto* item = m_picture.addItem<QCPItemText>();
        item->setFont(m_picture.font());
        item->setText(text);
        item->setBrush(QColor(255, 255, 255, 240));
        item->setPadding(QMargins(4, 1, 4, 1));
        item->setPositionAlignment((m_isLying ? Qt::AlignLeft : Qt::AlignRight) | vertical);
        return *item;
    }
    void addLabel(const QPointF& place, const QString& text)
    {
        constexpr int Longest = 190;
        const int room = std::min(Longest, m_isLying ? m_rect.height() / 2 : m_picture.width() / 5);
        QCPItemText& label = addText(m_picture.elided(text, room), Qt::AlignVCenter);
        label.setColor(QColor(0, 60, 70));
        label.setPen(m_pen);
        label.setRotation(m_isLying ? 90 : 0);
        label.position->setPixelPosition(place);
    }

    Picture& m_picture;
    bool m_isLying;
    QRect m_rect;
    double m_near;  // the end of a line at the axis
    double m_far;
    std::vector<Recording2::Inspection::Bookmark> m_bookmarks;
    std::vector<double> m_pixels;  // of the bookmarks
    QPen m_pen{QColor(0xff00838f), 1.4};
};

}  // namespace

QString setTimeAxis(const Picture& picture, QCPAxis& axis, TimeScale scale, int pixels)
{
    const TimeSpan& span = picture.source().span();
    const std::uint64_t startMs = picture.source().startMs();
    const bool isClock = scale == TimeScale::Clock && hasClock(picture);
    const bool isLying = axis.orientation() == Qt::Horizontal;
    const int tickPixels = isLying ? picture.widthOf(QStringLiteral("00:00:00.00000")) : 3 * picture.lineHeight();
    const auto most = static_cast<std::size_t>(std::max(2, pixels / tickPixels));
    const QSharedPointer<QCPAxisTickerText> ticker(new QCPAxisTickerText);
    for (const TimeTick& tick : isClock ? clockTicks(span, startMs, most) : elapsedTicks(span, most)) {
        ticker->addTick(tick.timeMs, QString::fromStdString(tick.label));
    }
    axis.setTicker(ticker);
    axis.setRange(span.fromMs, span.toMs);
    const QString day = isClock ? QString::fromStdString(onlyDay(span, startMs)) : QString();
    axis.setLabel(!isClock        ? QStringLiteral("Since the start of the recording")
                  : day.isEmpty() ? QStringLiteral("Time (UTC)")
                                  : QStringLiteral("Time (UTC, %1)").arg(day));
    return axis.label();
}

void setTimeAcross(Picture& picture, QCPAxisRect& rect, int row, int pixels)
{
    QCPAxis& time = *rect.axis(QCPAxis::atBottom);
    QCPAxis& elapsed = *rect.axis(QCPAxis::atTop);
    for (QCPAxis* axis : rect.axes()) {
        axis->setVisible(true);
        axis->setSubTicks(false);
    }
    rect.axis(QCPAxis::atRight)->setTicks(false);
    setTimeAxis(picture, time, TimeScale::Clock, pixels);
    setTimeAxis(picture, elapsed, TimeScale::Elapsed, pixels);
    elapsed.setTicks(hasClock(picture));
    for (QCPAxis* axis : {&time, &elapsed}) {
        const bool isLabelled = axis == &time ? row + 1 == picture.rows() : row == 0 && hasClock(picture);
        axis->setTickLabels(isLabelled);
        axis->setLabel(isLabelled ? axis->label() : QString());
    }
    rect.setMarginGroup(QCP::msLeft | QCP::msRight, &picture.sides());
}

void setNumberTicks(const Picture& picture, QCPAxis& axis, int pixels, bool isPiece)
{
    const bool lying = axis.orientation() == Qt::Horizontal;
    int tickPixels = 3 * picture.lineHeight();
    double edge = 0;
    if (lying) {
        const double step = axis.range().size() / std::max(1, pixels / 60);
        const int digits = std::max(0, static_cast<int>(std::ceil(-std::log10(step))));
        tickPixels = picture.widthOf(QString::number(axis.range().upper, 'f', digits) + "000");
        edge = isPiece ? axis.range().size() * tickPixels / 2.4 / std::max(1, pixels) : 0;
    }
    if (isPiece && pixels < 2 * tickPixels) {
        setMiddleTick(axis);
        return;
    }
    const QSharedPointer<NumberTicker> ticker(new NumberTicker(edge));
    const int fewest = lying ? 1 : 3;
    ticker->setTickCount(std::max(fewest, pixels / std::max(1, tickPixels)));
    axis.setTicker(ticker);
}

void markBookmarks(Picture& picture, const QCPAxis& timeAxis, bool withLabels)
{
    BookmarkLines lines(picture, timeAxis);
    lines.addLines();
    if (withLabels) {
        lines.addLabels();
    }
}

}  // namespace RecTool
