#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace Corvel {

/// Whoever looks after helper processes (HelperSession), as those see it who start and stop one.
class HelperKeeper {
public:
    virtual ~HelperKeeper() = default;

    /// Stands for one helper from its start on.
    using Helper = std::size_t;

    /// Calls `startHelper` in the surroundings that a helper needs. Throws Failure (HelperFailed) for
    /// whatever that throws.
    virtual Helper start(const std::function<void()>& startHelper) = 0;
    /// What is being done from now on, for the case that a helper dies: "writing frame 37". Any thread.
    virtual void setActivity(const std::string& newActivity) = 0;
    /// What that helper does by itself from now on, whatever else is being done. Any thread.
    virtual void setOwnActivity(Helper helper, const std::string& newActivity) = 0;
    /// From now on the end of any helper is nothing to report.
    virtual void expectEnd() = 0;
};

}  // namespace Corvel
