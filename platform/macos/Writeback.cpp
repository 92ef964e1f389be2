#include "platform/Writeback.h"

namespace Morvane::Platform {

void startWriteback(int, std::int64_t, std::int64_t) {}

}  // namespace Morvane::Platform
