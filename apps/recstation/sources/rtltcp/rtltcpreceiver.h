// A receiver behind an rtl_tcp server.
#pragma once

#include <memory>

#include "iqspectra/receiver.h"
#include "live/address.h"

namespace RecStation {

constexpr double RtlTcpHighestHz = 4'294'967'295.0;  ///< of rate and frequency, which the protocol has 32 bits for

struct RtlTcpOptions : ReceiverOptions {
    Address address;
};

/// The source "rtltcp". @throws UsageError when options do not go together
[[nodiscard]] std::unique_ptr<Source> makeRtlTcpSource(const RtlTcpOptions& options, const SourceRun& run);

}  // namespace RecStation
