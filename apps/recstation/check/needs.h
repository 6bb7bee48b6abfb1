// What a recorder would record of the tree, and what its recordings need besides.
#pragma once

#include "check/findings.h"
#include "configuration.h"

namespace RecStation {

/// Fills keywords and lacks, from the tree in force.
/// @param receives a source measures what receivers do; otherwise a recording may do without frequencies
void findKeywords(FoundRecorder& found, const Instance& instance, bool receives);

}  // namespace RecStation
