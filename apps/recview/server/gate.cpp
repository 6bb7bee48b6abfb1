// Host, Origin, fetch metadata and token; secrets of the system's random numbers.
#include "gate.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include <QByteArray>
#include <QRandomGenerator>

namespace RecView {

namespace {

std::string lowered(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return result;
}

std::string asHost(const std::string& address)
{
    return address.find(':') == std::string::npos ? address : '[' + address + ']';
}

// In numbers: a name may lead anywhere, today here and tomorrow elsewhere.
bool isAddress(std::string_view host)
{
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
        return host.find_first_not_of("0123456789abcdef:.") == std::string_view::npos;
    }
    return !host.empty() && host.find_first_not_of("0123456789.") == std::string_view::npos;
}

constexpr std::string_view Scheme = "http://";

}  // namespace

std::string newSecret()
{
    std::array<std::uint32_t, 6> numbers{};
    QRandomGenerator::system()->fillRange(numbers.data(), static_cast<qsizetype>(numbers.size()));
    const QByteArray bytes(reinterpret_cast<const char*>(numbers.data()), static_cast<int>(sizeof numbers));
    return bytes.toBase64(QByteArray::Base64UrlEncoding).toStdString();
}

bool isSameSecret(std::string_view a, std::string_view b)
{
    if (a.size() != b.size()) {
        return false;
    }
    unsigned int difference = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        difference |= static_cast<unsigned char>(a[i]) ^ static_cast<unsigned int>(static_cast<unsigned char>(b[i]));
    }
    return difference == 0;
}

Gate::Gate(const std::string& address, std::uint16_t port, std::string token)
    : m_port(':' + std::to_string(port)),
      m_anyAddress(address == "0.0.0.0" || address == "::"),
      m_token(std::move(token)),
      m_cookieName("recview-" + std::to_string(port)),  // cookies do not tell ports apart
      m_cookieValue(m_token.empty() ? std::string() : newSecret())
{
    constexpr std::uint16_t UsualPort = 80;
    for (const std::string& name :
         {asHost(address), std::string("127.0.0.1"), std::string("localhost"), std::string("[::1]")}) {
        m_hosts.push_back(lowered(name) + m_port);
        if (port == UsualPort) {
            m_hosts.push_back(lowered(name));
        }
    }
}

std::optional<Denial> Gate::denial(std::string_view method, std::string_view path, const Credentials& credentials) const
{
    constexpr int BadRequest = 400;
    constexpr int Unauthorized = 401;
    constexpr int Forbidden = 403;
    if (credentials.hosts.size() != 1) {
        return Denial{BadRequest, "A request names its host once."};
    }
    if (!isOwnHost(credentials.hosts.front())) {
        return Denial{Forbidden, "This is not the host that was asked for; use the address that recview printed."};
    }
    const bool isApi = path.starts_with("/api/");
    const bool isOwnSite = !credentials.fetchSite || *credentials.fetchSite == "same-origin" ||
                           (*credentials.fetchSite == "none" && method != "POST");  // typed by the user
    if ((credentials.origin && !isOwnOrigin(*credentials.origin)) || (isApi && !isOwnSite)) {
        return Denial{Forbidden, "Pages from elsewhere may not ask here."};
    }
    if (method == "POST" && !credentials.origin) {
        return Denial{Forbidden, "A request that changes something tells its origin."};
    }
    if (isApi && !m_token.empty() && !hasCookie(credentials.cookies)) {
        return Denial{Unauthorized, "Open the whole address that recview printed, with its token, first."};
    }
    return std::nullopt;
}

bool Gate::isToken(std::string_view text) const
{
    return !m_token.empty() && isSameSecret(text, m_token);
}

std::string Gate::cookie() const
{
    return m_cookieName + '=' + m_cookieValue + "; Path=/; HttpOnly; SameSite=Strict";
}

bool Gate::isOwnHost(std::string_view host) const
{
    const std::string name = lowered(host);
    if (std::find(m_hosts.begin(), m_hosts.end(), name) != m_hosts.end()) {
        return true;
    }
    return m_anyAddress && name.ends_with(m_port) &&
           isAddress(std::string_view(name).substr(0, name.size() - m_port.size()));
}

bool Gate::isOwnOrigin(std::string_view origin) const
{
    return origin.starts_with(Scheme) && isOwnHost(origin.substr(Scheme.size()));
}

bool Gate::hasCookie(std::string_view cookies) const
{
    while (!cookies.empty()) {
        const std::size_t end = cookies.find(';');
        std::string_view pair = cookies.substr(0, end);
        pair.remove_prefix(std::min(pair.find_first_not_of(' '), pair.size()));
        const std::size_t equals = pair.find('=');
        if (equals != std::string_view::npos && pair.substr(0, equals) == m_cookieName &&
            isSameSecret(pair.substr(equals + 1), m_cookieValue)) {
            return true;
        }
        cookies = end == std::string_view::npos ? std::string_view() : cookies.substr(end + 1);
    }
    return false;
}

}  // namespace RecView
