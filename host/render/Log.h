#pragma once

#include <memory>

#include "host/render/Reporter.h"

namespace Corvel {

/// Makes every message that goes through spdlog (spdlog::info, warn, error) a message of `reporter`, which
/// must outlive this call's effect: until the next one. Null sends messages nowhere.
void logTo(Reporter* reporter);

}  // namespace Corvel
