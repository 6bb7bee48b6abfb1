// The recording of a self-check: a station whose every step is known beforehand, and the real recorder.
#pragma once

#include <cstdint>
#include <string>

namespace RecTool::SelfCheck {

/// Steps of the longest run: about 20 MB of records.
constexpr std::uint64_t Steps = 80'000;

/// What the process of a run does: records a record a step, the same in every run, until it is killed, all steps are
/// done or writing fails, and notes in the folder's ledger what was accepted. After the last step it waits for the end
/// of its standard input.
/// @param limitBytes no file may grow past it; 0: no limit
/// @return whether it could record
bool recordForSelfCheck(const std::string& folder, std::uint64_t limitBytes);

/// Name of the ledger in the folder.
constexpr const char* LedgerName = "ledger";

}  // namespace RecTool::SelfCheck
