#pragma once

#include <functional>
#include <string>

namespace Corvel {

/// Whoever looks after helper processes (HelperSession), as those see it who start and stop one.
class HelperKeeper {
public:
    virtual ~HelperKeeper() = default;

    /// Calls `startHelper` in the surroundings that a helper needs. Throws Failure (HelperFailed) for
    /// whatever that throws.
    virtual void start(const std::function<void()>& startHelper) = 0;
    /// What is being done from now on, for the case that a helper dies: "writing frame 37". Any thread.
    virtual void setActivity(const std::string& newActivity) = 0;
    /// From now on the end of a helper is nothing to report.
    virtual void expectEnd() = 0;
};

}  // namespace Corvel
