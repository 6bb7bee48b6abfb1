// The threads in which sources wait, and the turns between them and the calling thread.
#include "check/tryouts.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include <system/stopsignal.h>

namespace RecStation {

namespace {

enum class TrialTurn : std::uint8_t {
    Waiting,   // the source's thread is in nextTime
    Answered,  // the calling thread is to step
    Over,
};

std::atomic<bool> trialLeftBehind = false;

// Shared by all, so that the calling thread can wait for any of them.
struct Meeting {
    std::mutex mutex;
    std::condition_variable changed;
};

const std::shared_ptr<Meeting>& meeting()
{
    static const auto one = std::make_shared<Meeting>();
    return one;
}

}  // namespace

struct Tryouts::Trial {
    std::size_t index = 0;
    std::unique_ptr<Source> source;
    bool live = false;
    std::thread thread;  // of a live source
    TrialTurn turn = TrialTurn::Waiting;
    bool finished = false;  // its thread
    std::optional<unsigned long long> time;
    QString problem;
    bool ended = false;
    std::size_t steps = 0;
    std::shared_ptr<Meeting> meeting = RecStation::meeting();
};

Tryouts::Tryouts(Hooks hooks) : m_hooks(std::move(hooks))
{
}

Tryouts::~Tryouts()
{
    endAll();
}

void Tryouts::add(std::size_t index, std::unique_ptr<Source> source, bool live)
{
    m_trials.push_back(std::make_shared<Trial>());
    m_trials.back()->index = index;
    m_trials.back()->live = live;
    m_trials.back()->source = std::move(source);
}

// In the source's thread.
void Tryouts::wait(const std::shared_ptr<Trial>& trial)
{
    Meeting& meeting = *trial->meeting;
    std::unique_lock<std::mutex> lock(meeting.mutex);
    while (trial->turn != TrialTurn::Over) {
        lock.unlock();
        std::optional<unsigned long long> time;
        QString problem;
        try {
            time = trial->source->nextTime();
        } catch (const std::exception& error) {
            problem = QString::fromUtf8(error.what());
        }
        lock.lock();
        trial->time = time;
        trial->problem = problem;
        trial->ended = !time && problem.isEmpty() && !System::StopSignal::requested();
        trial->turn = time && trial->turn != TrialTurn::Over ? TrialTurn::Answered : TrialTurn::Over;
        meeting.changed.notify_all();
        meeting.changed.wait(lock, [&trial] { return trial->turn != TrialTurn::Answered; });
    }
    trial->finished = true;
    meeting.changed.notify_all();
}

// What is never waited for.
void Tryouts::read(Trial& trial)
{
    try {
        m_hooks.beforeReading(trial.index);
        trial.time = trial.source->nextTime();
        trial.ended = !trial.time;
        trial.turn = trial.time ? TrialTurn::Answered : TrialTurn::Over;
    } catch (const std::exception& error) {
        trial.problem = QString::fromUtf8(error.what());
        trial.turn = TrialTurn::Over;
    }
}

// With the lock, while the source's thread waits for its turn.
void Tryouts::serve(Trial& trial)
{
    TrialTurn next = TrialTurn::Waiting;
    try {
        m_hooks.beforeStep(trial.index, *trial.time);
        trial.source->step();
        m_hooks.afterStep();
        next = m_hooks.enough(trial.index, ++trial.steps) ? TrialTurn::Over : TrialTurn::Waiting;
    } catch (const std::exception& error) {
        trial.problem = QString::fromUtf8(error.what());
        next = TrialTurn::Over;
    }
    trial.turn = next;
}

// False when all are over.
bool Tryouts::serveAll()
{
    bool anyLeft = false;
    for (const auto& trial : m_trials) {
        if (!trial->live && trial->turn == TrialTurn::Waiting) {
            read(*trial);
        }
        if (trial->turn == TrialTurn::Answered) {
            serve(*trial);
        }
        anyLeft = anyLeft || trial->turn != TrialTurn::Over;
    }
    meeting()->changed.notify_all();
    return anyLeft;
}

bool Tryouts::waitForAll() const
{
    return std::all_of(m_trials.begin(), m_trials.end(),
                       [](const auto& trial) { return trial->live || trial->turn == TrialTurn::Over; });
}

void Tryouts::run(std::chrono::milliseconds atMost)
{
    const auto deadline = std::chrono::steady_clock::now() + atMost;
    for (const auto& trial : m_trials) {
        if (trial->live) {
            trial->thread = std::thread(wait, trial);
        }
    }
    constexpr std::chrono::milliseconds Glance{100};  // for a signal, which wakes nobody here
    std::unique_lock<std::mutex> lock(meeting()->mutex);
    while (serveAll() && std::chrono::steady_clock::now() < deadline && !System::StopSignal::requested()) {
        if (waitForAll()) {
            meeting()->changed.wait_until(lock, std::min(deadline, std::chrono::steady_clock::now() + Glance));
        } else {
            lock.unlock();  // the threads have their turn, too
            std::this_thread::yield();
            lock.lock();
        }
    }
    lock.unlock();
    endAll();
}

void Tryouts::endAll()
{
    std::unique_lock<std::mutex> lock(meeting()->mutex);
    const auto finished = [](const auto& trial) { return trial->finished || !trial->thread.joinable(); };
    for (const auto& trial : m_trials) {
        trial->turn = TrialTurn::Over;
    }
    meeting()->changed.notify_all();
    const auto allFinished = [&] { return std::all_of(m_trials.begin(), m_trials.end(), finished); };
    if (!allFinished()) {
        System::StopSignal::request();
        constexpr std::chrono::seconds Patience{2};
        meeting()->changed.wait_for(lock, Patience, allFinished);
    }
    for (const auto& trial : m_trials) {
        const bool left = !finished(trial);
        lock.unlock();
        if (left) {
            trialLeftBehind = true;
            trial->thread.detach();
        } else if (trial->thread.joinable()) {
            trial->thread.join();
        }
        lock.lock();
    }
}

const Tryouts::Trial* Tryouts::find(std::size_t index) const
{
    const auto found =
        std::find_if(m_trials.begin(), m_trials.end(), [index](const auto& trial) { return trial->index == index; });
    return found == m_trials.end() ? nullptr : found->get();
}

QString Tryouts::problemOf(std::size_t index) const
{
    const std::lock_guard<std::mutex> lock(meeting()->mutex);
    const Trial* trial = find(index);
    return trial == nullptr ? QString() : trial->problem;
}

bool Tryouts::ended(std::size_t index) const
{
    const std::lock_guard<std::mutex> lock(meeting()->mutex);
    const Trial* trial = find(index);
    return trial != nullptr && trial->ended;
}

bool Tryouts::leftThreadBehind()
{
    return trialLeftBehind;
}

}  // namespace RecStation
