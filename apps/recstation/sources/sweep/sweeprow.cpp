// Parsing a row: time, band, bins and levels, also of a line cut off.
#include "sources/sweep/sweeprow.h"

#include <array>
#include <cmath>
#include <limits>
#include <optional>

#include <QString>

#include "input/fields.h"
#include "input/timetext.h"

namespace RecStation {

namespace {

constexpr double HighestHz = 1e12;
constexpr float HighestLevelDb = 1000;

std::string_view requireField(CommaFields& fields, const char* name)
{
    const auto field = fields.next();
    if (!field) {
        throw LineError(std::string("the line ends before the ") + name);
    }
    return trimmed(*field);
}

double requireNumber(CommaFields& fields, const char* name)
{
    return RecStation::requireNumber(requireField(fields, name), name);
}

std::string hertz(double frequency)
{
    constexpr int MostDigits = 15;
    return QString::number(frequency, 'g', MostDigits).toStdString();
}

struct Bins {
    double lowHz;
    double highHz;
    double stepHz;
    std::size_t count;
};

Bins readBins(CommaFields& fields)
{
    Bins bins{};
    bins.lowHz = requireNumber(fields, "lowest frequency");
    bins.highHz = requireNumber(fields, "highest frequency");
    bins.stepHz = requireNumber(fields, "bin width");
    static_cast<void>(requireNumber(fields, "number of samples"));
    if (bins.lowHz < 0 || bins.highHz > HighestHz || bins.highHz <= bins.lowHz) {
        throw LineError("no band reaches from " + hertz(bins.lowHz) + " to " + hertz(bins.highHz) + " Hz");
    }
    if (bins.stepHz <= 0) {
        throw LineError("the bin width " + hertz(bins.stepHz) + " Hz is not above 0");
    }
    const double count = std::round((bins.highHz - bins.lowHz) / bins.stepHz);
    if (count < 1 || count > static_cast<double>(SweepRowParser::MostBins)) {
        throw LineError("bins of " + hertz(bins.stepHz) + " Hz do not fit " + hertz(bins.lowHz) + " to " +
                        hertz(bins.highHz) + " Hz");
    }
    bins.count = static_cast<std::size_t>(count);
    return bins;
}

float readLevel(std::string_view field)
{
    constexpr float None = std::numeric_limits<float>::quiet_NaN();
    if (field.empty()) {
        return None;
    }
    const auto level = parseNumber<float>(field);
    if (!level) {
        throw LineError("the level " + shown(field) + " is no number");
    }
    if (std::isnan(*level) || *level == -std::numeric_limits<float>::infinity()) {
        return None;
    }
    if (std::abs(*level) > HighestLevelDb) {
        throw LineError("the level " + shown(field) + " is not within 1000 dB");
    }
    return *level;
}

std::size_t decimals(std::string_view number)
{
    const std::size_t point = number.find('.');
    return point == std::string_view::npos ? 0 : number.size() - point - 1;
}

struct Values {
    std::size_t count = 0;
    std::array<std::string_view, 3> surplus;  // the first texts after those of the bins
    std::string_view last;
    std::string_view lastButOne;
};

// The levels of the bins, and what else there is.
Values readValues(CommaFields& fields, std::size_t bins, std::vector<float>& levels)
{
    Values values;
    levels.clear();
    while (const auto field = fields.next()) {
        values.lastButOne = values.last;
        values.last = trimmed(*field);
        if (values.count < bins) {
            levels.push_back(readLevel(values.last));
        } else if (values.count - bins < values.surplus.size()) {
            values.surplus.at(values.count - bins) = values.last;
        }
        ++values.count;
    }
    return values;
}

// Programs that keep the middle of an FFT and write the last value twice keep an even number of values, but tell the
// band of the whole bins in the part asked for: one or two fewer.
bool isCropped(std::size_t bins, const Values& values)
{
    return values.count <= bins + values.surplus.size() && values.count % 2 != 0 && values.last == values.lastButOne;
}

// At the end of a line without a line end.
bool mayLackDigits(const Values& values, bool writtenTwice)
{
    if (writtenTwice) {
        return values.lastButOne.substr(0, values.last.size()) != values.last;
    }
    return values.last.empty() || decimals(values.last) < decimals(values.lastButOne);
}

}  // namespace

bool SweepRowParser::isNoRow(std::string_view line)
{
    const std::string_view text = trimmed(line);
    if (text.empty() || text.front() == '#') {
        return true;
    }
    const std::string_view first = text.substr(0, 4);
    return first == "date" || first == "Date" || first == "DATE";
}

void SweepRowParser::parse(std::string_view line, bool whole, SweepRow& row)
{
    CommaFields fields(line);
    const std::string_view date = requireField(fields, "date");
    const std::string_view time = requireField(fields, "time");
    row.time = parseTime(date, time);
    const Bins bins = readBins(fields);
    row.lowHz = bins.lowHz;
    row.highHz = bins.highHz;
    const Values values = readValues(fields, bins.count, row.levelsDb);
    std::size_t surplus = values.count > bins.count ? values.count - bins.count : 0;
    if (whole && surplus > 1 && isCropped(bins.count, values)) {
        --surplus;  // the one written twice
        for (std::size_t i = 0; i < surplus; ++i) {
            row.levelsDb.push_back(readLevel(values.surplus.at(i)));
        }
        const double width = (bins.highHz - bins.lowHz) / static_cast<double>(bins.count);
        row.lowHz -= static_cast<double>(surplus) / 2 * width;
        row.highHz += static_cast<double>(surplus) / 2 * width;
    } else if (values.count < bins.count || surplus > 1) {
        throw LineError(hertz(bins.lowHz) + " to " + hertz(bins.highHz) + " Hz in steps of " + hertz(bins.stepHz) +
                        " Hz are " + std::to_string(bins.count) + " values, found " + std::to_string(values.count));
    }
    if (!whole && mayLackDigits(values, surplus == 1)) {
        throw LineError("the input ends within the last value");
    }
}

unsigned long long SweepRowParser::parseTime(std::string_view date, std::string_view time)
{
    constexpr long long MicrosecondsPerDay = 86'400'000'000;
    static const LogDateFormat format("yyyy-MM-dd");
    if (date != m_dateText) {
        const auto day = format.parse(std::string(date));
        if (!day) {
            throw LineError("the date " + shown(date) + " is not as 2026-11-21");
        }
        m_day = *day;
        m_dateText = date;
    }
    if (time != m_timeText) {
        const auto timeOfDay = parseTimeOfDay(std::string(time));
        if (!timeOfDay) {
            throw LineError("the time " + shown(time) + " is not as 10:31:07 or 10:31:07.25");
        }
        m_timeOfDay = *timeOfDay;
        m_timeText = time;
    }
    const long long microseconds = m_day * MicrosecondsPerDay + m_timeOfDay - m_utcOffsetUs;
    if (!isRecordable(microseconds)) {
        throw LineError("the date " + shown(date) + " is not from 1970 to 2500");
    }
    return static_cast<unsigned long long>(microseconds);
}

}  // namespace RecStation
