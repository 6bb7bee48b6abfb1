#include "axes.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "../text.h"
#include "labels.h"

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
protected:
    double getTickStep(const QCPRange& range) override
    {
        m_step = QCPAxisTicker::getTickStep(range);
        return m_step;
    }
    QString getTickLabel(double tick, const QLocale& /*locale*/, QChar /*format*/, int /*precision*/) override
    {
        const bool isZero = std::abs(tick) < m_step / 2;
        return QString::number(isZero ? 0 : tick, 'f', digitsFor(m_step)).replace('-', QChar(0x2212));
    }

private:
    double m_step = 1;
};

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
    axis.setRange(static_cast<double>(source.span().fromMs), static_cast<double>(source.span().toMs));
    axis.setLabel(timeLabel(source, scale));
}

FrequencyUnit unitFor(double highestHz)
{
    for (const FrequencyUnit unit : {FrequencyUnit{1e9, "GHz"}, FrequencyUnit{1e6, "MHz"}, FrequencyUnit{1e3, "kHz"}}) {
        if (highestHz >= unit.hz) {
            return unit;
        }
    }
    return {};
}

void setNumberTicks(Picture& picture, QCPAxis& axis, int pixels)
{
    const QSharedPointer<NumberTicker> ticker(new NumberTicker);
    const bool lying = axis.orientation() == Qt::Horizontal;
    int tickPixels = 2 * picture.lineHeight();
    if (lying) {
        const double step = axis.range().size() / std::max(1, pixels / 60);
        const int digits = std::max(0, static_cast<int>(std::ceil(-std::log10(step))));
        tickPixels = picture.widthOf(QString::number(axis.range().upper, 'f', digits) + "000");
    }
    ticker->setTickCount(std::max(1, pixels / std::max(1, tickPixels)));
    axis.setTicker(ticker);
}

std::size_t markBookmarks(Picture& picture, QCPAxis& timeAxis, const PlotSource& source, bool withLabels)
{
    const std::vector<Recording2::Inspection::Bookmark> bookmarks = source.bookmarks();
    std::vector<double> pixels;
    for (const auto& bookmark : bookmarks) {
        pixels.push_back(timeAxis.coordToPixel(static_cast<double>(bookmark.timeMs)));
    }
    const bool lying = timeAxis.orientation() == Qt::Horizontal;
    const QRect rect = timeAxis.axisRect()->rect();
    const double low = lying ? rect.left() : rect.top();
    const double high = lying ? rect.right() : rect.bottom();
    const double size = picture.lineHeight() + 6;
    const std::vector<std::optional<double>> places = placeLabels(pixels, size, low, high);
    // The labels stand at the far end, with a leader to the line that they belong to.
    const double far = lying ? rect.top() + 4 : rect.right() - 4;
    const double leader = lying ? rect.top() + 22 : rect.right() - 22;
    const int room = (lying ? rect.height() : rect.width()) / 2;
    const auto point = [&](double along, double across) {
        return lying ? QPointF(along, across) : QPointF(across, along);
    };
    std::size_t without = 0;
    for (std::size_t i = 0; i < bookmarks.size(); ++i) {
        QPen pen{QColor(BookmarkColour), 1.4};
        auto* halo = new QCPItemLine(&picture.plot());
        auto* line = new QCPItemLine(&picture.plot());
        const double near = lying ? rect.bottom() : rect.left();
        const double end = withLabels && places[i] ? leader + (lying ? 8 : -8) : (lying ? rect.top() : rect.right());
        for (QCPItemLine* item : {halo, line}) {
            item->setPen(item == halo ? QPen(QColor(255, 255, 255, 170), 3.4) : pen);
            item->start->setPixelPosition(point(pixels[i], near));
            item->end->setPixelPosition(point(pixels[i], end));
        }
        if (!withLabels) {
            continue;
        }
        if (!places[i]) {
            ++without;
            continue;
        }
        auto* bend = new QCPItemLine(&picture.plot());
        bend->setPen(pen);
        bend->start->setPixelPosition(point(pixels[i], end));
        bend->end->setPixelPosition(point(*places[i], leader));
        auto* label = new QCPItemText(&picture.plot());
        label->setFont(picture.font());
        label->setText(picture.elided(QString::fromStdString(onOneLine(fromLatin1(bookmarks[i].text))), room));
        label->setColor(QColor(0, 60, 70));
        label->setBrush(QColor(255, 255, 255, 235));
        label->setPen(pen);
        label->setPadding(QMargins(4, 1, 4, 1));
        label->setPositionAlignment(lying ? Qt::AlignVCenter | Qt::AlignLeft : Qt::AlignRight | Qt::AlignVCenter);
        label->setRotation(lying ? 90 : 0);
        label->position->setPixelPosition(point(*places[i], far));
    }
    return without;
}

}  // namespace RecTool
