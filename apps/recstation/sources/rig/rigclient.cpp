// Questions in one go, answers in their order.
#include "sources/rig/rigclient.h"

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

}  // namespace

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
