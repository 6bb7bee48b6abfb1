// What a run tells people while it lasts.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>

#include <QElapsedTimer>
#include <QString>

namespace RecStation {

/// The result of a run. @return whether all of it was written
[[nodiscard]] bool writeToStandardOutput(const std::string& text);

struct ProgressNumbers {
    unsigned long long recordedMs = 0;  ///< how far recorded time has come
    std::uint64_t records = 0;          ///< written of changes so far
    std::int64_t bytes = 0;             ///< in the recording files by now
};

/// "1 min 02.250 s recorded, 12345 records, 4.2 MB, 1.3 MB/s"
[[nodiscard]] QString progressText(const ProgressNumbers& numbers, long long elapsedMs);
/// What files, names and values hold, as it may be shown: one line without control characters.
[[nodiscard]] QString printable(const QString& text);
[[nodiscard]] QString byteText(std::int64_t bytes);                   ///< "900 bytes", "4.2 MB"
[[nodiscard]] QString durationText(unsigned long long milliseconds);  ///< "2.250 s", "1 h 01 min 02.250 s"
/// As exact as its size makes sense: "-12.3 ms", "45.6 s", "2 h 05 min", "12 days".
[[nodiscard]] QString lagText(long long microseconds);

/// Messages and progress on the standard error output: one line that is rewritten on a terminal, plain lines
/// otherwise. Threads may share it.
class Messages {
public:
    Messages(bool terminal, bool quiet);
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;
    ~Messages();  ///< leaves the terminal at the start of a line

    void message(const QString& sentence);
    [[nodiscard]] bool progressDue() const;  ///< often on a terminal, seldom otherwise, never when quiet
    void progress(const ProgressNumbers& numbers);
    void finish(const ProgressNumbers& numbers);  ///< the last progress, unless quiet

private:
    void show(const ProgressNumbers& numbers);
    void endProgressLine();

    mutable std::mutex m_mutex;
    bool m_terminal;
    bool m_quiet;
    int m_lineLength = 0;  // of the progress line on the terminal
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceProgress;
};

}  // namespace RecStation
