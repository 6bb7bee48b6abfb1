// Drawing traces: lines over frequency, and a channel's levels as a series over time.
#include "traceplot.h"

#include <algorithm>
#include <array>
#include <limits>

#include "axes.h"
#include "labels.h"
#include "levelpanel.h"
#include "printing/text.h"

namespace RecTool {

namespace {

/// A figure of every channel.
struct Line {
    QString name;
    std::function<double(const ChannelLevels&)> level;
};

std::vector<Line> linesOf(const TraceOptions& options)
{
    if (!options.at.empty()) {
        return {{QStringLiteral("Level"), [](const ChannelLevels& channel) { return double{channel.highest}; }}};
    }
    std::vector<Line> lines{
        {QStringLiteral("Max"), [](const ChannelLevels& channel) { return double{channel.highest}; }},
        {QStringLiteral("Mean"), [](const ChannelLevels& channel) { return channel.mean; }},
        {QStringLiteral("Min"), [](const ChannelLevels& channel) { return double{channel.lowest}; }}};
    const std::vector<double> percentiles = percentilesOf(options);
    for (std::size_t i = 0; i < percentiles.size(); ++i) {
        const QString name =
            percentiles[i] == 50 ? QStringLiteral("Median") : QStringLiteral("%1 %").arg(percentiles[i]);
        lines.push_back({name, [i](const ChannelLevels& channel) { return channel.percentiles[i]; }});
    }
    return lines;
}

/// Whether no line joins a channel to the one before: they are much farther apart than both from their neighbours.
bool isApart(const std::vector<ChannelLevels>& channels, std::size_t i)
{
    constexpr double Much = 2.5;
    const auto step = [&](std::size_t channel) {
        return channel > 0 && channel < channels.size() ? channels[channel].hz - channels[channel - 1].hz : 0.0;
    };
    return channels.size() > 2 && step(i) > Much * std::max(step(i - 1), step(i + 1));
}

class TracePanel final : public Panel {
public:
    TracePanel(Picture& picture, const TraceOptions& options, const Trace& trace) : Panel(picture)
    {
        const double lowHz = trace.channels.front().hz;
        const double highHz = trace.channels.back().hz;
        m_unit = unitFor(std::max(std::abs(lowHz), std::abs(highHz)), highHz - lowHz);
        m_rect = picture.addAxisRect(picture.body(), m_row, 0);
        m_rect->setMinimumMargins(QMargins(8, 12, 34, 8));
        const QString device = QString::fromStdString(oneLine(trace.device));
        levels().setLabel(QStringLiteral("%1 (%2)").arg(
            (device.isEmpty() ? device : device + QStringLiteral(": ")) + QString::fromStdString(trace.keyword),
            QString::fromStdString(options.unit)));
        frequencies().setLabel(QStringLiteral("Frequency (%1)").arg(QLatin1String(m_unit.name)));
        setRanges(trace, linesOf(options));
        addLines(trace, linesOf(options));
        picture.addLegend(picture.body(), m_row, 1, *m_rect)->setRowSpacing(0);
        picture.body().setColumnStretchFactor(1, AsLittleAsPossible);
    }

    void finish() override
    {
        setNumberTicks(m_picture, frequencies(), m_rect->width());
        setNumberTicks(m_picture, levels(), m_rect->height());
    }

private:
    [[nodiscard]] QCPAxis& frequencies() { return *m_rect->axis(QCPAxis::atBottom); }
    [[nodiscard]] QCPAxis& levels() { return *m_rect->axis(QCPAxis::atLeft); }

    void setRanges(const Trace& trace, const std::vector<Line>& lines)
    {
        constexpr double Room = 0.05;
        const double low = trace.channels.front().hz / m_unit.hz;
        const double high = trace.channels.back().hz / m_unit.hz;
        const double aside =
            high > low ? (high - low) / static_cast<double>(2 * trace.channels.size()) : std::max(1e-6, low * 1e-6);
        frequencies().setRange(low - aside, high + aside);
        double lowest = std::numeric_limits<double>::infinity();
        double highest = -lowest;
        for (const ChannelLevels& channel : trace.channels) {
            for (const Line& line : lines) {
                lowest = std::min(lowest, line.level(channel));
                highest = std::max(highest, line.level(channel));
            }
        }
        const double around = highest > lowest ? (highest - lowest) * Room : 1;
        levels().setRange(lowest - around, highest + around);
    }

    void addLines(const Trace& trace, const std::vector<Line>& lines)
    {
        constexpr std::array<QRgb, 7> LineColours{0xffd55e00, 0xff0072b2, 0xff7a7a7a, 0xff009e73,
                                                  0xffcc79a7, 0xff56b4e9, 0xffe69f00};
        constexpr double Thick = 1.2;
        constexpr std::size_t Few = 100;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            QCPGraph& graph = *new QCPGraph(&frequencies(), &levels());
            graph.setName(lines[i].name);
            graph.setPen(QPen(QColor(LineColours[i % LineColours.size()]), Thick));
            if (trace.channels.size() < Few) {
                graph.setScatterStyle(QCPScatterStyle(QCPScatterStyle::ssDisc, 4));
            }
            graph.removeFromLegend();
            for (std::size_t channel = 0; channel < trace.channels.size(); ++channel) {
                const double hz = trace.channels[channel].hz;
                if (channel > 0 && isApart(trace.channels, channel)) {
                    const double between = (hz + trace.channels[channel - 1].hz) / 2;
                    graph.addData(between / m_unit.hz, std::numeric_limits<double>::quiet_NaN());
                }
                graph.addData(hz / m_unit.hz, lines[i].level(trace.channels[channel]));
            }
        }
    }

    FrequencyUnit m_unit;
    QCPAxisRect* m_rect = nullptr;
};

/// A level lasts until the next one, but no longer than a few usual distances: then nobody measured.
void addSamples(Envelope& envelope, const std::vector<ChannelTrace::Sample>& samples)
{
    constexpr double Usual = 4;
    constexpr double Least = 1000;
    std::vector<double> distances;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        distances.push_back(samples[i].momentMs - samples[i - 1].momentMs);
    }
    const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
    std::nth_element(distances.begin(), middle, distances.end());
    const double longest = distances.empty() ? 0 : std::max(Least, *middle * Usual);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        envelope.add(samples[i].momentMs, double{samples[i].level});
        if (i + 1 < samples.size() && samples[i + 1].momentMs - samples[i].momentMs > longest) {
            envelope.add(samples[i].momentMs + longest, std::numeric_limits<double>::quiet_NaN());
        }
    }
}

}  // namespace

ExitCode drawTraces(const TraceOptions& options, Recordings& recordings, const std::vector<Trace>& traces)
{
    const auto title = options.at.empty() ? QStringLiteral("Levels by frequency") : QStringLiteral("Sweep");
    return drawPanels<TracePanel>(options, recordings, title, 2, traces, {}, options);
}

ExitCode drawChannelTraces(const TraceOptions& options, Recordings& recordings, const std::vector<ChannelTrace>& traces)
{
    std::vector<Series> shown;
    for (const ChannelTrace& trace : traces) {
        Series series;
        series.keyword = trace.keyword + " at " + frequency(trace.hz);
        series.unit = options.unit;
        series.begin(recordings.span(), options.width);
        addSamples(*series.envelope, trace.samples);
        series.envelope->finish();
        shown.push_back(std::move(series));
    }
    return drawPanels<LevelPanel>(options, recordings, QStringLiteral("Level of a channel over time"), 1, shown, {});
}

}  // namespace RecTool
