// A socket for datagrams, and joining a group wherever it may come from.
#include "live/datagrams.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <system_error>

namespace RecStation {

namespace {

[[noreturn]] void failDatagrams(const char* what)
{
    throw ConnectionError(std::string(what) + ": " + std::generic_category().message(errno));
}

}  // namespace

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
