#pragma once

#include <cstdint>
#include <string>

#include "processbridge/Controller.h"

namespace Morvane::Testing {

/// Sends any text to a real worker, also what no controller would, and gives the answer as it stands.
class RawController : public ProcessBridge::Controller {
public:
    RawController(const std::string& bridgeName, const std::string& mode);
    ~RawController() noexcept(false) override = default;

    /// The answer's text.
    std::string ask(const std::string& request);
    /// The same, with `text` in the data file.
    std::string ask(const std::string& request, const std::string& text);
    /// The same, with `bytes` zero bytes in the data file.
    std::string askWithZeros(const std::string& request, std::uint64_t bytes);
    /// The first `bytes` bytes of the answer.
    std::string askForBytes(const std::string& request, std::uint64_t bytes);

    /// Puts `bytes` as they are at the start of the request file; the next `askUnchanged` sends them.
    void putRequestBytes(const std::string& bytes);
    /// Posts what is in the request file and waits for the answer.
    std::string askUnchanged();

    pid_t workerProcess() const;

protected:
    void completeRequest(const std::string& request) override;

private:
    std::string answer;
    std::uint64_t bytesWanted = 0;  ///< 0: the answer is a text
};

}  // namespace Morvane::Testing
