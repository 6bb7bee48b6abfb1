// Making responses.
#include "reply.h"

#include <QByteArray>
#include <QRegularExpression>
#include <QString>

namespace RecView {

namespace {

namespace http = boost::beast::http;

constexpr const char* Policy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; connect-src 'self'; "
    "frame-ancestors 'none'; base-uri 'none'; form-action 'none'";

// In quotes for programs that know nothing else, and with every byte for the others.
std::string attachment(const std::string& name)
{
    const QString escaped = QString::fromLatin1(QByteArray::fromStdString(name).toPercentEncoding({}, "~"));
    QString simple = escaped;
    simple.replace(QRegularExpression(QStringLiteral("%..")), QStringLiteral("_"));
    return QStringLiteral("attachment; filename=\"%1\"; filename*=UTF-8''%2").arg(simple, escaped).toStdString();
}

}  // namespace

Reply emptyReply(int status)
{
    constexpr unsigned int Version = 11;
    constexpr int MethodNotAllowed = 405;
    Reply reply(static_cast<http::status>(status), Version);
    reply.set("Content-Security-Policy", Policy);
    reply.set("X-Content-Type-Options", "nosniff");
    reply.set("Referrer-Policy", "no-referrer");
    reply.set("Cross-Origin-Resource-Policy", "same-origin");
    reply.set("Cross-Origin-Opener-Policy", "same-origin");
    reply.set(http::field::cache_control, "no-store");
    if (status == MethodNotAllowed) {
        reply.set(http::field::allow, "GET, HEAD, POST");
    }
    return reply;
}

Reply headOf(const Response& response)
{
    Reply reply = emptyReply(response.status);
    reply.set(http::field::content_type, response.type);
    if (!response.fileName.empty()) {
        reply.set(http::field::content_disposition, attachment(response.fileName));
    }
    return reply;
}

Reply pageReply(const PageFile& file, std::string_view knownTags)
{
    constexpr int Ok = 200;
    constexpr int NotModified = 304;
    const bool isKnown = knownTags.find(file.tag) != std::string_view::npos;
    Reply reply = emptyReply(isKnown ? NotModified : Ok);
    reply.set(http::field::cache_control, "no-cache");
    reply.set(http::field::etag, file.tag);
    reply.set(http::field::content_type, file.type);
    if (!isKnown) {
        reply.body() = file.content;
    }
    return reply;
}

}  // namespace RecView
