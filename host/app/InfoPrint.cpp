#include "host/app/InfoPrint.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace Corvel {

InfoJson textOrNull(const std::string& text) {
    return text.empty() ? InfoJson(nullptr) : InfoJson(text);
}

InfoJson numberOrNull(double value) {
    return std::isfinite(value) ? InfoJson::parse(fmt::format("{}", static_cast<float>(value)))
                                : InfoJson(nullptr);
}

void printRows(const std::string& title, const InfoRows& rows) {
    std::size_t width = title.empty() ? 12 : 0;
    for (const auto& [name, value] : rows) {
        width = std::max(width, name.size());
    }
    if (!title.empty()) {
        fmt::print("\n{}\n", title);
    }
    for (const auto& [name, value] : rows) {
        fmt::print("  {:<{}}  {}\n", name, width, value);
    }
}

void printJson(const InfoJson& document) {
    fmt::print("{}\n", document.dump(2, ' ', false, InfoJson::error_handler_t::replace));
}

}  // namespace Corvel
