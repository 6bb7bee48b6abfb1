// Addresses, with IPv6 in brackets; sockets whose every wait the wish to stop ends, names looked up in a thread that
// may be left behind.
#include "live/connection.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <limits>
#include <memory>
#include <system_error>
#include <thread>

#include <system/stopsignal.h>

#include "input/fields.h"

namespace RecStation {

namespace {

using Addresses = std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)>;

std::string reason(int error)
{
    return std::generic_category().message(error);
}

std::string secondsOf(std::chrono::milliseconds patience)
{
    constexpr long long PerSecond = 1000;
    return std::to_string(patience.count() / PerSecond) + " s";
}

// Rounded up, so that a wait does not end before its time.
int millisecondsTo(Deadline deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, std::numeric_limits<int>::max()));
}

// False when the deadline passed before.
bool waitFor(int descriptor, short events, Deadline deadline)
{
    std::array<pollfd, 2> waits = {{{descriptor, events, 0}, {System::StopSignal::wakeDescriptor(), POLLIN, 0}}};
    for (;;) {
        if (System::StopSignal::requested()) {
            throw Stopped();
        }
        const int left = millisecondsTo(deadline);
        const int ready = ::poll(waits.data(), waits.size(), left);
        if (ready < 0 && errno != EINTR) {
            throw ConnectionError("cannot wait for it: " + reason(errno));
        }
        if (ready > 0 && waits[1].revents == 0) {
            return true;
        }
        if (ready == 0 && left == 0) {
            return false;
        }
    }
}

/// What a thread that looks a name up leaves behind. Shared with it, as nothing can end it before the system's answer.
class Lookup {
public:
    Lookup()
    {
        if (::pipe2(m_done.data(), O_CLOEXEC) != 0) {
            throw ConnectionError("cannot look its name up: " + reason(errno));
        }
    }
    Lookup(const Lookup&) = delete;
    Lookup& operator=(const Lookup&) = delete;
    ~Lookup()
    {
        ::close(m_done[0]);
        ::close(m_done[1]);
    }

    void run(const Address& address, int flags)
    {
        addrinfo hints{};
        hints.ai_socktype = SOCK_STREAM;
        hints.ai_flags = flags;
        addrinfo* found = nullptr;
        m_error = ::getaddrinfo(address.host.c_str(), std::to_string(address.port).c_str(), &hints, &found);
        m_found.reset(found);
        const char byte = 'd';
        [[maybe_unused]] const ssize_t written = ::write(m_done[1], &byte, 1);
    }
    [[nodiscard]] int doneDescriptor() const { return m_done[0]; }
    [[nodiscard]] int error() const { return m_error; }
    [[nodiscard]] Addresses take() { return std::move(m_found); }

private:
    std::array<int, 2> m_done = {-1, -1};
    int m_error = 0;
    Addresses m_found{nullptr, &::freeaddrinfo};
};

Addresses lookUp(const Address& address, Deadline deadline)
{
    const auto lookup = std::make_shared<Lookup>();
    lookup->run(address, AI_NUMERICHOST | AI_NUMERICSERV);
    if (lookup->error() == 0) {
        return lookup->take();
    }
    const auto asked = std::make_shared<Lookup>();
    std::thread([asked, address] { asked->run(address, AI_NUMERICSERV | AI_ADDRCONFIG); }).detach();
    if (!waitFor(asked->doneDescriptor(), POLLIN, deadline)) {
        throw ConnectionError("cannot find the host " + address.host + ": no answer to its name");
    }
    if (asked->error() != 0) {
        throw ConnectionError("cannot find the host " + address.host + ": " + ::gai_strerror(asked->error()));
    }
    return asked->take();
}

// The error that kept it from connecting, 0 when it is.
int connectSocket(int handle, const addrinfo& to, Deadline deadline)
{
    if (::connect(handle, to.ai_addr, to.ai_addrlen) == 0) {
        return 0;
    }
    if (errno != EINPROGRESS) {
        return errno;
    }
    if (!waitFor(handle, POLLOUT, deadline)) {
        return ETIMEDOUT;
    }
    int error = 0;
    socklen_t size = sizeof(error);
    return ::getsockopt(handle, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

[[noreturn]] void failDatagrams(const char* what)
{
    throw ConnectionError(std::string(what) + ": " + reason(errno));
}

bool isHost(std::string_view text)
{
    constexpr std::size_t Longest = 253;
    return !text.empty() && text.size() <= Longest &&
           text.find_first_not_of("0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ.-_:%") ==
               std::string_view::npos;
}

}  // namespace

std::optional<Address> parseAddress(std::string_view text, std::uint16_t defaultPort)
{
    std::string_view host = text;
    std::string_view port;
    bool hasPort = false;
    if (text.starts_with('[')) {
        const std::size_t bracket = text.find(']');
        if (bracket == std::string_view::npos) {
            return std::nullopt;
        }
        host = text.substr(1, bracket - 1);
        port = text.substr(bracket + 1);
        hasPort = !port.empty();
        if (hasPort && !port.starts_with(':')) {
            return std::nullopt;
        }
        port.remove_prefix(hasPort ? 1 : 0);
    } else if (const std::size_t colon = text.find(':'); colon != std::string_view::npos && colon == text.rfind(':')) {
        host = text.substr(0, colon);
        port = text.substr(colon + 1);
        hasPort = true;
    }
    const auto number = hasPort ? parseNumber<std::uint16_t>(port) : std::optional(defaultPort);
    return isHost(host) && number && *number != 0 ? std::optional(Address{std::string(host), *number}) : std::nullopt;
}

std::string addressText(const Address& address)
{
    const bool brackets = address.host.find(':') != std::string::npos;
    return (brackets ? "[" + address.host + "]" : address.host) + ":" + std::to_string(address.port);
}

Deadline in(std::chrono::milliseconds time)
{
    return std::chrono::steady_clock::now() + time;
}

bool waitToRead(int descriptor, Deadline deadline)
{
    return waitFor(descriptor, POLLIN, deadline);
}

void pauseUntil(Deadline deadline)
{
    static_cast<void>(waitFor(-1, 0, deadline));
}

void Connection::open(const Address& address, std::chrono::milliseconds patience)
{
    close();
    const Deadline deadline = in(patience);
    const Addresses found = lookUp(address, deadline);
    int error = EHOSTUNREACH;
    try {
        for (const addrinfo* to = found.get(); to != nullptr && m_socket < 0; to = to->ai_next) {
            m_socket = ::socket(to->ai_family, to->ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, to->ai_protocol);
            error = m_socket < 0 ? errno : connectSocket(m_socket, *to, deadline);
            if (error != 0) {
                close();
            }
        }
    } catch (...) {
        close();
        throw;
    }
    if (m_socket < 0) {
        throw ConnectionError("cannot connect: " + reason(error));
    }
    // Requests are small, and wait for their answers.
    const int on = 1;
    static_cast<void>(::setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on)));
    // A peer whose machine lost its power is noticed although nothing is sent to it.
    static_cast<void>(::setsockopt(m_socket, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof(on)));
    const int idleSeconds = 10;
    const int tries = 3;
    static_cast<void>(::setsockopt(m_socket, IPPROTO_TCP, TCP_KEEPIDLE, &idleSeconds, sizeof(idleSeconds)));
    static_cast<void>(::setsockopt(m_socket, IPPROTO_TCP, TCP_KEEPINTVL, &idleSeconds, sizeof(idleSeconds)));
    static_cast<void>(::setsockopt(m_socket, IPPROTO_TCP, TCP_KEEPCNT, &tries, sizeof(tries)));
}

void Connection::close() noexcept
{
    if (m_socket >= 0) {
        ::close(m_socket);
        m_socket = -1;
    }
}

void Connection::send(std::string_view bytes, std::chrono::milliseconds patience)
{
    const Deadline deadline = in(patience);
    while (!bytes.empty()) {
        const ssize_t count = ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EAGAIN && errno != EINTR) {
            throw ConnectionError("connection lost: " + reason(errno));
        } else if (!waitFor(m_socket, POLLOUT, deadline)) {
            throw ConnectionError("connection lost: it has taken nothing for " + secondsOf(patience));
        }
    }
}

std::size_t Connection::read(char* buffer, std::size_t size, Deadline deadline)
{
    for (;;) {
        if (System::StopSignal::requested()) {
            throw Stopped();
        }
        const ssize_t count = ::recv(m_socket, buffer, size, 0);
        if (count > 0) {
            return static_cast<std::size_t>(count);
        }
        if (count == 0) {
            throw ConnectionError("connection lost: the peer closed it");
        }
        if (errno != EAGAIN && errno != EINTR) {
            throw ConnectionError("connection lost: " + reason(errno));
        }
        // A peer that sends an answer in pieces waits for ours to each of them, which the system would hold back for
        // 40 ms. It forgets the wish with every answer.
        const int on = 1;
        static_cast<void>(::setsockopt(m_socket, IPPROTO_TCP, TCP_QUICKACK, &on, sizeof(on)));
        if (!waitFor(m_socket, POLLIN, deadline)) {
            return 0;
        }
    }
}

void Datagrams::open(const Address& address)
{
    close();
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(address.port);
    if (::inet_pton(AF_INET, address.host.c_str(), &to.sin_addr) != 1) {
        throw ConnectionError("the address " + address.host + " is none of IPv4");
    }
    m_socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (m_socket < 0) {
        failDatagrams("cannot receive packets");
    }
    const int on = 1;  // others may listen to the group too
    static_cast<void>(::setsockopt(m_socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on)));
    // The system's interface takes addresses of every family by this type.
    if (::bind(m_socket, reinterpret_cast<const sockaddr*>(&to), sizeof(to)) != 0) {
        const int error = errno;
        close();
        errno = error;
        failDatagrams("cannot receive packets there");
    }
    if (IN_MULTICAST(ntohl(to.sin_addr.s_addr))) {
        join(to.sin_addr.s_addr);
    }
}

// Which interface the peer sends from is not known, and the loopback has no route of its own.
void Datagrams::join(unsigned int group) const
{
    struct FreeNames {
        void operator()(struct if_nameindex* names) const { ::if_freenameindex(names); }
    };
    const std::unique_ptr<struct if_nameindex, FreeNames> interfaces(::if_nameindex());
    bool joined = false;
    for (const struct if_nameindex* one = interfaces.get(); one != nullptr && one->if_index != 0; ++one) {
        ip_mreqn request{};
        request.imr_multiaddr.s_addr = group;
        request.imr_ifindex = static_cast<int>(one->if_index);
        joined = ::setsockopt(m_socket, IPPROTO_IP, IP_ADD_MEMBERSHIP, &request, sizeof(request)) == 0 || joined;
    }
    if (!joined) {
        failDatagrams("cannot join the multicast group");
    }
}

void Datagrams::close() noexcept
{
    if (m_socket >= 0) {
        ::close(m_socket);
        m_socket = -1;
    }
}

std::string_view Datagrams::read(Deadline deadline)
{
    constexpr std::size_t Largest = 65'536;
    m_buffer.resize(Largest);
    for (;;) {
        if (!waitToRead(m_socket, deadline)) {
            return {};
        }
        const ssize_t count = ::recv(m_socket, m_buffer.data(), m_buffer.size(), 0);
        if (count > 0) {
            return {m_buffer.data(), static_cast<std::size_t>(count)};
        }
        if (count < 0 && errno != EAGAIN && errno != EINTR) {
            failDatagrams("cannot receive packets");
        }
    }
}

}  // namespace RecStation
