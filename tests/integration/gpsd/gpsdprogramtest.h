// recstation while it runs, and peers of it on free ports of the loopback address.
#pragma once

#include "recordings.h"
#include "support/loopback.h"

using TestSupport::PatienceMs;

/// Listens, takes one connection at a time, and says what the test says.
class Peer {
public:
    Peer();
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer();

    [[nodiscard]] std::uint16_t port() const { return m_port; }
    [[nodiscard]] bool accept();  ///< waits for a connection; one before is closed
    void send(std::string_view bytes);
    /// Waits until that came. @return false when it does not
    [[nodiscard]] bool awaitText(const std::string& text);
    void hangUp();

private:
    int m_listening = -1;
    int m_connection = -1;
    std::uint16_t m_port = 0;
    std::string m_received;
};

using TestSupport::freePort;

class GpsdProgramTest : public RecordingTest {
protected:
    ~GpsdProgramTest() override;

    /// Starts "recstation gpsd" with that peer.
    void startProgram(std::uint16_t port, const QStringList& more = {});
    /// Waits until the program has said that so many times; each turn does something.
    [[nodiscard]] bool awaitMessage(const std::string& text, int times = 1, const std::function<void()>& turn = {});
    /// Gives it that on its standard input, which stays open, and waits for its own end.
    Result endProgram(const QByteArray& input);
    /// Asks it to stop, as Ctrl-C does.
    Result stopProgram();
    [[nodiscard]] const std::string& messages() const { return m_messages; }
    [[nodiscard]] static RecordedFile recordingOf(const Result& result)
    {
        return readRecordedFile(result.path("receiver"));
    }

private:
    QProcess m_program;
    std::string m_messages;
};
