// What all connections of a server share; and the threads that do what takes long, in the order in which it came.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <limits>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include <boost/asio/io_context.hpp>

#include "gate.h"
#include "http.h"
#include "limits.h"

namespace RecView {

class Workers {
public:
    using Job = std::function<void()>;  ///< must not throw

    /// @param most so many new jobs may wait
    Workers(std::size_t threads, std::size_t most);
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    ~Workers();

    /// @return false where too many wait; the job is not done then
    [[nodiscard]] bool offer(Job job) { return add(std::move(job), m_most); }
    /// A further part of something that was taken; it is never refused.
    void goOn(Job job) { add(std::move(job), std::numeric_limits<std::size_t>::max()); }
    /// Drops what waits, and waits for what is being done.
    void stop();

private:
    bool add(Job job, std::size_t most);
    void work();

    std::size_t m_most;
    std::mutex m_mutex;
    std::condition_variable m_filled;
    std::deque<Job> m_jobs;
    bool m_stopped = false;
    std::vector<std::thread> m_threads;
};

class EventStreams;

/// Outlives the connections; all of it but what says otherwise belongs to the thread that runs the context.
struct Site {
    boost::asio::io_context& context;
    const Limits& limits;
    const Gate& gate;
    const Handler& handler;  ///< for the workers
    Workers& workers;
    EventStreams& streams;
    std::size_t connections = 0;
    std::size_t unreadBytes = 0;  ///< of responses that are being written
};

/// Counts something of a site as long as it lives.
class Counted {
public:
    explicit Counted(std::size_t& sum, std::size_t amount = 1) : m_sum(&sum), m_amount(amount) { *m_sum += m_amount; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { *m_sum -= m_amount; }

private:
    std::size_t* m_sum;
    std::size_t m_amount;
};

}  // namespace RecView
