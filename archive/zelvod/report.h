// What the service says about a run.
#pragma once

#include <cstdint>
#include <string>

#include <QString>

#include <zelvo/archive.h>

namespace Zelvod {

/// Whether a run is worth a line: it did something, or its problem is another than before.
[[nodiscard]] bool isNews(const Zelvo::MoverReport& report, const QString& lastProblem);
/// One object on one line, with its line feed. Times in ISO 8601, UTC.
[[nodiscard]] std::string jsonLine(const Zelvo::MoverReport& report, std::int64_t nowMs);
/// Lines for people; the last is about the whole run. Empty when there is nothing to say.
[[nodiscard]] QString text(const Zelvo::MoverReport& report, const QString& lastProblem, bool failuresOnly);

}  // namespace Zelvod
