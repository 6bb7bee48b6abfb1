// The server of the tests as a program, for clients of others: prints its port, serves until its input ends.
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "rtltcpserver.h"

// rtltcp_emulator [TONE_HZ]...
int main(int argc, char** argv)
{
    RtlTcpTesting::Air air;
    for (int i = 1; i < argc; ++i) {
        air.tonesHz.push_back(std::atof(argv[i]));
    }
    const RtlTcpTesting::Server server(air);
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
