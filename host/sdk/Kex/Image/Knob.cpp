#include "Kex/Image/Knob.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace Kex::Image {

namespace {

template <typename Field>
Field& fieldAs(void* field) {
    return *static_cast<Field*>(field);
}

/// A number cut towards zero, within 32 bits.
std::int32_t wholeNumber(double value) {
    if (std::isnan(value)) {
        return 0;
    }
    constexpr double low = std::numeric_limits<std::int32_t>::min();
    constexpr double high = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::fmax(low, std::fmin(high, value)));
}

}  // namespace

Knob::Knob(const Declaration& declaration)
    : kind_(declaration.kind),
      storage_(declaration.storage),
      field(declaration.field),
      name_(declaration.name),
      label_(declaration.label != nullptr ? declaration.label : declaration.name) {
    for (const char* const* entry = declaration.entries; entry != nullptr && *entry != nullptr; ++entry) {
        entries_.emplace_back(*entry);
    }
}

bool Knob::set_value(double value, int channel) {
    if (channel != 0 && channel != -1) {
        return false;
    }
    switch (storage_) {
        case Store_Float:
            fieldAs<float>(field) = static_cast<float>(value);
            return true;
        case Store_Int:
            fieldAs<std::int32_t>(field) = wholeNumber(value);
            return true;
        case Store_Bool:
            fieldAs<bool>(field) = value != 0;
            return true;
        case Store_CString:
        case Store_String:
        case Store_None:
            break;
    }
    return false;
}

double Knob::get_value(int channel) const {
    if (channel != 0 && channel != -1) {
        return 0;
    }
    switch (storage_) {
        case Store_Float:
            return fieldAs<float>(field);
        case Store_Int:
            return fieldAs<std::int32_t>(field);
        case Store_Bool:
            return fieldAs<bool>(field) ? 1 : 0;
        case Store_CString:
        case Store_String:
        case Store_None:
            break;
    }
    return 0;
}

bool Knob::set_text(const std::string& text) {
    if (storage_ == Store_CString) {
        ownedText = text;
        fieldAs<const char*>(field) = ownedText.c_str();
        return true;
    }
    if (storage_ == Store_String) {
        fieldAs<std::string>(field) = text;
        return true;
    }
    return false;
}

std::string Knob::get_text() const {
    switch (storage_) {
        case Store_CString: {
            const char* const text = fieldAs<const char*>(field);
            return text != nullptr ? text : "";
        }
        case Store_String:
            return fieldAs<std::string>(field);
        case Store_Float:
            return fmt::format("{}", fieldAs<float>(field));
        case Store_Bool:
            return fieldAs<bool>(field) ? "1" : "0";
        case Store_Int: {
            const std::int32_t number = fieldAs<std::int32_t>(field);
            if (kind_ != Knob_Enumeration) {
                return std::to_string(number);
            }
            const auto index = static_cast<std::size_t>(number);
            return number >= 0 && index < entries_.size() ? entries_[index] : "";
        }
        case Store_None:
            break;
    }
    return "";
}

}  // namespace Kex::Image
