// Writing findings for people and for machines.
#include "check/findings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include <terminaltext/quantity.h>

#include "jsontext.h"
#include "progress.h"

namespace RecStation {

namespace {

QString shownHertz(double value)
{
    constexpr std::array<std::pair<double, const char*>, 3> Units = {{{1e9, "GHz"}, {1e6, "MHz"}, {1e3, "kHz"}}};
    constexpr int Digits = 7;
    const auto unit =
        std::find_if(Units.begin(), Units.end(), [value](const auto& u) { return std::abs(value) >= u.first; });
    return unit == Units.end() ? QString::number(value, 'g', Digits) + QStringLiteral(" Hz")
                               : QString::number(value / unit->first, 'g', Digits) + ' ' + QLatin1String(unit->second);
}

QString shownRate(double perSecond)
{
    constexpr int Digits = 3;
    return perSecond > 0 ? QString::number(perSecond, 'g', Digits) + QStringLiteral(" a second") : QString();
}

QString shownContent(const FoundValue& value)
{
    QString content = printable(value.text);
    if (value.cells > 0) {
        content = QStringLiteral("%1 cells from %2 to %3")
                      .arg(QString::number(value.cells), shownHertz(value.lowestHz), shownHertz(value.highestHz));
    }
    if (value.unknown) {
        content =
            value.cells > 0 ? content + QStringLiteral(", nothing measured yet") : QStringLiteral("not known yet");
    }
    return content;
}

void appendSource(QString& text, const FoundSource& source)
{
    text += source.name + QStringLiteral(": ") +
            (source.problem.isEmpty() ? QStringLiteral("reachable")
             : source.reached         ? QStringLiteral("reachable, but ") + printable(source.problem)
                                      : QStringLiteral("not reachable: ") + printable(source.problem)) +
            '\n';
    int pathWidth = 0;
    int contentWidth = 0;
    for (const FoundValue& value : source.values) {
        pathWidth = std::max(pathWidth, static_cast<int>(value.path.size()));
        contentWidth = std::max(contentWidth, static_cast<int>(shownContent(value).size()));
    }
    for (const FoundValue& value : source.values) {
        QString line = QStringLiteral("  ") + value.path.leftJustified(pathWidth) + QStringLiteral("  ") +
                       shownContent(value).leftJustified(contentWidth) + QStringLiteral("  ") +
                       shownRate(value.perSecond);
        while (line.endsWith(' ')) {
            line.chop(1);
        }
        text += line + '\n';
    }
    for (const QString& remark : source.remarks) {
        text += QStringLiteral("  remark: ") + printable(remark) + '\n';
    }
}

QString shownDirectory(const FoundRecorder& recorder)
{
    QString text = printable(recorder.directory);
    if (recorder.isMade) {
        text += QStringLiteral(" (will be made)");
    }
    if (recorder.freeBytes) {
        text += QStringLiteral(", ") + byteText(*recorder.freeBytes) + QStringLiteral(" free");
    }
    return text;
}

void appendRecorder(QString& text, const FoundRecorder& recorder)
{
    if (!recorder.on) {
        text += QStringLiteral("recorder %1: would stay off\n").arg(recorder.name);
        return;
    }
    text += QStringLiteral("recorder %1: would record into %2\n").arg(recorder.name, shownDirectory(recorder));
    if (!recorder.problem.isEmpty()) {
        text += QStringLiteral("  problem: ") + printable(recorder.problem) + '\n';
    }
    text += QStringLiteral("  records: ") +
            (recorder.keywords.isEmpty() ? QStringLiteral("nothing") : recorder.keywords.join(QStringLiteral(", "))) +
            '\n';
    for (const FoundLack& lack : recorder.lacks) {
        text += QStringLiteral("  missing: %1: %2\n").arg(lack.keywords.join(QStringLiteral(", ")), lack.why);
    }
}

}  // namespace

// The JSON library finds these by their name.

static void to_json(OrderedJson& object, const FoundValue& value)
{
    object = {{"path", value.path}, {"known", !value.unknown}};
    if (value.cells > 0) {
        object["cells"] = value.cells;
        object["lowestHz"] = value.lowestHz;
        object["highestHz"] = value.highestHz;
    } else {
        object["text"] = value.text;
    }
    object["changes"] = value.shown;
    if (value.perSecond > 0) {
        object["perSecond"] = value.perSecond;
    }
}

static void to_json(OrderedJson& object, const FoundSource& source)
{
    object = {{"name", source.name}, {"reachable", source.problem.isEmpty() || source.reached}};
    addIfTold(object, "problem", source.problem);
    object["remarks"] = source.remarks;
    object["values"] = source.values;
}

static void to_json(OrderedJson& object, const FoundLack& lack)
{
    object = {{"keywords", lack.keywords}, {"why", lack.why}};
}

static void to_json(OrderedJson& object, const FoundRecorder& recorder)
{
    object = {{"name", recorder.name}, {"on", recorder.on}, {"directory", recorder.directory}};
    if (recorder.freeBytes) {
        object["freeBytes"] = *recorder.freeBytes;
    }
    addIfTold(object, "problem", recorder.problem);
    object["keywords"] = recorder.keywords;
    object["missing"] = recorder.lacks;
}

ExitCode exitCodeOf(const Findings& findings)
{
    const auto isReached = [](const FoundSource& source) { return source.problem.isEmpty() || source.reached; };
    const auto shows = [](const FoundSource& source) { return source.problem.isEmpty(); };
    const auto canRecord = [](const FoundRecorder& recorder) { return recorder.on && recorder.problem.isEmpty(); };
    const auto isShort = [](const FoundRecorder& recorder) {
        return recorder.on && (!recorder.problem.isEmpty() || !recorder.lacks.empty());
    };
    const auto& sources = findings.sources;
    const auto& recorders = findings.recorders;
    if (!findings.failure.isEmpty() || std::none_of(sources.begin(), sources.end(), isReached) ||
        std::none_of(recorders.begin(), recorders.end(), canRecord)) {
        return ExitCode::CannotRun;
    }
    const bool complete =
        std::all_of(sources.begin(), sources.end(), shows) && std::none_of(recorders.begin(), recorders.end(), isShort);
    return complete ? ExitCode::Success : ExitCode::Incomplete;
}

std::string findingsText(const Findings& findings)
{
    QString text;
    for (const FoundSource& source : findings.sources) {
        appendSource(text, source);
    }
    for (const FoundRecorder& recorder : findings.recorders) {
        appendRecorder(text, recorder);
    }
    constexpr std::array<const char*, 4> Verdicts = {"Nothing is missing.", "", "Nothing would be recorded.",
                                                     "Something is missing."};
    return text.toStdString() + Verdicts.at(static_cast<std::size_t>(exitCodeOf(findings))) + '\n';
}

std::string findingsJson(const Findings& findings)
{
    OrderedJson object = {{"sources", findings.sources}, {"recorders", findings.recorders}};
    addIfTold(object, "failure", findings.failure);
    object["exitCode"] = static_cast<int>(exitCodeOf(findings));
    constexpr int Indent = 2;
    return object.dump(Indent, ' ', false, OrderedJson::error_handler_t::replace) + '\n';
}

}  // namespace RecStation
