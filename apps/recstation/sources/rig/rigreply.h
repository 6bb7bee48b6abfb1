// What rigctld answers to a command of its extended protocol.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "live/connection.h"

namespace RecStation {

struct RigReply {
    /// What follows the line with the command's name, up to the code: "-38" of "-38" and of "Level Value: -38".
    std::vector<std::string> values;
    int code = 0;  ///< 0, or why there are no values

    [[nodiscard]] std::string_view value(std::size_t index) const
    {
        return index < values.size() ? std::string_view(values[index]) : std::string_view();
    }
};

/// Takes the lines of one answer:
///     get_mode:
///     Mode: USB
///     Passband: 2400
///     RPRT 0
class RigReplyReader {
public:
    static constexpr std::size_t LongestLine = 1024;
    static constexpr std::size_t MostLines = 64;

    /// @param command its long name, "get_mode"
    explicit RigReplyReader(std::string command) : m_command(std::move(command)) {}

    /// @return the answer with its last line @throws ConnectionError when it is no answer of rigctld's
    [[nodiscard]] std::optional<RigReply> take(std::string_view line);

private:
    std::string m_command;
    RigReply m_reply;
    std::size_t m_lines = 0;
    bool m_begun = false;
};

/// Codes that say that the receiver has no such value, so that there is no use in asking again.
[[nodiscard]] bool isNotOffered(int code);
/// "it has no such feature", as Hamlib explains its codes.
[[nodiscard]] std::string rigErrorText(int code);

/// Hertz; 0 and what no receiver can be tuned to are nothing.
[[nodiscard]] std::optional<double> parseRigHertz(std::string_view text);
/// Strength in dB over S9.
[[nodiscard]] std::optional<double> parseRigStrength(std::string_view text);
/// A mode's name, such as "USB".
[[nodiscard]] std::optional<std::string> parseRigMode(std::string_view text);
/// Of the answer to chk_vfo, "ChkVFO: 1": whether commands have to name a VFO.
[[nodiscard]] std::optional<bool> parseVfoMode(std::string_view line);

}  // namespace RecStation
