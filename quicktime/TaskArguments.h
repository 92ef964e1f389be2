#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

#include "property/NumberText.h"

namespace Morvane::QuickTime {

/// The arguments of one request text, taken in their order.
class TaskArguments {
public:
    /// Throws std::runtime_error with `wrongKind` when the text's first character is not `kind`, and
    /// boost::escaped_list_error.
    TaskArguments(const std::string& text, char kind, const char* wrongKind);

    std::int32_t opcode() const { return opcode_; }

    /// The next argument into `field`, where it can be read. `name` is for the error: throws
    /// std::runtime_error that names opcode and argument when the text has no more arguments.
    template <typename T>
    void take(const char* name, T& field) {
        if constexpr (std::is_same_v<T, std::string>) {
            field = next(name);
        } else {
            Property::readNumber(next(name), field);
        }
    }

private:
    const std::string& next(const char* name);

    std::deque<std::string> fields;
    std::size_t taken = 0;
    std::int32_t opcode_;
};

}  // namespace Morvane::QuickTime
