#pragma once

namespace Morvane::ProcessBridge {

/// Something that carries out one request.
class ExecutorI {
public:
    virtual ~ExecutorI() = default;
    virtual void execute() = 0;
};

}  // namespace Morvane::ProcessBridge
