// A run of the mover as text or JSON line, and whether it is news.
#include "report.h"

#include <QDateTime>

#include <nlohmann/json.hpp>

#include <terminaltext/terminaltext.h>

namespace Zelvod {

namespace {

std::string isoTime(std::int64_t milliseconds)
{
    return QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC).toString(Qt::ISODateWithMs).toStdString();
}

nlohmann::json jsonTexts(const QStringList& texts)
{
    nlohmann::json list = nlohmann::json::array();
    for (const QString& text : texts) {
        list.push_back(text.toStdString());
    }
    return list;
}

QString files(std::int64_t count)
{
    return count == 1 ? QStringLiteral("1 file") : QStringLiteral("%1 files").arg(count);
}

}  // namespace

bool isNews(const Zelvo::MoverReport& report, const QString& lastProblem)
{
    return report.moved > 0 || report.failed > 0 || report.removed > 0 || !report.messages.isEmpty() ||
           report.problem != lastProblem;
}

std::string jsonLine(const Zelvo::MoverReport& report, std::int64_t nowMs)
{
    nlohmann::ordered_json object;
    object["time"] = isoTime(nowMs);
    object["moved"] = report.moved;
    object["bytes"] = report.bytes;
    object["failed"] = report.failed;
    object["waiting"] = report.waiting;
    object["removed"] = report.removed;
    object["problem"] = report.problem.isEmpty() ? nlohmann::json() : nlohmann::json(report.problem.toStdString());
    object["nextTry"] = report.nextRunMs < 0 ? nlohmann::json() : nlohmann::json(isoTime(report.nextRunMs));
    object["messages"] = jsonTexts(report.messages);
    return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
}

QString text(const Zelvo::MoverReport& report, const QString& lastProblem, bool failuresOnly)
{
    QStringList lines = report.messages;
    if (report.problem != lastProblem) {
        lines += report.problem.isEmpty() ? QStringLiteral("all is well again") : report.problem;
    }
    if (!failuresOnly && (report.moved > 0 || report.removed > 0)) {
        QString line = QStringLiteral("moved %1, %2 bytes").arg(files(report.moved)).arg(report.bytes);
        if (report.removed > 0) {
            line += QStringLiteral("; removed %1 whose time was over").arg(files(report.removed));
        }
        lines += report.waiting > 0 ? line + QStringLiteral("; %1 waiting").arg(files(report.waiting)) : line;
    }
    QString printed;
    for (const QString& line : lines) {
        printed += QString::fromStdString(TerminalText::oneLine(line.toStdString())) + QLatin1Char('\n');
    }
    return printed;
}

}  // namespace Zelvod
