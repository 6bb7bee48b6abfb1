// Datagrams that a peer sends to a multicast group, or to this machine. Linux only.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "live/address.h"
#include "live/connection.h"

namespace RecStation {

/// One thread at a time. Waits end as those of Connection.
class Datagrams {
public:
    Datagrams() = default;
    Datagrams(const Datagrams&) = delete;
    Datagrams& operator=(const Datagrams&) = delete;
    ~Datagrams() { close(); }

    /// @param address of IPv4 in digits; of a group, it is joined on every interface that can
    /// @throws ConnectionError
    void open(const Address& address);
    void close() noexcept;
    /// Waits for the next. It is good until the next call. @return empty when the deadline passed before
    /// @throws ConnectionError
    [[nodiscard]] std::string_view read(Deadline deadline);

private:
    void join(unsigned int group) const;

    int m_socket = -1;
    std::string m_buffer;
};

}  // namespace RecStation
