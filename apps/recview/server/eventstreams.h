// Streams of events that browsers hold open.
#pragma once

#include <memory>
#include <set>
#include <string>

#include <boost/beast/core/tcp_stream.hpp>

#include "limits.h"

namespace RecView {

class EventStream;

/// All of it belongs to the thread that runs the streams' context.
class EventStreams {
public:
    explicit EventStreams(const Limits& limits) : m_limits(limits) {}
    EventStreams(const EventStreams&) = delete;
    EventStreams& operator=(const EventStreams&) = delete;
    ~EventStreams();

    [[nodiscard]] bool isFull() const { return m_streams.size() >= m_limits.eventStreams; }
    /// @param head the response's header, as it is sent
    /// @param counted is given up with the connection
    void open(boost::beast::tcp_stream&& connection, const std::string& head, std::shared_ptr<void> counted);
    void closeAll() { m_streams.clear(); }
    void publish(const std::string& name, const std::string& json);

private:
    friend class EventStream;

    const Limits& m_limits;
    std::set<std::shared_ptr<EventStream>> m_streams;
};

}  // namespace RecView
