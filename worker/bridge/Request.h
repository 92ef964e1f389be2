#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "worker/bridge/BridgeEnd.h"

namespace Morvane::Worker {

/// One request on its way through its handler: what came with it and what is answered. A handler either sets
/// one answer or throws; one that sets none answers "0".
class Request {
public:
    Request(BridgeEnd& end, std::string requestText) : text(std::move(requestText)), bridge(end) {}

    /// The whole request, head included.
    const std::string text;

    /// What the host placed in the data file, as BridgeEnd gives it. Before the answer.
    std::span<const std::byte> payload(std::uint64_t bytes) { return bridge.payload(bytes); }
    std::string payloadText() { return bridge.payloadText(); }

    /// Answers with `words`. No zero byte in them can arrive.
    void answer(std::string words) { answerText = std::move(words); }

    /// Answers with `bytes` bytes of data, which the handler writes into the span. It must fill them before
    /// it returns; whatever it throws is answered instead.
    std::span<std::byte> answerWithData(std::uint64_t bytes) {
        answerText.reset();
        answersWithData = true;
        return bridge.grow(bytes);
    }

    /// Puts the answer into the data file. For the request loop.
    void deliver() {
        if (answerText || !answersWithData)
            bridge.writeAnswer(answerText.value_or("0"));
    }

private:
    BridgeEnd& bridge;
    std::optional<std::string> answerText;
    bool answersWithData = false;
};

}  // namespace Morvane::Worker
