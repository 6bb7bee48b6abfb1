// Choosing units and steps that people count in, moving crowded labels apart, and leaving out those that find no place.
#include "labels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include <QDateTime>
#include <QString>

namespace RecTool {

namespace {

constexpr double Second = 1000;
constexpr double Minute = 60 * Second;
constexpr double Hour = 60 * Minute;
constexpr double Day = 24 * Hour;

/// The smallest step that people count in and that gives no more ticks than wanted.
double tickStep(double span, std::size_t most)
{
    constexpr std::array<double, 39> Steps{
        1,          2,          5,           10,          20,          50,          100,         200,
        500,        Second,     2 * Second,  5 * Second,  10 * Second, 15 * Second, 30 * Second, Minute,
        2 * Minute, 5 * Minute, 10 * Minute, 15 * Minute, 30 * Minute, Hour,        2 * Hour,    3 * Hour,
        6 * Hour,   12 * Hour,  Day,         2 * Day,     5 * Day,     10 * Day,    20 * Day,    50 * Day,
        100 * Day,  200 * Day,  500 * Day,   1000 * Day,  2000 * Day,  5000 * Day,  10000 * Day};
    const double least = span / static_cast<double>(most);
    for (const double step : Steps) {
        if (step >= least) {
            return step;
        }
    }
    return std::pow(10, std::ceil(std::log10(least / Day))) * Day;
}

// A damaged file may have any time, and as a number with a point the last one is after the last whole one.
quint64 wholeMs(double ms)
{
    constexpr quint64 Last = std::numeric_limits<quint64>::max();
    return ms < static_cast<double>(Last) ? static_cast<quint64>(ms) : Last;
}

QDateTime clock(double ms)
{
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(ms), Qt::UTC);
}

/// The multiples of a step in a span that is counted from an origin.
template <typename Label>
std::vector<TimeTick> ticks(const TimeSpan& span, double origin, double step, const Label& label)
{
    const double from = span.fromMs + origin;
    const double to = span.toMs + origin;
    std::vector<TimeTick> ticks;
    const double first = std::ceil(from / step);
    for (double i = 0; (first + i) * step <= to; ++i) {
        const double time = (first + i) * step;
        // So far out that a number with a point has no place for a step, several would be the same.
        if (ticks.empty() || time - origin > ticks.back().timeMs) {
            ticks.push_back({time - origin, label(time)});
        }
    }
    return ticks;
}

/// The largest unit that suits, Hz where none does.
template <typename Suits>
FrequencyUnit largestUnit(const Suits& suits)
{
    constexpr std::array Units{FrequencyUnit{1e9, "GHz"}, FrequencyUnit{1e6, "MHz"}, FrequencyUnit{1e3, "kHz"}};
    const auto unit = std::find_if(Units.begin(), Units.end(), [&](const FrequencyUnit& one) { return suits(one.hz); });
    return unit == Units.end() ? FrequencyUnit() : *unit;
}

/// Labels that touch; together they stand around the mean of what they want.
struct Block {
    std::size_t count;
    double sum;  // of the wanted middles, each less its offset in the block

    [[nodiscard]] double begin(double size, double low, double high) const
    {
        const double length = size * static_cast<double>(count);
        return std::clamp(sum / static_cast<double>(count) - size / 2, low, std::max(low, high - length));
    }
};

std::vector<double> spread(const std::vector<double>& wanted, const std::vector<std::size_t>& left, double size,
                           double low, double high)
{
    std::vector<Block> blocks;
    for (const std::size_t label : left) {
        blocks.push_back({1, wanted[label]});
        while (blocks.size() > 1) {
            const Block& last = blocks.back();
            Block& before = blocks[blocks.size() - 2];
            const double end = before.begin(size, low, high) + size * static_cast<double>(before.count);
            if (last.begin(size, low, high) >= end) {
                break;
            }
            const double shift = size * static_cast<double>(before.count) * static_cast<double>(last.count);
            before = {before.count + last.count, before.sum + last.sum - shift};
            blocks.pop_back();
        }
    }
    std::vector<double> middles;
    for (const Block& block : blocks) {
        for (std::size_t i = 0; i < block.count; ++i) {
            middles.push_back(block.begin(size, low, high) + size * (static_cast<double>(i) + 1.0 / 2));
        }
    }
    return middles;
}

/// The label whose neighbours are nearest to each other.
std::size_t mostCrowded(const std::vector<double>& wanted, const std::vector<std::size_t>& left)
{
    std::size_t best = 0;
    double smallest = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < left.size(); ++i) {
        const double before = wanted[left[i == 0 ? 0 : i - 1]];
        const double behind = wanted[left[std::min(i + 1, left.size() - 1)]];
        const bool atEnd = i == 0 || i + 1 == left.size();
        const double room = (behind - before) * (atEnd ? 2 : 1);
        if (room < smallest) {
            smallest = room;
            best = i;
        }
    }
    return best;
}

}  // namespace

bool isClockTime(std::uint64_t startMs, const TimeSpan& span)
{
    constexpr std::uint64_t EndOfYear9999 = 253'402'300'799'999;
    return startMs > 0 && startMs <= EndOfYear9999 && span.toMs <= static_cast<double>(EndOfYear9999 - startMs);
}

std::string onlyDay(const TimeSpan& span, std::uint64_t startMs)
{
    const QDate day = clock(static_cast<double>(startMs) + span.fromMs).date();
    return day == clock(static_cast<double>(startMs) + span.toMs).date() ? day.toString(Qt::ISODate).toStdString() : "";
}

std::vector<TimeTick> clockTicks(const TimeSpan& span, std::uint64_t startMs, std::size_t most)
{
    const double step = tickStep(span.width(), most);
    const QString format = step >= Day      ? QString()
                           : step >= Minute ? QStringLiteral("HH:mm")
                           : step >= Second ? QStringLiteral("HH:mm:ss")
                                            : QStringLiteral("HH:mm:ss.zzz");
    const bool oneDay = !onlyDay(span, startMs).empty();
    QDate day;
    return ticks(span, static_cast<double>(startMs), step, [&](double time) {
        const QDateTime moment = clock(time);
        QString text = format.isEmpty() ? QString() : moment.toString(format);
        if (!oneDay && moment.date() != day) {
            day = moment.date();
            text += (text.isEmpty() ? "" : "\n") + day.toString(Qt::ISODate);
        } else if (text.isEmpty()) {
            text = moment.date().toString(Qt::ISODate);
        }
        return text.toStdString();
    });
}

std::vector<TimeTick> elapsedTicks(const TimeSpan& span, std::size_t most)
{
    const double step = tickStep(span.width(), most);
    return ticks(span, 0, step, [&](double time) {
        if (std::abs(span.fromMs) < Minute && std::abs(span.toMs) < Minute) {
            const int digits = step >= Second ? 0 : step >= Second / 10 ? 1 : step >= Second / 100 ? 2 : 3;
            return QString::number(time / Second, 'f', digits).toStdString() + " s";
        }
        const quint64 ms = wholeMs(std::abs(time));
        const quint64 seconds = ms / static_cast<quint64>(Second);
        constexpr quint64 Sixty = 60;
        QString text = QStringLiteral("%1:%2:%3")
                           .arg(seconds / Sixty / Sixty)
                           .arg(seconds / Sixty % Sixty, 2, 10, QLatin1Char('0'))
                           .arg(seconds % Sixty, 2, 10, QLatin1Char('0'));
        if (time < 0) {
            text.prepend(QLatin1Char('-'));
        }
        if (step < Second) {
            text += QStringLiteral(".%1").arg(ms % static_cast<quint64>(Second), 3, 10, QLatin1Char('0'));
        }
        return text.toStdString();
    });
}

FrequencyUnit unitFor(double highestHz, double widthHz)
{
    constexpr double Narrowest = 0.005;  // narrower spans would need too many digits
    constexpr double Lowest = 0.5;       // 80 to 1000 MHz are not read as 0.08 to 1 GHz, 0.1 to 6 GHz are
    constexpr double High = 3;
    return largestUnit([&](double hz) {
        const bool isUsual = highestHz - widthHz >= hz * Lowest || highestHz >= hz * High;
        return highestHz >= hz && widthHz >= hz * Narrowest && isUsual;
    });
}

FrequencyUnit usualUnit(double highestHz)
{
    constexpr double Giga = 1e9;
    return largestUnit([&](double hz) { return hz < Giga && highestHz >= hz; });
}

std::vector<std::string> frequenciesAlike(const std::vector<double>& hz)
{
    constexpr double Exact = 5e-4;  // recorders write frequencies to 0.001 Hz
    constexpr int Most = 9;
    const FrequencyUnit unit = largestUnit([&](double unitHz) {
        return std::all_of(hz.begin(), hz.end(), [&](double frequency) { return std::abs(frequency) >= unitHz; });
    });
    int decimals = 0;
    const auto isExact = [&](double frequency) {
        const double digits = std::pow(10, decimals) / unit.hz;
        return std::abs(std::round(frequency * digits) / digits - frequency) <= Exact;
    };
    while (decimals < Most && !std::all_of(hz.begin(), hz.end(), isExact)) {
        ++decimals;
    }
    std::vector<std::string> texts;
    texts.reserve(hz.size());
    for (const double frequency : hz) {
        texts.push_back(QString::number(frequency / unit.hz, 'f', decimals).toStdString() + ' ' + unit.name);
    }
    return texts;
}

std::vector<std::optional<double>> placeLabels(const std::vector<double>& wanted, double size, double low, double high)
{
    const double room = std::max(0.0, std::floor((high - low) / size));
    // Of very many, first every so manieth: looking for the most crowded one again and again would take too long.
    constexpr std::size_t Many = 1000;
    const double step = std::max(1.0, static_cast<double>(wanted.size()) / static_cast<double>(Many));
    std::vector<std::size_t> left(std::min(wanted.size(), Many));
    for (std::size_t i = 0; i < left.size(); ++i) {
        left[i] = static_cast<std::size_t>(static_cast<double>(i) * step);
    }
    std::vector<double> middles;
    const auto findsPlaces = [&] {
        constexpr double Farthest = 4;  // labels; farther away nobody sees what a label belongs to
        if (static_cast<double>(left.size()) > room) {
            return false;
        }
        middles = spread(wanted, left, size, low, high);
        return std::equal(left.begin(), left.end(), middles.begin(), [&](std::size_t label, double middle) {
            return std::abs(wanted[label] - middle) <= Farthest * size;
        });
    };
    while (!findsPlaces()) {
        left.erase(left.begin() + static_cast<std::ptrdiff_t>(mostCrowded(wanted, left)));
    }
    std::vector<std::optional<double>> places(wanted.size());
    for (std::size_t i = 0; i < left.size(); ++i) {
        places[left[i]] = middles[i];
    }
    return places;
}

}  // namespace RecTool
