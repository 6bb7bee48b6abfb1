// Sources that are tried: each runs until it has shown something, for a limited time.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include <QString>

#include "sources/source.h"

namespace RecStation {

/// Waits for each live source in a thread of its own, so that one that is silent holds no other; everything else is
/// done in the calling thread.
class Tryouts {
public:
    struct Hooks {
        std::function<void(std::size_t source)> beforeReading;  ///< of a source that is not live
        std::function<void(std::size_t source, unsigned long long timeUs)> beforeStep;
        std::function<void()> afterStep;
        std::function<bool(std::size_t source, std::size_t steps)> enough;  ///< has been seen of the source
    };

    explicit Tryouts(Hooks hooks);
    Tryouts(const Tryouts&) = delete;
    Tryouts& operator=(const Tryouts&) = delete;
    ~Tryouts();

    /// @param source prepared
    /// @param live it may wait for its input
    void add(std::size_t index, std::unique_ptr<Source> source, bool live);
    /// Until all have shown enough or ended, the time is over, or the process is asked to stop. There must be a
    /// System::StopSignal, which is asked to end what still waits.
    void run(std::chrono::milliseconds atMost);

    /// Why a source broke off; empty when it did not.
    [[nodiscard]] QString problemOf(std::size_t index) const;
    [[nodiscard]] bool ended(std::size_t index) const;  ///< its input came to its end

    /// A source still waits in its thread, although it was asked to end: the process ends without its destructors.
    [[nodiscard]] static bool leftThreadBehind();

private:
    struct Trial;

    static void wait(const std::shared_ptr<Trial>& trial);
    void read(Trial& trial);
    void serve(Trial& trial);
    [[nodiscard]] bool serveAll();
    [[nodiscard]] bool waitForAll() const;
    void endAll();
    [[nodiscard]] const Trial* find(std::size_t index) const;

    Hooks m_hooks;
    std::vector<std::shared_ptr<Trial>> m_trials;
};

}  // namespace RecStation
