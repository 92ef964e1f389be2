// Any file may stand where a bundle's property list should.

#include <plist/plist.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/linux/Bundles.h"

namespace {

constexpr std::uint32_t kinds = 16;
constexpr std::uint32_t deepest = 7;
constexpr std::uint32_t most = 15;

/// The library that reads property lists is not built here, and what an input makes it do is not seen. So
/// that the fuzzer finds its way all the same, it is told what has come of the input: kinds of values, how
/// deep they lie and how many there are.
[[gnu::section("__libfuzzer_extra_counters")]] std::uint8_t counters[kinds * (deepest + 1) * (most + 1)];

void count(plist_t node, std::uint32_t depth) {
    const auto kind = std::min<std::uint32_t>(plist_get_node_type(node), kinds - 1);
    const std::uint32_t children = plist_get_node_type(node) == PLIST_DICT    ? plist_dict_get_size(node)
                                   : plist_get_node_type(node) == PLIST_ARRAY ? plist_array_get_size(node)
                                                                              : 0;
    ++counters[(kind * (deepest + 1) + std::min(depth, deepest)) * (most + 1) + std::min(children, most)];
}

void countAll(plist_t node, std::uint32_t depth) {
    if (node == nullptr)
        return;
    count(node, depth);
    for (std::uint32_t i = 0; plist_get_node_type(node) == PLIST_ARRAY && i < plist_array_get_size(node); ++i)
        countAll(plist_array_get_item(node, i), depth + 1);
    if (plist_get_node_type(node) != PLIST_DICT)
        return;
    plist_dict_iter place = nullptr;
    plist_dict_new_iter(node, &place);
    const std::unique_ptr<void, decltype(&std::free)> freed(place, &std::free);
    for (plist_t item = node; item != nullptr;) {
        item = nullptr;
        plist_dict_next_item(node, place, nullptr, &item);
        countAll(item, depth + 1);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    Morvane::Platform::identifierInPlist(text);
    plist_t parsed = nullptr;
    plist_from_memory(text.data(), static_cast<std::uint32_t>(text.size()), &parsed);
    countAll(parsed, 0);
    plist_free(parsed);
    return 0;
}
