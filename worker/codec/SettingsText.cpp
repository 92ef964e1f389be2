#include "worker/codec/SettingsText.h"

#include "worker/Status.h"

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/mem.h>
}

#include <fmt/format.h>

#include <memory>
#include <new>

namespace Morvane::Worker {

namespace {

constexpr std::size_t longestText = 65536;

/// A libav dictionary that frees itself. Letter case of keys counts, as metadata may differ in nothing else.
class Dictionary {
public:
    Dictionary() = default;
    ~Dictionary() { av_dict_free(&entries); }
    Dictionary(const Dictionary&) = delete;
    Dictionary& operator=(const Dictionary&) = delete;

    AVDictionary* entries = nullptr;
};

}  // namespace

SettingPairs parseSettingPairs(const std::string& text) {
    if (text.size() > longestText)
        throw StatusError(
            Status::NotSupportedByCodec,
            fmt::format("the settings are {} bytes long, more than {}", text.size(), longestText));
    Dictionary dictionary;
    if (av_dict_parse_string(&dictionary.entries, text.c_str(), "=", ":", AV_DICT_MATCH_CASE) < 0)
        throw StatusError(Status::NotSupportedByCodec,
                          fmt::format("the settings \"{}\" are not of the form key=value:key=value", text));
    SettingPairs pairs;
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(dictionary.entries, "", entry, AV_DICT_IGNORE_SUFFIX)))
        pairs.emplace_back(entry->key, entry->value);
    return pairs;
}

std::string formatSettingPairs(const SettingPairs& pairs) {
    Dictionary dictionary;
    for (const auto& [key, value] : pairs)
        if (av_dict_set(&dictionary.entries, key.c_str(), value.c_str(), AV_DICT_MATCH_CASE) < 0)
            throw std::bad_alloc();
    char* text = nullptr;
    if (av_dict_get_string(dictionary.entries, &text, '=', ':') < 0)
        throw std::bad_alloc();
    const std::unique_ptr<char, void (*)(void*)> owner(text, av_free);
    return text ? text : "";
}

}  // namespace Morvane::Worker
