#pragma once

#include <functional>

namespace Morvane::Worker {

/// The program behind the displays. It may be absent, and it may go away while a window is open. An X
/// server's client library ends the process in that case; here it becomes an error of the one call that met
/// it.
///
/// After a loss the libraries' state is beyond repair and nothing of them is touched again: every later
/// `call` throws at once, and when the process ends it leaves without the libraries' own clean-up. A new
/// worker process can use a new server.
class DisplayServer {
public:
    /// Whether the environment names a display server. Loads nothing and connects to nothing.
    static bool isNamed();

    /// Makes losses show up in `call` and lost windows in `isWindowGone`. After every initialisation of the
    /// window library.
    static void watchForLoss();

    /// Runs `body`, which calls the window library. Throws StatusError when the server is lost on the way:
    /// `body` is then left by a jump, so no object with a destructor may live in it and it must not throw.
    static void call(const std::function<void()>& body);

    /// Whether a call has found the server lost. Any thread.
    static bool isLost();

    /// Whether another program has destroyed the window, as a call has found. It is not told to the window
    /// library, which would wait for ever for the end of a window that has ended: as after a loss, every
    /// later `call` throws. Any thread.
    static bool isWindowGone();
};

}  // namespace Morvane::Worker
