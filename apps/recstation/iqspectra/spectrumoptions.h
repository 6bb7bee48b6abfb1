// The options of how samples become spectra, which every source of samples has.
#pragma once

#include "iqspectra/spectrumplan.h"

namespace CLI {
class App;
}

namespace RecStation {

/// --fft, --window, --overlap, --average, --as
void addSpectrumOptions(CLI::App& command, SpectrumOptions& options);

}  // namespace RecStation
