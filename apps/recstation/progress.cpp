// Messages and the progress line on standard error; bytes and durations as text.
#include "progress.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include <QStringList>

#include <terminaltext/terminaltext.h>

namespace RecStation {

namespace {

constexpr qint64 TerminalIntervalMs = 200;
constexpr qint64 PlainIntervalMs = 5'000;

void writeToStandardError(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    // Nobody is left to be told when this fails.
    static_cast<void>(std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr));
    static_cast<void>(std::fflush(stderr));
}

}  // namespace

bool writeToStandardOutput(const std::string& text)
{
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
}

QString printable(const QString& text)
{
    return QString::fromStdString(TerminalText::oneLine(text.toStdString()));
}

QString byteText(std::int64_t bytes)
{
    constexpr double Step = 1000;
    constexpr std::array Units = {"kB", "MB", "GB", "TB"};
    if (bytes < static_cast<std::int64_t>(Step)) {
        return QStringLiteral("%1 bytes").arg(bytes);
    }
    double amount = static_cast<double>(bytes) / Step;
    std::size_t unit = 0;
    while (amount >= Step && unit + 1 < Units.size()) {
        amount /= Step;
        ++unit;
    }
    return QStringLiteral("%1 %2").arg(amount, 0, 'f', 1).arg(QLatin1String(Units[unit]));
}

QString durationText(unsigned long long milliseconds)
{
    constexpr unsigned long long PerMinute = 60'000;
    constexpr unsigned long long PerHour = 60 * PerMinute;
    constexpr double PerSecond = 1000;
    const auto hours = milliseconds / PerHour;
    const auto minutes = milliseconds % PerHour / PerMinute;
    const double seconds = static_cast<double>(milliseconds % PerMinute) / PerSecond;
    if (milliseconds < PerMinute) {
        return QStringLiteral("%1 s").arg(seconds, 0, 'f', 3);
    }
    const QString tail = QStringLiteral("%1 s").arg(seconds, 6, 'f', 3, QLatin1Char('0'));
    if (milliseconds < PerHour) {
        return QStringLiteral("%1 min %2").arg(minutes).arg(tail);
    }
    return QStringLiteral("%1 h %2 min %3").arg(hours).arg(minutes, 2, 10, QLatin1Char('0')).arg(tail);
}

QString lagText(long long microseconds)
{
    constexpr double PerMillisecond = 1e3;
    constexpr double PerSecond = 1e6;
    constexpr double PerMinute = 60 * PerSecond;
    constexpr double PerHour = 60 * PerMinute;
    constexpr double PerDay = 24 * PerHour;
    constexpr double Tenfold = 10;  // from ten of a unit on it is the one to tell
    constexpr long long MinutesPerHour = 60;
    const auto lag = static_cast<double>(microseconds);
    const double size = std::abs(lag);
    if (size < Tenfold * PerSecond) {
        return QStringLiteral("%1 ms").arg(lag / PerMillisecond, 0, 'f', 1);
    }
    if (size < Tenfold * PerMinute) {
        return QStringLiteral("%1 s").arg(lag / PerSecond, 0, 'f', 1);
    }
    if (size < PerHour) {
        return QStringLiteral("%1 min").arg(lag / PerMinute, 0, 'f', 0);
    }
    if (size >= 2 * PerDay) {
        return QStringLiteral("%1 days").arg(lag / PerDay, 0, 'f', 0);
    }
    const long long minutes = std::llround(size / PerMinute);
    return QStringLiteral("%1%2 h %3 min")
        .arg(lag < 0 ? QStringLiteral("-") : QString())
        .arg(minutes / MinutesPerHour)
        .arg(minutes % MinutesPerHour, 2, 10, QLatin1Char('0'));
}

QString progressText(const ProgressNumbers& numbers, long long elapsedMs)
{
    const std::int64_t rate = elapsedMs > 0 ? numbers.bytes * 1000 / elapsedMs : 0;
    return QStringLiteral("%1 recorded, %2 records, %3, %4/s")
        .arg(durationText(numbers.recordedMs))
        .arg(numbers.records)
        .arg(byteText(numbers.bytes), byteText(rate));
}

Messages::Messages(bool terminal, bool quiet) : m_terminal(terminal), m_quiet(quiet)
{
    m_sinceStart.start();
    m_sinceProgress.start();
}

Messages::~Messages()
{
    endProgressLine();
}

void Messages::endProgressLine()
{
    if (m_lineLength > 0) {
        m_lineLength = 0;
        writeToStandardError(QStringLiteral("\n"));
    }
}

void Messages::message(const QString& sentence)
{
    const std::lock_guard lock(m_mutex);
    endProgressLine();
    writeToStandardError(QStringLiteral("recstation: ") + printable(sentence) + QLatin1Char('\n'));
}

void Messages::finish(const ProgressNumbers& numbers)
{
    const std::lock_guard lock(m_mutex);
    if (!m_quiet) {
        show(numbers);
        endProgressLine();
    }
}

bool Messages::progressDue() const
{
    const std::lock_guard lock(m_mutex);
    return !m_quiet && m_sinceProgress.elapsed() >= (m_terminal ? TerminalIntervalMs : PlainIntervalMs);
}

void Messages::progress(const ProgressNumbers& numbers)
{
    const std::lock_guard lock(m_mutex);
    show(numbers);
}

void Messages::show(const ProgressNumbers& numbers)
{
    m_sinceProgress.restart();
    const QString text = progressText(numbers, m_sinceStart.elapsed());
    if (!m_terminal) {
        writeToStandardError(text + QLatin1Char('\n'));
        return;
    }
    // A shorter line covers the one before with blanks.
    writeToStandardError(QLatin1Char('\r') + text.leftJustified(m_lineLength));
    m_lineLength = std::max(m_lineLength, text.size());
}

}  // namespace RecStation
