// One connection: requests one after the other, and their responses.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/serializer.hpp>

#include "incoming.h"
#include "reply.h"
#include "site.h"

namespace RecView {

/// Lives until nothing more is read or written. Belongs to the thread of the context, but for what its jobs do.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    /// @param counted given up with the connection
    Connection(boost::asio::ip::tcp::socket&& socket, Site& site, std::shared_ptr<Counted> counted);

    void begin() { awaitRequest(); }
    /// Says that there are too many, and ends.
    void turnAway();

private:
    void awaitRequest();
    void readRequest();
    void onRead(boost::beast::error_code error);
    void refuseUnreadable(boost::beast::error_code error);
    void dispatch(Request&& request, const std::string& knownTags);
    void letIn(const std::string& token);
    void openEvents();
    void work(Request&& request);
    void watchForEnd();
    void answer(Response&& response);
    void refuse(const Denial& denial);
    void send(Reply&& reply, std::size_t length);
    void writeRest();
    void sendPieces(Response&& response);
    void askForPiece();
    void writePiece(bool isLast);
    void writeEnd();
    void finish();
    void linger();
    void drain();
    void close();

    Site& m_site;
    boost::beast::tcp_stream m_stream;
    std::shared_ptr<Counted> m_counted;
    boost::beast::flat_buffer m_buffer;
    std::optional<boost::beast::http::request_parser<boost::beast::http::string_body>> m_parser;
    std::optional<Reply> m_reply;
    std::optional<boost::beast::http::response_serializer<boost::beast::http::string_body>> m_serializer;
    std::optional<Counted> m_unread;
    std::function<bool(std::string&)> m_more;
    std::string m_piece;
    std::size_t m_drained = 0;
    bool m_isHead = false;
    bool m_isOld = false;  // HTTP/1.0, which has no chunks
    bool m_staysOpen = false;
    bool m_isWatched = false;
    std::atomic<bool> m_isWorking = false;
    std::atomic<bool> m_isGone = false;
};

}  // namespace RecView
