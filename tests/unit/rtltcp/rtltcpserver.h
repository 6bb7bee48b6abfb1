// A server of the rtl_tcp protocol with tones on the air, for tests.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace RtlTcpTesting {

/// Of all tones at the beginning of a block: none crosses zero at a sample, where cu8 rounds either way.
constexpr double TonePhase = 0.3;

struct Air {
    std::vector<double> tonesHz;  ///< where on the air tones are, each of the amplitude
    double amplitude = 0.25;      ///< of full scale
    double pace = 1;              ///< of the sample rate; 0: as fast as samples are taken
    /// What a real server has gathered, and sends after it was tuned: samples of the frequency before.
    std::uint64_t gathered = 131'072;
    int wrongGreetings = 0;  ///< to so many clients it is something else than an rtl_tcp server
};

/// Serves one client after the other, on a port of its own of the loopback, until it goes.
class Server {
public:
    explicit Server(Air air, std::uint16_t port = 0);
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server();

    [[nodiscard]] std::uint16_t port() const { return m_port; }
    [[nodiscard]] std::uint64_t samplesSent() const { return m_sent; }
    [[nodiscard]] int clients() const { return m_clients; }
    /// What clients commanded: number and value.
    [[nodiscard]] std::vector<std::pair<int, std::uint32_t>> commands() const;
    void dropClient() { m_drop = true; }  ///< at once; it may come again

private:
    void run();
    void serve(int client);
    bool takeCommands(int client);
    void obey(int command, std::uint32_t value);
    void makeBlock();
    bool sendAll(int client, const char* bytes, std::size_t size);

    Air m_air;
    int m_listener = -1;
    std::uint16_t m_port = 0;
    std::atomic<bool> m_stop = false;
    std::atomic<bool> m_drop = false;
    std::atomic<int> m_clients = 0;
    std::atomic<std::uint64_t> m_sent = 0;
    mutable std::mutex m_mutex;
    std::vector<std::pair<int, std::uint32_t>> m_commands;
    // Of the server's thread.
    double m_rateHz = 2'048'000;
    double m_centreHz = 100e6;
    std::uint64_t m_ofBefore = 0;  // samples of the frequency before that are still to be sent
    std::vector<char> m_block;
    std::vector<char> m_input;
    std::thread m_thread;
};

}  // namespace RtlTcpTesting
