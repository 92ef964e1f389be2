#include "Receiver.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <thread>

namespace Morvane::Testing {

namespace {

bool isListenedOn(int port) {
    char pattern[16];
    std::snprintf(pattern, sizeof pattern, ":%04X ", static_cast<unsigned>(port));
    std::ifstream file("/proc/net/udp");
    for (std::string line; std::getline(file, line);)
        if (line.find(pattern) != std::string::npos)
            return true;
    return false;
}

}  // namespace

int freePort() {
    const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    EXPECT_EQ(bind(descriptor, reinterpret_cast<sockaddr*>(&address), length), 0);
    EXPECT_EQ(getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length), 0);
    close(descriptor);
    return ntohs(address.sin_port);
}

std::string receiverUrl(int port) {
    return "udp://127.0.0.1:" + std::to_string(port) + "?timeout=3000000&buffer_size=4000000";
}

Receiver::Receiver(const std::vector<std::string>& arguments, int port) : program(arguments) {
    while (!isListenedOn(port))
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

}  // namespace Morvane::Testing
