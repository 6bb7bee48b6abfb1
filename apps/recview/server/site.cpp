// A queue of jobs and its threads.
#include "site.h"

namespace RecView {

Workers::Workers(std::size_t threads, std::size_t most) : m_most(most)
{
    for (std::size_t i = 0; i < threads; ++i) {
        m_threads.emplace_back([this] { work(); });
    }
}

Workers::~Workers()
{
    stop();
}

bool Workers::add(Job job, std::size_t most)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_stopped || m_jobs.size() >= most) {
            return false;
        }
        m_jobs.push_back(std::move(job));
    }
    m_filled.notify_one();
    return true;
}

void Workers::stop()
{
    std::deque<Job> dropped;
    {
        const std::lock_guard lock(m_mutex);
        m_stopped = true;
        dropped.swap(m_jobs);
    }
    m_filled.notify_all();
    for (std::thread& thread : m_threads) {
        thread.join();
    }
    m_threads.clear();
}

void Workers::work()
{
    for (;;) {
        Job job;
        {
            std::unique_lock lock(m_mutex);
            m_filled.wait(lock, [this] { return m_stopped || !m_jobs.empty(); });
            if (m_stopped) {
                return;
            }
            job = std::move(m_jobs.front());
            m_jobs.pop_front();
        }
        job();
    }
}

}  // namespace RecView
