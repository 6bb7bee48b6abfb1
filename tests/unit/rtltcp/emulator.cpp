// The server of the tests as a program, for clients of others: prints its port, serves until its input ends.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "rtltcpserver.h"

// rtltcp_emulator [--port PORT] [TONE_HZ]...
int main(int argc, char** argv)
{
    RtlTcpTesting::Air air;
    std::uint16_t port = 0;
    for (int i = 1; i < argc; ++i) {
        if (std::string_view(argv[i]) == "--port" && i + 1 < argc) {
            port = static_cast<std::uint16_t>(std::atoi(argv[++i]));
        } else {
            air.tonesHz.push_back(std::atof(argv[i]));
        }
    }
    const RtlTcpTesting::Server server(air, port);
    std::cout << server.port() << std::endl;
    std::string line;
    while (std::getline(std::cin, line)) {
    }
    for (const auto& [command, value] : server.commands()) {
        std::cout << command << ' ' << value << '\n';
    }
    std::cout << server.samplesSent() << " samples\n";
    return 0;
}
