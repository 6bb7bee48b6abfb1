// Questions in one go, answers in their order, read line by line.
#include "sources/rig/rigclient.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "input/fields.h"

namespace RecStation {

namespace {

constexpr std::chrono::seconds GreetingPatience{4};  // rigctld answers without its receiver; a check waits for 5 s
constexpr std::chrono::seconds AnswerPatience{5};
constexpr double NotTold = std::numeric_limits<double>::quiet_NaN();

enum Index : std::uint8_t { Frequency, Mode, Strength };

constexpr std::string_view CodeMark = "RPRT ";

// What a command before may have left behind: some versions end the answer to chk_vfo with a code, some do not.
bool isLeftOver(std::string_view line)
{
    return line.empty() || line.starts_with(CodeMark);
}

}  // namespace

std::optional<RigReply> RigReplyReader::take(std::string_view line)
{
    if (++m_lines > MostLines) {
        throw ConnectionError("its answer to " + m_command + " has no end");
    }
    if (!m_begun) {
        m_begun = line.starts_with(m_command) && line.substr(m_command.size()).starts_with(':');
        if (!m_begun && !isLeftOver(line)) {
            throw ConnectionError("it does not answer as rigctld does: " + shown(line));
        }
        return std::nullopt;
    }
    if (!line.starts_with(CodeMark)) {
        const std::size_t colon = line.find(": ");
        m_reply.values.emplace_back(trimmed(colon == std::string_view::npos ? line : line.substr(colon + 2)));
        return std::nullopt;
    }
    const auto code = parseNumber<int>(trimmed(line.substr(CodeMark.size())));
    if (!code) {
        throw ConnectionError("it does not answer as rigctld does: " + shown(line));
    }
    m_reply.code = *code;
    return std::move(m_reply);
}

bool isNotOffered(int code)
{
    constexpr std::array Lasting = {-1, -4, -11, -18};  // invalid, not implemented, not available, deprecated
    return std::find(Lasting.begin(), Lasting.end(), code) != Lasting.end();
}

std::string rigErrorText(int code)
{
    constexpr std::array Texts = {
        "all is well",
        "invalid parameter",
        "invalid configuration",
        "no memory",
        "not implemented",
        "communication timed out",
        "input or output failed",
        "internal error",
        "protocol error",
        "rejected by the receiver",
        "cut short",
        "not available",
        "VFO not accessible",
        "bus error",
        "bus collision",
        "invalid handle",
        "invalid VFO",
        "out of range",
        "deprecated",
        "password needed",
        "receiver is off",
    };
    const auto index = static_cast<std::size_t>(-static_cast<long long>(code));
    return (index < Texts.size() ? std::string(Texts[index]) + ", " : std::string()) + "RPRT " + std::to_string(code);
}

std::optional<double> parseRigHertz(std::string_view text)
{
    constexpr double Highest = 1e12;
    const auto number = parseNumber<double>(text);
    return number && *number > 0 && *number <= Highest ? number : std::nullopt;
}

std::optional<double> parseRigStrength(std::string_view text)
{
    constexpr double Farthest = 1000;
    const auto number = parseNumber<double>(text);
    return number && std::abs(*number) <= Farthest ? number : std::nullopt;
}

std::optional<std::string> parseRigMode(std::string_view text)
{
    constexpr std::size_t Longest = 16;
    const bool good = !text.empty() && text.size() <= Longest &&
                      text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_") ==
                          std::string_view::npos;
    return good ? std::optional<std::string>(text) : std::nullopt;
}

std::optional<bool> parseVfoMode(std::string_view line)
{
    const std::string_view text = trimmed(line);
    const std::string_view last = text.substr(text.find_last_of(' ') + 1);  // all of it without a blank
    return last == "0" || last == "1" ? std::optional(last == "1") : std::nullopt;
}

RigClient::RigClient(Address address, std::optional<double> s9Dbm, Say say)
    : m_address(std::move(address)),
      m_s9Dbm(s9Dbm),
      m_say(std::move(say)),
      m_questions{{{"f", "get_freq", "", "its frequency"},
                   {"m", "get_mode", "", "its mode and bandwidth"},
                   {"l", "get_level", " STRENGTH", "its signal strength"}}}
{
}

void RigClient::connect()
{
    m_connection.open(m_address);
    m_vfo = needsVfo();
    for (Question& question : m_questions) {
        question.offered = true;  // another receiver may be there now
    }
}

std::string_view RigClient::line(Deadline deadline)
{
    const std::uint64_t tooLong = m_connection.tooLong();
    const auto line = m_connection.next(deadline);
    if (m_connection.tooLong() != tooLong) {
        throw ConnectionError("it does not answer as rigctld does: a line is too long");
    }
    if (!line) {
        throw ConnectionError("it does not answer");
    }
    return *line;
}

bool RigClient::needsVfo()
{
    constexpr int MostLines = 4;
    m_connection.send("+\\chk_vfo\n");
    const Deadline deadline = in(GreetingPatience);
    for (int i = 0; i < MostLines; ++i) {
        const std::string_view answer = line(deadline);
        if (answer.starts_with("RPRT")) {  // an old version, which knows neither
            return false;
        }
        if (const auto mode = parseVfoMode(answer)) {
            return *mode;
        }
        if (!answer.starts_with("chk_vfo")) {
            throw ConnectionError("it does not answer as rigctld does: " + shown(answer));
        }
    }
    throw ConnectionError("it does not answer as rigctld does");
}

RigAnswers RigClient::ask()
{
    sendQuestions();
    RigAnswers answers;
    for (Question& question : m_questions) {
        if (question.offered) {
            take(question, reply(question), answers);
        }
    }
    return answers;
}

void RigClient::sendQuestions()
{
    std::string commands;
    for (const Question& question : m_questions) {
        if (question.offered) {
            commands += std::string("+") + question.shortName + (m_vfo ? " currVFO" : "") + question.argument + "\n";
        }
    }
    m_connection.send(commands);
}

RigReply RigClient::reply(const Question& question)
{
    RigReplyReader reader(question.longName);
    const Deadline deadline = in(AnswerPatience);
    for (;;) {
        if (auto reply = reader.take(line(deadline))) {
            return std::move(*reply);
        }
    }
}

void RigClient::take(Question& question, const RigReply& reply, RigAnswers& answers)
{
    const std::string what = question.what;
    if (setAnswer(question, reply, answers)) {
        ++m_used;
        if (std::exchange(question.failing, false) && question.told) {
            m_say("it tells " + what + " again");
        }
        return;
    }
    const std::string why = reply.code == 0 ? "it answers " + shown(reply.value(0)) : rigErrorText(reply.code);
    if (isNotOffered(reply.code)) {
        question.offered = false;
        if (!std::exchange(question.leftOut, true)) {
            m_say("it does not tell " + what + " (" + why + "), which stays unknown");
        }
        return;
    }
    ++m_lost;
    if (!std::exchange(question.failing, true)) {
        question.told = m_tellRate.take(std::chrono::steady_clock::now());
        if (question.told) {
            m_say("it does not tell " + what + " at present: " + why);
        }
    }
}

// What it does not tell becomes unknown; but for the frequency, of which the header of a recording is made.
bool RigClient::setAnswer(const Question& question, const RigReply& reply, RigAnswers& answers) const
{
    if (&question == &m_questions[Frequency]) {
        answers.frequencyHz = parseRigHertz(reply.value(0));
        return answers.frequencyHz.has_value();
    }
    if (&question == &m_questions[Mode]) {
        answers.mode = parseRigMode(reply.value(0)).value_or("");
        answers.bandwidthHz = parseRigHertz(reply.value(1)).value_or(NotTold);
        return !answers.mode->empty();
    }
    const auto strength = parseRigStrength(reply.value(0));
    answers.levelDb = strength ? *strength + m_s9Dbm.value_or(0) : NotTold;
    return strength.has_value();
}

}  // namespace RecStation
