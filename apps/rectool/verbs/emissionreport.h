// How emissions are printed: as a table, as CSV, as JSON and as GeoJSON.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "analysis/emissions.h"

namespace RecTool {

void printEmissions(const EmissionsOptions& options, const Recordings& recordings, const std::vector<Spectrum>& spectra,
                    const FoundEmissions& found);

/// What is printed with --json.
void writeEmissionsJson(const EmissionsOptions& options, const Recordings& recordings,
                        const std::vector<Spectrum>& spectra, const FoundEmissions& found, std::ostream& out);

/// Those with a position, one feature a line. @return how many have none
std::size_t writeEmissionFeatures(const EmissionsOptions& options, const Recordings& recordings,
                                  const std::vector<Spectrum>& spectra, const FoundEmissions& found,
                                  const std::function<void(const std::string&)>& write);

}  // namespace RecTool
