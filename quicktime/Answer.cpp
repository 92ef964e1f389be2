#include "quicktime/Answer.h"

#include "property/NumberText.h"

namespace Morvane::QuickTime {

namespace {

const std::string errorPrefix = "Error: ";

}  // namespace

bool isError(const std::string& answer) {
    return answer.compare(0, errorPrefix.size(), errorPrefix) == 0;
}

void readErrorCode(const std::string& answer, std::int32_t& result) {
    Property::readNumber(answer.substr(errorPrefix.size()), result);
}

std::uint64_t frameBytes(std::int32_t width, std::int32_t height) {
    constexpr std::uint32_t bytesAPixel = 16;
    const std::uint32_t bytes =
        static_cast<std::uint32_t>(width) * static_cast<std::uint32_t>(height) * bytesAPixel;
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(static_cast<std::int32_t>(bytes)));
}

}  // namespace Morvane::QuickTime
