// Ticks and labels of time, frequency and number axes, and lines for the bookmarks.
#include "axes.h"

#include <algorithm>
#include <array>
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

constexpr QRgb BookmarkColour = 0xff00838f;

}  // namespace

bool hasClock(const PlotSource& source)
{
    return isClockTime(source.startMs(), source.span());
}

QString timeLabel(const PlotSource& source, TimeScale scale)
{
    if (scale == TimeScale::Elapsed || !hasClock(source)) {
        return QStringLiteral("Since the start of the recording");
    }
    const std::string day = onlyDay(source.span(), source.startMs());
    return day.empty() ? QStringLiteral("Time (UTC)")
                       : QStringLiteral("Time (UTC, %1)").arg(QString::fromStdString(day));
}

void setTimeAxis(Picture& picture, QCPAxis& axis, const PlotSource& source, TimeScale scale, int pixels)
{
    const bool clock = scale == TimeScale::Clock && hasClock(source);
    const bool lying = axis.orientation() == Qt::Horizontal;
    const int tickPixels = lying ? picture.widthOf(QStringLiteral("00:00:00.00000")) : 3 * picture.lineHeight();
    const auto most = static_cast<std::size_t>(std::max(2, pixels / tickPixels));
    const std::vector<TimeTick> ticks =
        clock ? clockTicks(source.span(), source.startMs(), most) : elapsedTicks(source.span(), most);
    const QSharedPointer<QCPAxisTickerText> ticker(new QCPAxisTickerText);
    for (const TimeTick& tick : ticks) {
        ticker->addTick(tick.timeMs, QString::fromStdString(tick.label));
    }
    axis.setTicker(ticker);
    axis.setRange(source.span().fromMs, source.span().toMs);
    axis.setLabel(timeLabel(source, scale));
}

FrequencyUnit usualUnit(double highestHz)
{
    for (const FrequencyUnit unit : {FrequencyUnit{1e6, "MHz"}, FrequencyUnit{1e3, "kHz"}}) {
        if (highestHz >= unit.hz) {
            return unit;
        }
    }
    return {};
}

FrequencyUnit unitFor(double highestHz, double widthHz)
{
    constexpr double Narrowest = 0.005;  // narrower spans would need too many digits
    constexpr double Lowest = 0.5;       // 80 to 1000 MHz are not read as 0.08 to 1 GHz, 0.1 to 6 GHz are
    constexpr double High = 3;
    for (const FrequencyUnit unit : {FrequencyUnit{1e9, "GHz"}, FrequencyUnit{1e6, "MHz"}, FrequencyUnit{1e3, "kHz"}}) {
        const bool isUsual = highestHz - widthHz >= unit.hz * Lowest || highestHz >= unit.hz * High;
        if (highestHz >= unit.hz && widthHz >= unit.hz * Narrowest && isUsual) {
            return unit;
        }
    }
    return {};
}

void setNumberTicks(Picture& picture, QCPAxis& axis, int pixels, bool isPiece)
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

void markBookmarks(Picture& picture, QCPAxis& timeAxis, const PlotSource& source, bool withLabels)
{
    constexpr int LongestLabel = 190;
    constexpr int Bend = 16;
    const std::vector<Recording2::Inspection::Bookmark> bookmarks = source.bookmarks();
    const bool lying = timeAxis.orientation() == Qt::Horizontal;
    const QRect rect = timeAxis.axisRect()->rect();
    const double low = lying ? rect.left() : rect.top();
    const double high = lying ? rect.right() : rect.bottom();
    const double near = lying ? rect.bottom() : rect.left();
    const double far = lying ? rect.top() : rect.right();
    const double labelEdge = lying ? far + Bend : far - Bend;
    const auto point = [&](double along, double across) {
        return lying ? QPointF(along, across) : QPointF(across, along);
    };
    const auto addLine = [&](const QPointF& from, const QPointF& to, const QPen& pen) {
        auto* line = picture.addItem<QCPItemLine>();
        line->setPen(pen);
        line->start->setPixelPosition(from);
        line->end->setPixelPosition(to);
    };
    const QPen pen(QColor(BookmarkColour), 1.4);
    const QPen halo(QColor(255, 255, 255, 170), 3.4);
    std::vector<double> pixels;
    pixels.reserve(bookmarks.size());
    for (const auto& bookmark : bookmarks) {
        pixels.push_back(timeAxis.coordToPixel(static_cast<double>(bookmark.timeMs)));
    }
    const bool isCrowded = areCrowded(pixels);
    const double inwards = lying ? -Bend : Bend;
    double last = std::numeric_limits<double>::quiet_NaN();
    for (const double pixel : pixels) {
        constexpr double NextToNothing = 0.1;
        if (std::abs(pixel - last) < NextToNothing) {
            continue;  // one on the other: there may be very many
        }
        last = pixel;
        if (isCrowded) {
            addLine(point(pixel, near), point(pixel, near + inwards), pen);
            addLine(point(pixel, far), point(pixel, far - inwards / 2), pen);
        } else {
            addLine(point(pixel, near), point(pixel, far), halo);
            addLine(point(pixel, near), point(pixel, far), pen);
        }
    }
    if (!withLabels) {
        return;
    }
    constexpr std::size_t Few = 9;  // more may not all have room, which is then said below the labels
    const double size = picture.lineHeight() + 6;
    const int room = std::min(LongestLabel, lying ? rect.height() / 2 : picture.width() / 5);
    const std::vector<std::optional<double>> places =
        placeLabels(pixels, size, low, high - (lying || pixels.size() < Few ? 0 : size));
    std::size_t without = 0;
    for (std::size_t i = 0; i < bookmarks.size(); ++i) {
        if (!places[i]) {
            ++without;
            continue;
        }
        addLine(point(pixels[i], far), point(*places[i], labelEdge), halo);
        addLine(point(pixels[i], far), point(*places[i], labelEdge), pen);
        auto* label = picture.addItem<QCPItemText>();
        label->setFont(picture.font());
        label->setText(picture.elided(QString::fromStdString(oneLine(fromLatin1(bookmarks[i].text))), room));
        label->setColor(QColor(0, 60, 70));
        label->setBrush(QColor(255, 255, 255, 240));
        label->setPen(pen);
        label->setPadding(QMargins(4, 1, 4, 1));
        label->setPositionAlignment(lying ? Qt::AlignVCenter | Qt::AlignLeft : Qt::AlignRight | Qt::AlignVCenter);
        label->setRotation(lying ? 90 : 0);
        label->position->setPixelPosition(point(*places[i], labelEdge));
    }
    if (without > 0) {
        auto* note = picture.addItem<QCPItemText>();
        note->setFont(picture.font());
        note->setText(QStringLiteral("%1 bookmarks without a label").arg(without));
        note->setBrush(QColor(255, 255, 255, 240));
        note->setPadding(QMargins(4, 1, 4, 1));
        note->setPositionAlignment((lying ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignBottom);
        note->position->setPixelPosition(QPointF(lying ? rect.left() + Bend : rect.right() - Bend, rect.bottom() - 4));
    }
}

}  // namespace RecTool
