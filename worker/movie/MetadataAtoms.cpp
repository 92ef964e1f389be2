#include "worker/movie/MetadataAtoms.h"

#include "worker/movie/AtomReader.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace Morvane::Worker {

namespace {

constexpr std::uint32_t undeterminedLanguage = 0x55C4;  // "und" packed; values are UTF-8, not Mac Roman
constexpr std::size_t longestUserData = 0xFFFF;
constexpr std::uint32_t utf8Value = 1;

constexpr std::array<std::pair<const char*, std::uint32_t>, 24> userDataTypes{{
    {"album", atomType("\xA9"
                       "alb")},
    {"artist", atomType("\xA9"
                        "ART")},
    {"author", atomType("\xA9"
                        "aut")},
    {"comment", atomType("\xA9"
                         "cmt")},
    {"composer", atomType("\xA9"
                          "com")},
    {"copyright", atomType("\xA9"
                           "cpy")},
    {"credits", atomType("\xA9"
                         "src")},
    {"date", atomType("\xA9"
                      "day")},
    {"description", atomType("\xA9"
                             "des")},
    {"director", atomType("\xA9"
                          "dir")},
    {"encoded_by", atomType("\xA9"
                            "enc")},
    {"format", atomType("\xA9"
                        "fmt")},
    {"genre", atomType("\xA9"
                       "gen")},
    {"host_computer", atomType("\xA9"
                               "hst")},
    {"information", atomType("\xA9"
                             "inf")},
    {"keywords", atomType("\xA9"
                          "key")},
    {"location", atomType("\xA9"
                          "xyz")},
    {"make", atomType("\xA9"
                      "mak")},
    {"model", atomType("\xA9"
                       "mod")},
    {"performers", atomType("\xA9"
                            "prf")},
    {"producer", atomType("\xA9"
                          "prd")},
    {"software", atomType("\xA9"
                          "swr")},
    {"title", atomType("\xA9"
                       "nam")},
    {"writer", atomType("\xA9"
                        "wrt")},
}};

std::uint32_t userDataType(const std::string& key, const std::string& value) {
    const auto known = std::find_if(userDataTypes.begin(), userDataTypes.end(),
                                    [&](const auto& entry) { return key == entry.first; });
    return known != userDataTypes.end() && value.size() <= longestUserData ? known->second : 0;
}

using Item = std::pair<std::string, std::string>;

std::string textOf(ByteView bytes) {
    return {bytes.begin(), bytes.end()};
}

void writeUserData(AtomWriter& out, const std::vector<Item>& items) {
    out.atom(atomType("udta"), [&] {
        for (const Item& item : items) {
            out.atom(userDataType(item.first, item.second), [&] {
                out.u16(static_cast<std::uint32_t>(item.second.size()));
                out.u16(undeterminedLanguage);
                out.text(item.second);
            });
        }
    });
}

void writeMetadataItems(AtomWriter& out, const std::vector<Item>& items) {
    // In a QuickTime movie this atom has neither version nor flags.
    out.atom(atomType("meta"), [&] {
        out.fullAtom(atomType("hdlr"), 0, 0, [&] {
            out.u32(0);
            out.u32(atomType("mdta"));
            out.zeros(12 + 1);
        });
        out.fullAtom(atomType("keys"), 0, 0, [&] {
            out.u32(items.size());
            for (const Item& item : items) {
                out.atom(atomType("mdta"), [&] { out.text(item.first); });
            }
        });
        out.atom(atomType("ilst"), [&] {
            for (std::uint32_t i = 0; i < items.size(); ++i) {
                out.atom(i + 1, [&] {
                    out.atom(atomType("data"), [&] {
                        out.u32(utf8Value);
                        out.u32(0);  // any locale
                        out.text(items[i].second);
                    });
                });
            }
        });
    });
}

}  // namespace

Bytes writeMetadataAtoms(const Metadata& metadata) {
    Metadata complete = metadata;
    complete.try_emplace("software", "Corvel " CORVEL_VERSION);
    std::vector<Item> userData;
    std::vector<Item> items;
    for (const auto& item : complete) {
        if (!item.second.empty()) {
            (userDataType(item.first, item.second) != 0 ? userData : items)
                .emplace_back(item.first, item.second);
        }
    }
    AtomWriter out;
    if (!userData.empty()) {
        writeUserData(out, userData);
    }
    if (!items.empty()) {
        writeMetadataItems(out, items);
    }
    return out.take();
}

Metadata readMetadata(ByteView moov) {
    const ByteView movie = requireAtom(moov, {atomType("moov")}).body;
    Metadata metadata;
    if (const std::optional<Atom> userData = findAtom(movie, {atomType("udta")})) {
        for (const Atom& atom : childAtoms(userData->body)) {
            const auto known = std::find_if(userDataTypes.begin(), userDataTypes.end(),
                                            [&](const auto& entry) { return atom.type == entry.second; });
            if (known != userDataTypes.end()) {
                AtomCursor text(atom.body);
                const std::size_t length = text.u16();
                text.u16();
                metadata[known->first] = textOf(text.take(length));
            }
        }
    }
    const std::optional<Atom> keys = findAtom(movie, {atomType("meta"), atomType("keys")});
    const std::optional<Atom> values = findAtom(movie, {atomType("meta"), atomType("ilst")});
    if (keys && values) {
        AtomCursor table(keys->body);
        table.take(8);
        const std::vector<Atom> names = childAtoms(table.take(table.remaining()));
        for (const Atom& value : childAtoms(values->body)) {
            const std::optional<Atom> data = findAtom(value.body, {atomType("data")});
            if (data && value.type >= 1 && value.type <= names.size()) {
                AtomCursor text(data->body);
                text.take(8);
                metadata[textOf(names[value.type - 1].body)] = textOf(text.take(text.remaining()));
            }
        }
    }
    return metadata;
}

Bytes copyMetadataAtoms(ByteView moov) {
    AtomWriter out;
    for (const Atom& atom : childAtoms(requireAtom(moov, {atomType("moov")}).body)) {
        if (atom.type == atomType("udta") || atom.type == atomType("meta")) {
            out.append(atom.whole);
        }
    }
    return out.take();
}

}  // namespace Morvane::Worker
