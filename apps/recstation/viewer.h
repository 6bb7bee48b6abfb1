// The program that shows in the browser what is being recorded.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

#include <QString>
#include <QStringList>

class QThread;

namespace RecStation {

/// Runs recview, a process of its own, which ends with this object, and also where this process ends in any other way.
/// All that is to be done for it is done in a thread of its own; recording goes on whatever becomes of it.
class Viewer {
public:
    /// @param port 0: one that is free
    Viewer(const QStringList& directories, int port);
    Viewer(const Viewer&) = delete;
    Viewer& operator=(const Viewer&) = delete;
    ~Viewer();

    /// What is to be told since the last call: where the page is, or why there is none.
    [[nodiscard]] std::optional<QString> news();

private:
    void run(const QStringList& arguments);
    void tell(const QString& sentence);

    std::atomic<bool> m_hasNews = false;
    std::mutex m_mutex;
    QString m_news;
    std::unique_ptr<QThread> m_thread;
};

}  // namespace RecStation
