#include "host/render/Reason.h"

#include <new>
#include <system_error>

namespace Corvel {

std::string reasonOf(const std::exception& error) {
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
        return "there is not enough memory";
    }
    const auto* system = dynamic_cast<const std::system_error*>(&error);
    if (system != nullptr && system->code() == std::errc::resource_unavailable_try_again) {
        return "there is no room for another thread";
    }
    return error.what();
}

}  // namespace Corvel
