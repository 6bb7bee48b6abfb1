// Writing events to whoever listens, and giving up on those who do not read.
#include "eventstreams.h"

#include <array>
#include <utility>

#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>

namespace RecView {

namespace {

using boost::beast::error_code;

}  // namespace

class EventStream : public std::enable_shared_from_this<EventStream> {
public:
    EventStream(EventStreams& streams, boost::beast::tcp_stream&& connection, std::shared_ptr<void> counted)
        : m_streams(streams),
          m_connection(std::move(connection)),
          m_pause(m_connection.get_executor()),
          m_counted(std::move(counted))
    {
    }
    void begin(const std::string& head)
    {
        awaitEnd();
        send(head);
        awaitPause();
    }
    void send(const std::string& text)
    {
        if (m_unsent.size() + text.size() > m_streams.m_limits.unreadEventBytes) {
            close();  // nobody reads; a browser that comes back asks for all anew
            return;
        }
        m_unsent += text;
        if (m_sent.empty()) {
            write();
        }
    }

private:
    // A stream is only written; what comes in is the end, or nothing that would be understood.
    void awaitEnd()
    {
        m_connection.socket().async_read_some(
            boost::asio::buffer(m_incoming),
            [self = shared_from_this()](error_code /*error*/, std::size_t /*bytes*/) { self->close(); });
    }
    void awaitPause()
    {
        m_pause.expires_after(m_streams.m_limits.eventPause);
        m_pause.async_wait([self = shared_from_this()](error_code error) {
            if (!error && self->m_isOpen) {
                self->send(":\n\n");
                self->awaitPause();
            }
        });
    }
    void write()
    {
        if (!m_isOpen || m_unsent.empty()) {
            return;
        }
        m_sent.swap(m_unsent);
        m_connection.expires_after(m_streams.m_limits.stallTime);
        boost::asio::async_write(m_connection, boost::asio::buffer(m_sent),
                                 [self = shared_from_this()](error_code error, std::size_t /*bytes*/) {
                                     self->m_sent.clear();
                                     self->m_connection.expires_never();
                                     error ? self->close() : self->write();
                                 });
    }
    void close()
    {
        if (!std::exchange(m_isOpen, false)) {
            return;
        }
        m_pause.cancel();
        m_connection.close();
        m_streams.m_streams.erase(shared_from_this());
    }

    EventStreams& m_streams;
    boost::beast::tcp_stream m_connection;
    boost::asio::steady_timer m_pause;
    std::shared_ptr<void> m_counted;
    std::array<char, 1> m_incoming{};
    std::string m_sent;    // being written
    std::string m_unsent;  // not yet
    bool m_isOpen = true;
};

EventStreams::~EventStreams() = default;

void EventStreams::open(boost::beast::tcp_stream&& connection, const std::string& head, std::shared_ptr<void> counted)
{
    const auto stream = std::make_shared<EventStream>(*this, std::move(connection), std::move(counted));
    m_streams.insert(stream);
    stream->begin(head);
}

void EventStreams::publish(const std::string& name, const std::string& json)
{
    const std::string event = "event: " + name + "\ndata: " + json + "\n\n";
    const auto streams = m_streams;  // one that is full leaves
    for (const auto& stream : streams) {
        stream->send(event);
    }
}

}  // namespace RecView
