// Asking rigctld for what its receiver is set to and measures, and what it answers to a command of its extended
// protocol.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "live/lines.h"
#include "live/retry.h"
#include "sources/rig/rigvalues.h"

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

/// In the thread of a source. Waits for each answer at most for 5 seconds.
class RigClient {
public:
    using Say = std::function<void(const std::string& clause)>;

    /// @param s9Dbm what S9 is in dBm; nothing: strengths are dB over S9
    RigClient(Address address, std::optional<double> s9Dbm, Say say);

    /// @throws ConnectionError, Stopped
    void connect();
    void disconnect() noexcept { m_connection.close(); }
    /// Asks once for everything that the receiver offers. What it does not tell now is unknown in the answers.
    /// @throws as connect
    [[nodiscard]] RigAnswers ask();

    [[nodiscard]] std::uint64_t used() const { return m_used; }  ///< answers that told something
    [[nodiscard]] std::uint64_t lost() const
    {
        return m_lost + m_connection.tooLong();
    }  ///< answers that did not, and overlong lines

private:
    /// One command, and what became of it.
    struct Question {
        const char* shortName;
        const char* longName;
        const char* argument;
        const char* what;
        bool offered = true;
        bool failing = false;
        bool told = false;     // that it fails
        bool leftOut = false;  // and that was told
    };

    void sendQuestions();
    [[nodiscard]] std::string_view line(Deadline deadline);
    [[nodiscard]] RigReply reply(const Question& question);
    void take(Question& question, const RigReply& reply, RigAnswers& answers);
    [[nodiscard]] bool setAnswer(const Question& question, const RigReply& reply, RigAnswers& answers) const;
    [[nodiscard]] bool needsVfo();

    Address m_address;
    std::optional<double> m_s9Dbm;
    Say m_say;
    LineConnection m_connection{RigReplyReader::LongestLine};
    std::array<Question, 3> m_questions;
    TellRate m_tellRate;  // of failures
    bool m_vfo = false;
    std::uint64_t m_used = 0;
    std::uint64_t m_lost = 0;
};

}  // namespace RecStation
