// The options that every receiver has.
#pragma once

#include "iqspectra/receiver.h"

namespace CLI {
class App;
}

namespace RecStation {

/// --centre, --rate, --gain, --hop, --dwell, and those of spectra
void addReceiverOptions(CLI::App& command, ReceiverOptions& options);

}  // namespace RecStation
