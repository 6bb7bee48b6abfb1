// What all connections of a server share.
#pragma once

#include <atomic>
#include <cstddef>

#include <boost/asio/io_context.hpp>

#include "gate.h"
#include "http.h"
#include "limits.h"
#include "workers.h"

namespace RecView {

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
