// Checks of a request, from the form of its line to who sent it.
#include "incoming.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <boost/beast/http/rfc7230.hpp>

#include "target.h"

namespace RecView {

namespace {

namespace http = boost::beast::http;

std::string textOf(boost::beast::string_view text)
{
    return {text.data(), text.size()};
}

std::optional<std::string> fieldOf(const Incoming& incoming, boost::beast::string_view name)
{
    const auto found = incoming.find(name);
    return found == incoming.end() ? std::nullopt : std::optional(textOf(found->value()));
}

Credentials credentialsOf(const Incoming& incoming)
{
    Credentials credentials;
    const auto [first, last] = incoming.equal_range(http::field::host);
    for (auto host = first; host != last; ++host) {
        credentials.hosts.push_back(textOf(host->value()));
    }
    credentials.origin = fieldOf(incoming, "Origin");
    credentials.fetchSite = fieldOf(incoming, "Sec-Fetch-Site");
    credentials.cookies = fieldOf(incoming, "Cookie").value_or("");
    return credentials;
}

std::optional<Denial> wrongForm(const Incoming& incoming, std::size_t targetBytes)
{
    if (incoming.target().size() > targetBytes) {
        return Denial{414, "The address is too long."};
    }
    if (incoming.count(http::field::content_length) > 0 && incoming.count(http::field::transfer_encoding) > 0) {
        return Denial{400, "The length of the request is told in two ways."};
    }
    const http::verb method = incoming.method();
    if (method != http::verb::get && method != http::verb::head && method != http::verb::post) {
        return Denial{405, "Only GET, HEAD and POST are understood."};
    }
    return std::nullopt;
}

}  // namespace

std::variant<Request, Denial> judged(Incoming&& incoming, const Gate& gate, std::size_t targetBytes)
{
    if (auto denial = wrongForm(incoming, targetBytes)) {
        return *denial;
    }
    std::string problem;
    auto target = decodeTarget(std::string_view(incoming.target().data(), incoming.target().size()), problem);
    if (!target) {
        return Denial{400, problem};
    }
    Request request{
        incoming.method() == http::verb::post ? "POST" : "GET", std::move(target->path), std::move(target->query), {}};
    if (auto denial = gate.denial(request.method, request.path, credentialsOf(incoming))) {
        return *denial;
    }
    request.body = std::move(incoming.body());
    return request;
}

}  // namespace RecView
