// How much one who asks may ask for, and how long it may take.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace RecView {

struct Limits {
    std::uint32_t headerBytes = 16 * 1024;
    std::uint64_t bodyBytes = std::uint64_t{64} * 1024;
    std::size_t targetBytes = std::size_t{8} * 1024;
    std::size_t connections = 256;
    std::size_t eventStreams = 64;
    std::size_t waitingRequests = 64;                          ///< until a worker takes them
    std::size_t unreadBytes = std::size_t{256} * 1024 * 1024;  ///< of all responses together that wait to be read
    std::size_t unreadEventBytes = std::size_t{256} * 1024;    ///< of one stream
    std::chrono::milliseconds requestTime{10'000};             ///< for a request to arrive
    std::chrono::milliseconds idleTime{60'000};                ///< between requests of one connection
    std::chrono::milliseconds stallTime{20'000};               ///< in which a reader takes nothing
    std::chrono::milliseconds lingerTime{1'000};               ///< for a reader to see the last response
    std::chrono::milliseconds eventPause{15'000};              ///< after which a stream of events tells that it lives
};

}  // namespace RecView
