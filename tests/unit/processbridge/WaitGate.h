#pragma once

namespace Morvane::Testing {

/// While one lives, asking whether a child still runs first waits until it has ended, so that a test need not
/// guess how fast a program ends. The test program's own `waitpid` does it.
class WaitGate {
public:
    WaitGate();
    ~WaitGate();
};

/// How the last child that was asked for through the gate ended: its exit code, or minus its signal.
int endSeenThroughGate();

}  // namespace Morvane::Testing
