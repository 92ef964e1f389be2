#pragma once

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace Morvane::Fuzz {

/// The input becomes a record, and begins with its mode's letter then, or is refused with a
/// std::runtime_error.
template <typename Task>
void makeTask(const std::uint8_t* data, std::size_t size, char letter) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const Task task(text);
        if (text.front() != letter)
            std::abort();
    } catch (const std::runtime_error&) {
    }
}

}  // namespace Morvane::Fuzz
