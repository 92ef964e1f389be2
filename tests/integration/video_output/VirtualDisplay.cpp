#include "VirtualDisplay.h"

#include <X11/Xlib.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

namespace Morvane::Testing {

namespace {

constexpr std::chrono::seconds patience{30};

/// The server writes its number once it is ready.
std::string readNumber(int descriptor) {
    std::string number;
    char character = 0;
    while (read(descriptor, &character, 1) == 1 && character != '\n')
        number += character;
    return number;
}

std::string windowWithTitle(const std::string& title) {
    const std::string found =
        outputOf({"xdotool", "search", "--sync", "--onlyvisible", "--name", fmt::format("^{}$", title)});
    return found.substr(0, found.find('\n'));
}

}  // namespace

VirtualDisplay::VirtualDisplay(int width, int height) : width(width), height(height) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        std::abort();
    server = std::make_unique<Program>(
        std::vector<std::string>{"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0",
                                 fmt::format("{}x{}x24", width, height), "-nolisten", "tcp", "-noreset"},
        Surroundings{.extraDescriptor = ends[1]});
    close(ends[1]);
    number = readNumber(ends[0]);
    setenv("DISPLAY", (":" + number).c_str(), 1);
    close(ends[0]);
}

VirtualDisplay::~VirtualDisplay() {
    if (server)
        server->end(SIGTERM);
    unsetenv("DISPLAY");
}

Bytes VirtualDisplay::screenshot() const {
    const std::string samples = outputOf({"import", "-silent", "-window", "root", "-depth", "8", "rgb:-"});
    Bytes picture{width, height, {samples.begin(), samples.end()}};
    picture.samples.resize(static_cast<std::size_t>(width) * height * 3);
    return picture;
}

int VirtualDisplay::differenceOnceShown(const TestFrame& frame, int left, int top) const {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (;;) {
        const int difference = largestDifference(frame, screenshot(), left, top);
        if (difference <= 2 || std::chrono::steady_clock::now() > deadline)
            return difference;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

void VirtualDisplay::pressKey(const std::string& title, const std::string& key) const {
    const std::string window = windowWithTitle(title);
    outputOf({"xdotool", "windowfocus", "--sync", window, "key", key});
}

void VirtualDisplay::resizeWindow(const std::string& title, int newWidth, int newHeight) const {
    outputOf({"xdotool", "windowsize", windowWithTitle(title), std::to_string(newWidth),
              std::to_string(newHeight)});
}

void VirtualDisplay::closeWindow(const std::string& title) const {
    Display* connection = XOpenDisplay(nullptr);
    XEvent wish{};
    wish.xclient.type = ClientMessage;
    wish.xclient.window = std::stoul(windowWithTitle(title));
    wish.xclient.message_type = XInternAtom(connection, "WM_PROTOCOLS", False);
    wish.xclient.format = 32;
    wish.xclient.data.l[0] = static_cast<long>(XInternAtom(connection, "WM_DELETE_WINDOW", False));
    XSendEvent(connection, wish.xclient.window, False, NoEventMask, &wish);
    XCloseDisplay(connection);
}

void VirtualDisplay::destroyWindow(const std::string& title) const {
    outputOf({"xdotool", "windowclose", windowWithTitle(title)});
}

void VirtualDisplay::kill() {
    server->end(SIGKILL);
    server.reset();
    // What the server would have removed by itself.
    unlink(("/tmp/.X" + number + "-lock").c_str());
    unlink(("/tmp/.X11-unix/X" + number).c_str());
}

std::string VirtualDisplay::missingPrograms() {
    std::string missing;
    for (const char* name : {"Xvfb", "import", "xdotool"})
        if (!hasProgram(name))
            missing += std::string(missing.empty() ? "" : ", ") + name;
    return missing;
}

}  // namespace Morvane::Testing
