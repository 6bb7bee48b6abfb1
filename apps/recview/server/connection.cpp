// Reading requests and writing responses, each step within its time.
#include "connection.h"

#include <exception>
#include <sstream>
#include <utility>

#include <boost/asio/post.hpp>
#include <boost/beast/http/chunk_encode.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>

#include "eventstreams.h"

namespace RecView {

namespace {

namespace asio = boost::asio;
namespace http = boost::beast::http;
using boost::beast::error_code;

constexpr std::size_t ReadBytes = std::size_t{8} * 1024;

}  // namespace

Connection::Connection(asio::ip::tcp::socket&& socket, Site& site, std::shared_ptr<Counted> counted)
    : m_site(site),
      m_stream(std::move(socket)),
      m_counted(std::move(counted)),
      m_buffer(site.limits.headerBytes + static_cast<std::size_t>(site.limits.bodyBytes) + ReadBytes)
{
}

void Connection::turnAway()
{
    m_staysOpen = false;
    refuse({503, "Too many connections are open."});
}

void Connection::awaitRequest()
{
    m_parser.emplace();
    m_parser->header_limit(m_site.limits.headerBytes);
    m_parser->body_limit(m_site.limits.bodyBytes);
    if (m_buffer.size() > 0) {  // sent together with the last one
        readRequest();
        return;
    }
    m_stream.expires_after(m_site.limits.idleTime);
    m_stream.async_read_some(m_buffer.prepare(ReadBytes),
                             [self = shared_from_this()](error_code error, std::size_t bytes) {
                                 if (error) {
                                     self->close();
                                 } else {
                                     self->m_buffer.commit(bytes);
                                     self->readRequest();
                                 }
                             });
}

void Connection::readRequest()
{
    m_stream.expires_after(m_site.limits.requestTime);
    http::async_read(m_stream, m_buffer, *m_parser,
                     [self = shared_from_this()](error_code error, std::size_t /*bytes*/) { self->onRead(error); });
}

void Connection::onRead(error_code error)
{
    m_stream.expires_never();
    if (error) {
        refuseUnreadable(error);
        return;
    }
    Incoming incoming = m_parser->release();
    constexpr unsigned int ChunksSince = 11;
    m_isHead = incoming.method() == http::verb::head;
    m_isOld = incoming.version() < ChunksSince;
    m_staysOpen = incoming.keep_alive();
    const auto tags = incoming[http::field::if_none_match];
    const std::string knownTags(tags.data(), tags.size());
    auto result = judged(std::move(incoming), m_site.gate, m_site.limits.targetBytes);
    if (const auto* denial = std::get_if<Denial>(&result)) {
        refuse(*denial);
    } else {
        dispatch(std::get<Request>(std::move(result)), knownTags);
    }
}

void Connection::refuseUnreadable(error_code error)
{
    m_staysOpen = false;
    if (error.category() != make_error_code(http::error::bad_method).category() ||
        error == http::error::end_of_stream || error == http::error::partial_message) {
        close();  // it went, or took too long
    } else if (error == http::error::body_limit) {
        refuse({413, "The request is too large."});
    } else if (error == http::error::header_limit || error == http::error::buffer_overflow) {
        refuse({431, "The header of the request is too large."});
    } else {
        refuse({400, "This is no request as HTTP/1.1 has them."});
    }
}

void Connection::dispatch(Request&& request, const std::string& knownTags)
{
    const PageFile* file = pageFile(request.path);
    const auto token = request.query.find("token");
    const bool isEvents = request.path == "/api/events";
    if ((file != nullptr || isEvents) && request.method != "GET") {
        refuse({405, "This address can only be read."});
    } else if (m_site.gate.needsToken() && request.path == "/" && token != request.query.end()) {
        letIn(token->second);
    } else if (file != nullptr) {
        send(pageReply(*file, knownTags), file->content.size());
    } else if (isEvents) {
        openEvents();
    } else if (request.path.starts_with("/api/")) {
        work(std::move(request));
    } else {
        refuse({404, "There is nothing at this address."});
    }
}

// The token becomes a cookie, and leaves the address line; what stands behind a # stays there.
void Connection::letIn(const std::string& token)
{
    if (!m_site.gate.isToken(token)) {
        refuse({401, "This is not the token that recview printed."});
        return;
    }
    Reply reply = emptyReply(303);
    reply.set(http::field::location, "/");
    reply.set(http::field::set_cookie, m_site.gate.cookie());
    send(std::move(reply), 0);
}

void Connection::openEvents()
{
    if (m_site.streams.isFull()) {
        refuse({503, "Too many pages listen to events."});
        return;
    }
    Reply reply = emptyReply(200);
    reply.set(http::field::content_type, "text/event-stream");
    reply.keep_alive(false);
    if (m_isHead) {
        m_staysOpen = false;
        send(std::move(reply), 0);
        return;
    }
    std::ostringstream head;
    head << reply.base();
    m_site.streams.open(std::move(m_stream), head.str(), std::move(m_counted));
}

void Connection::work(Request&& request)
{
    if (m_site.unreadBytes > m_site.limits.unreadBytes) {
        refuse({503, "Too much waits to be read by others; try again."});
        return;
    }
    m_isWorking = true;
    auto job = [self = shared_from_this(), request = std::move(request)]() mutable {
        Response response;
        if (!self->m_isGone) {
            try {
                request.isGone = [&gone = self->m_isGone] { return gone.load(); };
                response = self->m_site.handler(request);
            } catch (const std::exception& error) {
                response = errorResponse(500, error.what());
            }
        }
        // Handed over: a connection ends in the thread of its context.
        auto& context = self->m_site.context;
        asio::post(context, [connection = std::move(self), response = std::move(response)]() mutable {
            connection->answer(std::move(response));
        });
    };
    if (m_site.workers.offer(std::move(job))) {
        watchForEnd();
    } else {
        m_isWorking = false;
        refuse({503, "Too many requests wait; try again."});
    }
}

// Whoever no longer wants an answer closes the connection: what still waits to be done for it need not be.
void Connection::watchForEnd()
{
    if (std::exchange(m_isWatched, true)) {
        return;
    }
    m_stream.socket().async_wait(asio::ip::tcp::socket::wait_read, [self = shared_from_this()](error_code error) {
        self->m_isWatched = false;
        if (error || !self->m_isWorking) {
            return;
        }
        error_code unknown;
        if (self->m_stream.socket().available(unknown) == 0) {
            self->m_isGone = true;
            self->close();
        }
    });
}

void Connection::answer(Response&& response)
{
    m_isWorking = false;
    if (m_isGone) {
        return;
    }
    Reply reply = headOf(response);
    if (response.more) {
        m_more = std::move(response.more);
        sendPieces(std::move(response));
        return;
    }
    reply.body() = std::move(response.body);
    const std::size_t length = reply.body().size();
    send(std::move(reply), length);
}

void Connection::refuse(const Denial& denial)
{
    answer(errorResponse(denial.status, denial.sentence));
}

void Connection::send(Reply&& reply, std::size_t length)
{
    m_reply.emplace(std::move(reply));
    m_reply->keep_alive(m_staysOpen);
    if (m_reply->result() != http::status::not_modified) {
        m_reply->content_length(length);
    }
    if (m_isHead) {
        m_reply->body().clear();
    }
    m_unread.emplace(m_site.unreadBytes, m_reply->body().size());
    m_serializer.emplace(*m_reply);
    writeRest();
}

void Connection::writeRest()
{
    m_stream.expires_after(m_site.limits.stallTime);
    http::async_write_some(m_stream, *m_serializer,
                           [self = shared_from_this()](error_code error, std::size_t /*bytes*/) {
                               if (error) {
                                   self->close();
                               } else if (self->m_serializer->is_done()) {
                                   self->finish();
                               } else {
                                   self->writeRest();
                               }
                           });
}

void Connection::sendPieces(Response&& response)
{
    m_piece = std::move(response.body);
    m_reply.emplace(headOf(response));
    m_staysOpen = m_staysOpen && !m_isOld;
    m_reply->keep_alive(m_staysOpen);
    if (!m_isOld) {
        m_reply->chunked(true);
    }
    m_serializer.emplace(*m_reply);
    m_stream.expires_after(m_site.limits.stallTime);
    http::async_write_header(m_stream, *m_serializer,
                             [self = shared_from_this()](error_code error, std::size_t /*bytes*/) {
                                 if (error) {
                                     self->close();
                                 } else if (self->m_isHead) {
                                     self->finish();
                                 } else {
                                     self->writePiece(false);
                                 }
                             });
}

void Connection::askForPiece()
{
    m_isWorking = true;
    m_site.workers.goOn([self = shared_from_this()]() mutable {
        bool isLast = true;
        bool hasFailed = self->m_isGone;
        try {
            self->m_piece.clear();
            isLast = hasFailed || !self->m_more(self->m_piece);
        } catch (const std::exception&) {
            hasFailed = true;  // cut short, which the reader sees by the missing last chunk
        }
        auto& context = self->m_site.context;
        asio::post(context, [connection = std::move(self), isLast, hasFailed] {
            connection->m_isWorking = false;
            hasFailed ? connection->close() : connection->writePiece(isLast);
        });
    });
    watchForEnd();
}

void Connection::writePiece(bool isLast)
{
    auto written = [self = shared_from_this(), isLast](error_code error, std::size_t /*bytes*/) {
        if (error) {
            self->close();
        } else if (isLast) {
            self->writeEnd();
        } else {
            self->askForPiece();
        }
    };
    m_unread.emplace(m_site.unreadBytes, m_piece.size());
    m_stream.expires_after(m_site.limits.stallTime);
    if (m_piece.empty()) {
        written({}, 0);  // an empty chunk would be the last one
    } else if (m_isOld) {
        asio::async_write(m_stream, asio::buffer(m_piece), std::move(written));
    } else {
        asio::async_write(m_stream, http::make_chunk(asio::const_buffer(m_piece.data(), m_piece.size())),
                          std::move(written));
    }
}

void Connection::writeEnd()
{
    if (m_isOld) {
        finish();
        return;
    }
    m_stream.expires_after(m_site.limits.stallTime);
    asio::async_write(m_stream, http::make_chunk_last(),
                      [self = shared_from_this()](error_code error, std::size_t /*bytes*/) {
                          error ? self->close() : self->finish();
                      });
}

void Connection::finish()
{
    m_serializer.reset();
    m_reply.reset();
    m_unread.reset();
    m_more = nullptr;
    m_piece.clear();
    m_staysOpen ? awaitRequest() : linger();
}

// Closed at once, what was sent may be lost on its way where something that was not read has come in.
void Connection::linger()
{
    error_code error;
    m_stream.socket().shutdown(asio::ip::tcp::socket::shutdown_send, error);
    m_buffer.clear();
    m_stream.expires_after(m_site.limits.lingerTime);
    error ? close() : drain();
}

void Connection::drain()
{
    constexpr std::size_t Most = std::size_t{1024} * 1024;
    m_stream.async_read_some(m_buffer.prepare(ReadBytes),
                             [self = shared_from_this()](error_code error, std::size_t bytes) {
                                 self->m_drained += bytes;
                                 error || self->m_drained > Most ? self->close() : self->drain();
                             });
}

void Connection::close()
{
    m_isGone = true;
    m_stream.close();
}

}  // namespace RecView
