// Finding columns by their names, which may have units behind them.
#include "sources/bearings/rowparser.h"

#include <algorithm>
#include <stdexcept>

#include <QRegularExpression>
#include <QStringList>

#include <terminaltext/quantity.h>

#include "input/fields.h"

namespace RecStation {

namespace {

struct NameAndUnit {
    QString name;
    QString unit;
};

// "Frequency (MHz)", "freq_khz", "azimuth [deg]".
NameAndUnit partOf(const std::string& column)
{
    static const QRegularExpression pattern(
        QStringLiteral(R"(\A(.+?)[\s_]*[\s_\[(/]\s*(deg|degrees|°|[kmg]?hz|m|utc|m?s|us|ns|db[a-z]*|%)\s*[\])]?\z)"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
    constexpr std::size_t LongestName = 100;
    const auto match = pattern.match(QString::fromStdString(column.substr(0, LongestName)));
    return match.hasMatch() && column.size() <= LongestName ? NameAndUnit{match.captured(1), match.captured(2)}
                                                            : NameAndUnit{QString::fromStdString(column), QString()};
}

bool isSameName(const QString& one, const QString& other)
{
    return one.compare(other, Qt::CaseInsensitive) == 0;
}

std::string namesOf(const CsvRecord& header)
{
    constexpr std::size_t Most = 50;
    constexpr int LongestName = 40;
    std::string names;
    for (std::size_t i = 0; i < std::min(Most, header.fields.size()); ++i) {
        const QString name = QString::fromStdString(header.fields[i]);
        names += (i == 0 ? "\"" : ", \"") + name.left(LongestName).toStdString() +
                 (name.size() > LongestName ? "...\"" : "\"");
    }
    return header.fields.size() > Most ? names + " and others" : names;
}

}  // namespace

void failLog(const std::string& sentence)
{
    throw std::runtime_error("bearings: " + sentence);
}

std::optional<LogColumn> findColumn(const CsvRecord& header, const std::string& name)
{
    const QString wanted = QString::fromStdString(name);
    std::vector<LogColumn> whole;
    std::vector<LogColumn> withUnit;
    for (std::size_t i = 0; i < header.fields.size(); ++i) {
        const std::string& field = header.fields[i];
        const QString text = QString::fromStdString(field);
        if (isSameName(text, wanted)) {
            whole.push_back({i, field});
        } else if (text.startsWith(wanted, Qt::CaseInsensitive) && isSameName(partOf(field).name, wanted)) {
            withUnit.push_back({i, field});
        }
    }
    const std::vector<LogColumn>& found = whole.empty() ? withUnit : whole;
    if (found.size() > 1) {
        failLog("the log has " + std::to_string(found.size()) + " columns for \"" + name + "\" (\"" + found[0].name +
                "\" and \"" + found[1].name + "\"): name the one that is meant in full, or rename the others");
    }
    return found.empty() ? std::nullopt : std::optional(found.front());
}

LogColumn requireColumn(const CsvRecord& header, const std::string& name, const char* option)
{
    auto column = findColumn(header, name);
    if (!column) {
        const bool hasNumber = std::any_of(header.fields.begin(), header.fields.end(),
                                           [](const std::string& text) { return parseNumber<double>(text); });
        failLog("the log has no column \"" + name + "\" (" + option + "), only " + namesOf(header) +
                (hasNumber ? "; --columns names those of a log without such a line" : ""));
    }
    return *column;
}

std::optional<LogColumn> optionalColumn(const CsvRecord& header, const std::optional<std::string>& name,
                                        const char* standardName, const char* option)
{
    if (!name) {
        return findColumn(header, standardName);
    }
    return name->empty() ? std::nullopt : std::optional(requireColumn(header, *name, option));
}

// The columns of degrees, minutes and seconds, as far as they are named; none without a name and a standard column.
std::vector<LogColumn> angleColumns(const CsvRecord& header, const std::optional<std::string>& names,
                                    const char* standardName, const char* option)
{
    constexpr int MostParts = 3;
    std::vector<LogColumn> columns;
    if (!names) {
        if (const auto column = findColumn(header, standardName)) {
            columns.push_back(*column);
        }
        return columns;
    }
    const QStringList parts = QString::fromStdString(*names).split(QLatin1Char(','));
    if (parts.size() > MostParts) {
        failLog(std::string(option) + " names more than degrees, minutes and seconds");
    }
    for (const QString& part : parts) {
        columns.push_back(requireColumn(header, part.trimmed().toStdString(), option));
    }
    return columns;
}

double hzPerUnitOf(const std::string& column)
{
    constexpr double OfMhz = 1e6;
    const std::string unit = partOf(column).unit.toLower().toStdString();
    return unit.ends_with("hz") ? TerminalText::parseQuantity('1' + unit, {"Hz"}).value_or(OfMhz) : OfMhz;
}

}  // namespace RecStation
