// Reading the lines of an NMEA log: sentences, and what lies before and between them.
#include <stdexcept>
#include <string>
#include <utility>

#include <system/stopsignal.h>

#include "input/fields.h"
#include "sources/nmea/nmealog.h"

namespace RecStation {

// Looks one byte ahead, across buffers.
ByteInput withLineFeeds(ByteInput input)
{
    return [input = std::move(input), waits = false](char* buffer, std::size_t size) mutable -> std::size_t {
        for (;;) {
            std::size_t filled = 0;
            if (std::exchange(waits, false)) {  // a carriage return that is not given yet
                buffer[filled++] = '\r';
            }
            const std::size_t more = input(buffer + filled, size - filled);
            if (more == 0) {
                return filled;
            }
            filled += more;
            for (std::size_t i = 0; i + 1 < filled; ++i) {
                if (buffer[i] == '\r' && buffer[i + 1] != '\n' && buffer[i + 1] != '\r') {
                    buffer[i] = '\n';
                }
            }
            waits = buffer[filled - 1] == '\r';
            filled -= waits ? 1U : 0U;
            if (filled > 0) {
                return filled;
            }
        }
    };
}

// False at the end of the input and when the process is to stop.
bool NmeaLog::readSentence()
{
    // A line that the wish to stop cut short is none.
    if (!m_lines.next() || System::StopSignal::requested()) {
        return false;
    }
    try {
        take(m_lines.line());
    } catch (const LineError& error) {
        m_bad.add(m_lines.number(), error.what());
    }
    return true;
}

void NmeaLog::take(const std::string& line)
{
    const bool after = std::exchange(m_inBinary, false);
    try {
        takeLine(trimmed(line));
    } catch (const LineError&) {
        if (!after) {
            throw;
        }
        m_inBinary = true;  // what happens to be text in between
    }
    if (m_inBinary) {
        noteBinary();
    }
}

void NmeaLog::takeLine(std::string_view text)
{
    NmeaLine line = readNmeaLine(text);
    m_inBinary = isBinary(line.front) || (line.sentences.empty() && isBinary(text));
    m_skipped += line.sentences.empty() ? 1U : 0U;
    while (!line.sentences.empty()) {
        try {
            takeSentence(takeNmeaSentence(line.sentences), line.front);
        } catch (const LineError& error) {
            if (isBinary(text)) {
                m_inBinary = true;
            } else {
                m_bad.add(m_lines.number(), error.what());
            }
        }
    }
}

// Receivers put data of their own between sentences, and serial lines noise before them.
void NmeaLog::noteBinary()
{
    if (m_options.strict) {
        throw LineError("it holds binary data");
    }
    if (m_binary++ == 0 && m_live) {
        m_bad.say("line " + std::to_string(m_lines.number()) +
                  " holds binary data; of such lines only sentences are used");
    }
}

void NmeaLog::takeSentence(std::string_view text, std::string_view front)
{
    const NmeaSentence sentence = parseNmeaSentence(text);
    if (!sentence.hasChecksum && isBinary(front)) {
        throw LineError("it lacks a checksum behind binary data");
    }
    auto message = readNmeaMessage(sentence);
    if (message) {
        requireChecksum(sentence);
        if (!message->dayProblem.empty() && !m_options.firstDay && !m_byArrival) {
            throw LineError(message->dayProblem);
        }
        m_hasFix = message->valid.value_or(m_hasFix);
        completeHeading(*message);
    }
    if (message && message->unsure && !m_hasFix) {
        message.reset();
    }
    if (!message || message->fix.empty()) {
        ++m_skipped;
    }
    if (message) {
        accept(*message, front);
    }
}

// A sentence that was cut lacks the checksum that others of its talker and type have.
void NmeaLog::requireChecksum(const NmeaSentence& sentence)
{
    if (sentence.hasChecksum) {
        m_checksums.emplace(sentence.address);
    } else if (m_checksums.count(sentence.address) > 0) {
        throw LineError("it lacks the checksum that " + std::string(sentence.address) + " had before");
    }
}

// A true heading, however it is told, leaves compasses out: the two never take turns.
void NmeaLog::completeHeading(NmeaMessage& message)
{
    if (message.variationDeg && !m_options.variationDeg) {
        m_variation = message.variationDeg;
    }
    if (message.fix.headingDeg) {
        m_trueHeading = true;
    } else if (message.magneticDeg && m_variation && !m_trueHeading) {
        message.fix.headingDeg = wrappedDegrees(*message.magneticDeg + *m_variation);
    }
}

}  // namespace RecStation
