// Obeying commands and sending tones as cu8.
#include "rtltcpserver.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <numbers>

#include <poll.h>

#include "support/loopback.h"

namespace RtlTcpTesting {

namespace {

// Tones have whole periods in a block, so that it can be repeated: they lie on multiples of the rate / 8,192.
constexpr std::size_t BlockSamples = 8192;
constexpr std::size_t BlocksAtOnce = 16;
constexpr std::size_t CommandBytes = 5;
constexpr int Tick = 20;  // milliseconds

bool ready(int socket, short events)
{
    pollfd waited{.fd = socket, .events = events, .revents = 0};
    return ::poll(&waited, 1, Tick) > 0;
}

}  // namespace

Server::Server(Air air, std::uint16_t port) : m_air(std::move(air)), m_port(port)
{
    m_listener = TestSupport::bindToLoopback(SOCK_STREAM, m_port);
    m_thread = std::thread([this] { run(); });
}

Server::~Server()
{
    m_stop = true;
    m_thread.join();
    ::close(m_listener);
}

std::vector<std::pair<int, std::uint32_t>> Server::commands() const
{
    const std::lock_guard lock(m_mutex);
    return m_commands;
}

void Server::run()
{
    while (!m_stop) {
        if (!ready(m_listener, POLLIN)) {
            continue;
        }
        const int client = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (client >= 0) {
            ++m_clients;
            serve(client);
            ::close(client);
        }
    }
}

void Server::serve(int client)
{
    m_drop = false;
    m_ofBefore = 0;
    m_input.clear();
    makeBlock();
    std::string greeting("RTL0\0\0\0\5\0\0\0\x1d", 12);
    if (m_air.wrongGreetings-- > 0) {
        greeting.assign(1'000'000, 'x');
    }
    bool good = sendAll(client, greeting.data(), greeting.size());
    const auto begin = std::chrono::steady_clock::now();
    double due = 0;  // seconds
    for (std::size_t block = 0; good && !m_stop && !m_drop && takeCommands(client);) {
        // As the real one, it gathers for a while and then sends all at once.
        if (m_air.pace > 0 && block % BlocksAtOnce == 0 &&
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() < due) {
            pollfd waited{.fd = client, .events = POLLIN, .revents = 0};
            ::poll(&waited, 1, 1);
            continue;
        }
        ++block;
        good = sendAll(client, m_block.data(), m_block.size());
        m_sent += BlockSamples;
        due += m_air.pace > 0 ? static_cast<double>(BlockSamples) / (m_rateHz * m_air.pace) : 0;
        if (m_ofBefore > 0) {
            m_ofBefore -= std::min<std::uint64_t>(m_ofBefore, BlockSamples);
            if (m_ofBefore == 0) {
                makeBlock();
            }
        }
    }
}

bool Server::takeCommands(int client)
{
    char bytes[256];
    const ssize_t count = ::recv(client, bytes, sizeof bytes, MSG_DONTWAIT);
    if (count <= 0) {
        return count < 0 && (errno == EAGAIN || errno == EINTR);
    }
    m_input.insert(m_input.end(), bytes, bytes + count);
    while (m_input.size() >= CommandBytes) {
        std::uint32_t value = 0;
        for (std::size_t i = 1; i < CommandBytes; ++i) {
            value = value << 8U | static_cast<unsigned char>(m_input[i]);
        }
        obey(static_cast<unsigned char>(m_input[0]), value);
        m_input.erase(m_input.begin(), m_input.begin() + CommandBytes);
    }
    return true;
}

void Server::obey(int command, std::uint32_t value)
{
    {
        const std::lock_guard lock(m_mutex);
        m_commands.emplace_back(command, value);
    }
    if (command == 1) {
        m_centreHz = value;
        m_ofBefore = m_air.gathered;
        if (m_ofBefore == 0) {
            makeBlock();
        }
    } else if (command == 2 && value > 0) {
        m_rateHz = value;
    }
}

void Server::makeBlock()
{
    std::vector<std::pair<double, double>> samples(BlockSamples);
    for (const double toneHz : m_air.tonesHz) {
        const double offsetHz = toneHz - m_centreHz;
        if (std::abs(offsetHz) >= m_rateHz / 2) {
            continue;
        }
        const double periods = std::round(offsetHz / m_rateHz * BlockSamples);
        for (std::size_t n = 0; n < BlockSamples; ++n) {
            const double angle = 2 * std::numbers::pi * periods * static_cast<double>(n) / BlockSamples + TonePhase;
            samples[n].first += m_air.amplitude * std::cos(angle);
            samples[n].second += m_air.amplitude * std::sin(angle);
        }
    }
    m_block.clear();
    const auto byte = [](double number) {
        return static_cast<char>(
            static_cast<unsigned char>(std::clamp(std::round(number * 127.5 + 127.5), 0.0, 255.0)));
    };
    for (const auto& [real, imaginary] : samples) {
        m_block.push_back(byte(real));
        m_block.push_back(byte(imaginary));
    }
}

bool Server::sendAll(int client, const char* bytes, std::size_t size)
{
    while (size > 0 && !m_stop && !m_drop) {
        const ssize_t count = ::send(client, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno != EAGAIN && errno != EINTR) {
            return false;
        }
        if (count <= 0) {
            ready(client, POLLOUT);
            continue;
        }
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return size == 0;
}

}  // namespace RtlTcpTesting
