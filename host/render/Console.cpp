#include "host/render/Console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

namespace Corvel {
namespace {

const std::string eraseLine = "\r\x1b[K";

}  // namespace

Console::Console(int descriptor) : descriptor(descriptor), terminal(isatty(descriptor) == 1) {}

int Console::columns() const {
    winsize size{};
    return ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

void Console::line(const std::string& text) {
    const std::lock_guard lock(mutex);
    if (shownStatus.empty()) {
        write(text + '\n');
    } else {
        write(eraseLine + text + '\n' + shownStatus);
    }
}

void Console::status(const std::string& text) {
    const std::lock_guard lock(mutex);
    if (text == shownStatus) {
        return;
    }
    write(eraseLine + text);
    shownStatus = text;
}

// A standard error that nobody reads any more is no reason to give up a render, so failures are passed over.
void Console::write(const std::string& bytes) const {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(descriptor, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno != EINTR) {
            return;
        }
        written += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
}

}  // namespace Corvel
