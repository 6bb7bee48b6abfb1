// Asking rigctld for what its receiver is set to and measures.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "live/lines.h"
#include "live/retry.h"
#include "sources/rig/rigreply.h"
#include "sources/rig/rigvalues.h"

namespace RecStation {

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
