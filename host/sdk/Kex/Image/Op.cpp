#include "Kex/Image/Op.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "Kex/Image/Iop.h"

namespace Kex::Image {

namespace {

std::string formatted(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (length < 0) {
        return format;  // not printable in the current locale: better the bare text than none
    }
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, arguments);
    text.pop_back();
    return text;
}

}  // namespace

Op::Op(Application& owner) : application_(owner) {}

Op::~Op() noexcept(false) = default;

Knob* Op::knob(const char* name) const {
    const auto found =
        std::find_if(knobs_.begin(), knobs_.end(), [&](const auto& one) { return one->name() == name; });
    return found != knobs_.end() ? found->get() : nullptr;
}

void Op::error(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = formatted(format, arguments);
    va_end(arguments);
    failed_ = true;
    application_.error(*this, text);
}

void Op::warning(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = formatted(format, arguments);
    va_end(arguments);
    application_.warning(*this, text);
}

void Op::progressFraction(double fraction) {
    application_.progress(*this, fraction);
}

bool Op::aborted() const {
    return application_.aborted(*this);
}

Iop* Op::input(int n) const {
    return n >= 0 && static_cast<std::size_t>(n) < inputs.size() ? inputs[static_cast<std::size_t>(n)]
                                                                 : nullptr;
}

void Op::setInput(int n, Iop* node) {
    if (static_cast<std::size_t>(n) >= inputs.size()) {
        inputs.resize(static_cast<std::size_t>(n) + 1);
    }
    inputs[static_cast<std::size_t>(n)] = node;
}

MetaData::Bundle Op::fetchMetaData(const char* key) const {
    const Iop* const source = input(0);
    return source != nullptr ? source->fetchMetaData(key) : MetaData::Bundle{};
}

void Op::addKnob(std::unique_ptr<Knob> newKnob) {
    knobs_.push_back(std::move(newKnob));
}

void Op::removeKnobs() {
    knobs_.clear();
}

}  // namespace Kex::Image
