// Who may ask: decided by what a request says of where it comes from, before anything is done for it. And the random
// texts that only those know who were told.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace RecView {

/// 192 bits of the system's randomness, as letters, digits, "-" and "_".
[[nodiscard]] std::string newSecret();
/// Takes as long wherever the texts differ.
[[nodiscard]] bool isSameSecret(std::string_view a, std::string_view b);

/// Fields of a request's header as they were sent; nothing: not sent. Of Host all.
struct Credentials {
    std::vector<std::string> hosts;
    std::optional<std::string> origin;
    std::optional<std::string> fetchSite;  ///< Sec-Fetch-Site, which pages cannot forge
    std::string cookies;
};

struct Denial {
    int status = 0;
    std::string sentence;
};

/// A page from elsewhere can make the user's browser send requests here, also under a name of its own that it lets lead
/// here. Its requests tell that name as their host, and where they come from.
class Gate {
public:
    /// @param address a numeric one, on which is listened
    /// @param token empty: nobody needs one
    Gate(const std::string& address, std::uint16_t port, std::string token);

    /// Nothing where the request may pass.
    [[nodiscard]] std::optional<Denial> denial(std::string_view method, std::string_view path,
                                               const Credentials& credentials) const;
    [[nodiscard]] bool needsToken() const { return !m_token.empty(); }
    [[nodiscard]] bool isToken(std::string_view text) const;
    /// What a browser that showed the token is given, as the value of Set-Cookie.
    [[nodiscard]] std::string cookie() const;

private:
    [[nodiscard]] bool isOwnHost(std::string_view host) const;
    [[nodiscard]] bool isOwnOrigin(std::string_view origin) const;
    [[nodiscard]] bool hasCookie(std::string_view cookies) const;

    std::vector<std::string> m_hosts;
    std::string m_port;  // ":8080"
    bool m_anyAddress;   // listens on all of the machine
    std::string m_token;
    std::string m_cookieName;
    std::string m_cookieValue;
};

}  // namespace RecView
