// From connecting to losing a peer, and back.
#include "live/peersource.h"

#include <utility>

namespace RecStation {

PeerSource::PeerSource(const char* name, std::string peer, const SourceRun& run)
    : m_name(QString::fromLatin1(name)), m_peer(std::move(peer)), m_report(run.hooks.report), m_times(run.sourceTime)
{
}

void PeerSource::say(const std::string& clause) const
{
    m_report(QStringLiteral("%1 %2: %3").arg(m_name, QString::fromStdString(m_peer), QString::fromStdString(clause)));
}

std::optional<unsigned long long> PeerSource::nextTime()
{
    try {
        for (;;) {
            if (!m_connected && m_missing) {
                pauseUntil(in(m_retry.next()));
            }
            if (!m_connected && !tryToConnect()) {
                continue;
            }
            if (const auto received = tryToReceive()) {
                return m_times.take(*received);
            }
            if (m_toForget) {
                return m_times.take({systemTimeUs(), std::nullopt});
            }
        }
    } catch (const Stopped&) {
        disconnect();
        return std::nullopt;
    }
}

bool PeerSource::tryToConnect()
{
    try {
        connect();
        m_connected = true;
        m_connectedSince = std::chrono::steady_clock::now();
    } catch (const ConnectionError& error) {
        disconnect();
        tellMissing(error.what());
    }
    return m_connected;
}

std::optional<Received> PeerSource::tryToReceive()
{
    try {
        const Received received = receive();
        m_retry.reset(std::chrono::steady_clock::now() - m_connectedSince);
        tellBack();
        return received;
    } catch (const ConnectionError& error) {
        disconnect();
        m_connected = false;
        m_toForget = m_known && !m_missing;
        tellMissing(error.what());
        return std::nullopt;
    }
}

void PeerSource::tellMissing(const std::string& why)
{
    m_why = why;
    if (std::exchange(m_missing, true)) {
        return;
    }
    m_told = m_tellRate.take(std::chrono::steady_clock::now());
    if (m_told) {
        say(why + "; trying again");
        if (m_tellRate.isSpent() && !std::exchange(m_rateTold, true)) {
            say("it comes and goes; from here on that is told once a minute at most, and counted");
        }
    }
}

void PeerSource::tellBack()
{
    if (std::exchange(m_missing, false)) {
        m_reconnects += m_known ? 1U : 0U;
        if (m_told) {
            say(m_known ? "connected again" : "connected");
        }
    }
    m_known = true;
}

void PeerSource::step()
{
    if (std::exchange(m_toForget, false)) {
        forget();
    } else {
        apply();
    }
}

SourceReport PeerSource::report() const
{
    SourceReport report = counts();
    report.live = true;
    report.reconnects = m_reconnects;
    report.lag = m_times.lag();
    report.silent = !m_known;
    if (!m_known) {
        report.missing = m_peer + (m_why.empty() ? "" : ": " + m_why);
    }
    return report;
}

}  // namespace RecStation
