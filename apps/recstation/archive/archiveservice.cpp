// A thread moves recordings during the run and reports on them at its end.
#include "archiveservice.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

#include <QDateTime>
#include <QDir>

#include <zelvo/archive.h>

namespace RecStation {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds PauseBetweenRuns{1'000};
constexpr milliseconds PauseOfSetUp{5'000};
constexpr milliseconds PauseOfQuestions{50};     // between two calls of stop
constexpr milliseconds PatienceAtTheEnd{5'000};  // with a registry or storage that does not answer

std::atomic<bool> threadLeftBehind = false;

// Shared with the thread, which may have to be left behind.
struct Shared {
    std::mutex mutex;
    std::condition_variable changed;
    bool isSetUp = false;
    QString setUpProblem;
    std::optional<QStringList> asked;  // for these the closing report is to be made
    std::optional<ArchiveReport> report;
    std::atomic<bool> stopMoving = false;
    std::atomic<bool> end = false;
    bool ended = false;
};

// What runs in the thread.
class Worker {
public:
    Worker(Zelvo::ArchiveConfiguration configuration, std::shared_ptr<Shared> shared)
        : m_configuration(std::move(configuration)), m_shared(std::move(shared)), m_mover(m_configuration)
    {
    }

    void run()
    {
        while (!m_shared->end) {
            const bool closing = isAsked();
            const QString problem = setUp() ? moveFiles() : m_setUpProblem;
            if (closing) {
                answer(problem);
            }
            waitForTheNextRun();
        }
    }

private:
    bool setUp()
    {
        if (m_isSetUp) {
            return true;
        }
        try {
            Zelvo::SetUpArchive(m_configuration);
            m_isSetUp = true;
            m_setUpProblem.clear();
        } catch (const std::exception& error) {
            m_setUpProblem = QString::fromUtf8(error.what());
        }
        const std::lock_guard guard(m_shared->mutex);
        m_shared->isSetUp = m_isSetUp;
        m_shared->setUpProblem = m_setUpProblem;
        m_shared->changed.notify_all();
        return m_isSetUp;
    }

    QString moveFiles()
    {
        const Zelvo::MoverReport report = m_mover.runPending([this] { return m_shared->stopMoving.load(); });
        return report.otherMover ? QStringLiteral("another process moves this station's recordings") : report.problem;
    }

    [[nodiscard]] bool isAsked() const
    {
        const std::lock_guard guard(m_shared->mutex);
        return m_shared->asked.has_value() && !m_shared->report.has_value();
    }

    void answer(const QString& problem)
    {
        ArchiveReport report;
        report.problem = problem;
        try {
            Zelvo::Archive archive(m_configuration);
            for (const QString& address : *m_shared->asked) {  // set once, read by this thread only
                report.files.push_back(lookUp(archive, address));
            }
        } catch (const std::exception& error) {
            report.files.clear();
            report.problem = QString::fromUtf8(error.what());
        }
        const std::lock_guard guard(m_shared->mutex);
        m_shared->report = std::move(report);
        m_shared->changed.notify_all();
    }

    [[nodiscard]] ArchivedFile lookUp(Zelvo::Archive& archive, const QString& address) const
    {
        std::optional<Zelvo::FileInfo> file = archive.file(Zelvo::ZelvoUrl(address));
        if (file && file->state == Zelvo::FileState::Same) {  // it was registered twice
            file =
                archive.file(Zelvo::ZelvoUrl(QStringLiteral("zelvo:///%1/%2").arg(file->sameGuid).arg(file->sameId)));
        }
        ArchivedFile found;
        if (!file) {
            found.why = QStringLiteral("the archive does not know %1").arg(address);
        } else if (file->state == Zelvo::FileState::Stored || file->state == Zelvo::FileState::Moved) {
            found.moved = true;
            found.storedPath = QDir(m_configuration.storage).filePath(file->storedPath);
        } else {
            found.why = file->error;
        }
        return found;
    }

    void waitForTheNextRun() const
    {
        std::unique_lock lock(m_shared->mutex);
        m_shared->changed.wait_for(lock, m_isSetUp ? PauseBetweenRuns : PauseOfSetUp, [this] {
            return m_shared->end.load() || (m_shared->asked.has_value() && !m_shared->report.has_value());
        });
    }

    Zelvo::ArchiveConfiguration m_configuration;
    std::shared_ptr<Shared> m_shared;
    Zelvo::Mover m_mover;
    bool m_isSetUp = false;
    QString m_setUpProblem;
};

void runWorker(const Zelvo::ArchiveConfiguration& configuration, const std::shared_ptr<Shared>& shared)
{
    Worker(configuration, shared).run();
    const std::lock_guard guard(shared->mutex);
    shared->ended = true;
    shared->changed.notify_all();
}

class EmbeddedArchive final : public ArchiveService {
public:
    explicit EmbeddedArchive(const Zelvo::ArchiveConfiguration& configuration)
    {
        Zelvo::SetProcessArchive(configuration);
        m_thread = std::thread(runWorker, configuration, m_shared);
    }
    EmbeddedArchive(const EmbeddedArchive&) = delete;
    EmbeddedArchive& operator=(const EmbeddedArchive&) = delete;

    ~EmbeddedArchive() override
    {
        m_shared->stopMoving = true;
        m_shared->end = true;
        std::unique_lock lock(m_shared->mutex);
        m_shared->changed.notify_all();
        const bool ended = m_shared->changed.wait_for(lock, PatienceAtTheEnd, [this] { return m_shared->ended; });
        lock.unlock();
        if (ended) {
            m_thread.join();
        } else {
            threadLeftBehind = true;
            m_thread.detach();
        }
        Zelvo::SetProcessArchive(std::nullopt);
    }

    [[nodiscard]] QString waitUntilSetUp(milliseconds limit) override
    {
        std::unique_lock lock(m_shared->mutex);
        const bool answered = m_shared->changed.wait_for(
            lock, limit, [this] { return m_shared->isSetUp || !m_shared->setUpProblem.isEmpty(); });
        return answered ? m_shared->setUpProblem : QStringLiteral("registry and storage do not answer yet");
    }

    [[nodiscard]] ArchiveReport finish(const QStringList& addresses, milliseconds limit,
                                       const std::function<bool()>& stop) override
    {
        std::unique_lock lock(m_shared->mutex);
        m_shared->asked = addresses;
        m_shared->changed.notify_all();
        waitForReport(lock, limit, stop);
        if (!m_shared->report) {
            m_shared->stopMoving = true;
            waitForReport(lock, PatienceAtTheEnd, {});
        }
        return m_shared->report.value_or(ArchiveReport{{}, QStringLiteral("registry and storage do not answer")});
    }

private:
    void waitForReport(std::unique_lock<std::mutex>& lock, milliseconds limit, const std::function<bool()>& stop)
    {
        const Clock::time_point until = Clock::now() + limit;
        while (!m_shared->report && Clock::now() < until && !(stop && stop())) {
            m_shared->changed.wait_for(lock, PauseOfQuestions);
        }
    }

    std::shared_ptr<Shared> m_shared = std::make_shared<Shared>();
    std::thread m_thread;
};

}  // namespace

bool ArchiveService::leftThreadBehind()
{
    return threadLeftBehind;
}

std::unique_ptr<ArchiveService> makeArchiveService(const QString& configurationFile)
{
    if (!Zelvo::ArchiveIsBuiltIn()) {
        if (!configurationFile.isEmpty()) {
            throw std::runtime_error(configurationFile.toStdString() +
                                     ": the table [archive] has no meaning here: this program was built without an "
                                     "archive");
        }
        return nullptr;
    }
    const std::optional<Zelvo::ArchiveConfiguration> configuration =
        configurationFile.isEmpty() ? Zelvo::ArchiveConfigurationOfEnvironment()
                                    : std::optional(Zelvo::LoadArchiveConfiguration(configurationFile));
    return configuration ? std::make_unique<EmbeddedArchive>(*configuration) : nullptr;
}

}  // namespace RecStation
