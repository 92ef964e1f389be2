#include "MovieWalker.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string_view>

namespace Morvane::Tests {

namespace {

using Bytes = std::string;

struct Node {
    std::string type;
    std::int64_t offset = 0;  ///< of the atom in the file, or in its parent's bytes
    std::int64_t header = 8;
    std::int64_t size = 0;
    Bytes body;  ///< empty for media
};

class Reader {
public:
    explicit Reader(const Bytes& source) : bytes(source) {}

    std::uint64_t number(std::size_t width) {
        if (position + width > bytes.size()) {
            throw std::runtime_error("an atom is too short for its fields");
        }
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < width; ++i) {
            value = value << 8 | static_cast<unsigned char>(bytes[position++]);
        }
        return value;
    }
    std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    std::int64_t wide(bool eight) { return static_cast<std::int64_t>(number(eight ? 8 : 4)); }
    void skip(std::size_t count) {
        number(0);
        position += count;
    }
    std::size_t left() const { return bytes.size() - std::min(position, bytes.size()); }

private:
    const Bytes& bytes;
    std::size_t position = 0;
};

class Walk {
public:
    Walk(const std::string& path, WalkedMovie& result)
        : movie(result), file(std::fopen(path.c_str(), "rb"), std::fclose) {
        if (!file) {
            throw std::runtime_error("cannot open " + path);
        }
        std::fseek(file.get(), 0, SEEK_END);
        fileSize = std::ftell(file.get());
    }

    void run() {
        const std::vector<Node> atoms = topLevel();
        int indexes = 0;
        for (const Node& atom : atoms) {
            movie.topLevel.push_back(atom.type);
            if (atom.type == "moov") {
                ++indexes;
                movie.indexFirst = media.empty();
                index(atom.body);
            } else if (atom.type == "mdat") {
                media.emplace_back(atom.offset + atom.header, atom.offset + atom.size);
            } else if (atom.type != "ftyp" && atom.type != "free" && atom.type != "wide") {
                problem("atom \"{}\" does not belong at the top of an ordinary movie", atom.type);
            }
        }
        expect(!atoms.empty() && atoms.front().type == "ftyp", "the file does not begin with ftyp");
        expect(indexes == 1, "there is not exactly one moov");
        checkChunks();
        checkReferences();
    }

private:
    template <typename... Arguments>
    void problem(fmt::format_string<Arguments...> text, Arguments&&... arguments) {
        movie.problems.push_back(fmt::format(text, std::forward<Arguments>(arguments)...));
    }
    void expect(bool fine, std::string_view text) {
        if (!fine) {
            movie.problems.emplace_back(text);
        }
    }

    Bytes readFile(std::int64_t offset, std::int64_t count) {
        Bytes bytes(static_cast<std::size_t>(count), '\0');
        std::fseek(file.get(), offset, SEEK_SET);
        if (std::fread(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) {
            throw std::runtime_error("the file ends too soon");
        }
        return bytes;
    }

    std::vector<Node> topLevel() {
        std::vector<Node> atoms;
        for (std::int64_t offset = 0; offset < fileSize;) {
            const Bytes header = readFile(offset, std::min<std::int64_t>(16, fileSize - offset));
            Node node = nodeAt(header, offset, fileSize - offset);
            if (node.type != "mdat" && node.type != "free") {
                node.body = readFile(offset + node.header, node.size - node.header);
            }
            offset += node.size;
            atoms.push_back(std::move(node));
        }
        return atoms;
    }

    static Node nodeAt(const Bytes& bytes, std::int64_t offset, std::int64_t room) {
        Reader reader(bytes);
        Node node;
        node.offset = offset;
        node.size = reader.u32();
        reader.skip(4);
        node.type = bytes.substr(4, 4);
        if (node.size == 1) {
            node.size = static_cast<std::int64_t>(reader.number(8));
            node.header = 16;
        }
        if (node.size < node.header || node.size > room) {
            throw std::runtime_error(
                fmt::format("atom \"{}\" of {} bytes does not fit into {}", node.type, node.size, room));
        }
        return node;
    }

    static std::vector<Node> children(const Bytes& body) {
        std::vector<Node> nodes;
        for (std::size_t offset = 0; offset < body.size();) {
            const Bytes rest = body.substr(offset);
            Node node =
                nodeAt(rest, static_cast<std::int64_t>(offset), static_cast<std::int64_t>(rest.size()));
            node.body = rest.substr(static_cast<std::size_t>(node.header),
                                    static_cast<std::size_t>(node.size - node.header));
            offset += static_cast<std::size_t>(node.size);
            nodes.push_back(std::move(node));
        }
        return nodes;
    }

    static const Node* find(const std::vector<Node>& nodes, const std::string& type) {
        const auto found =
            std::find_if(nodes.begin(), nodes.end(), [&](const Node& node) { return node.type == type; });
        return found == nodes.end() ? nullptr : &*found;
    }

    static const Bytes& need(const std::vector<Node>& nodes, const std::string& type) {
        const Node* node = find(nodes, type);
        if (!node) {
            throw std::runtime_error("atom \"" + type + "\" is missing");
        }
        if (std::count_if(nodes.begin(), nodes.end(), [&](const Node& n) { return n.type == type; }) != 1) {
            throw std::runtime_error("atom \"" + type + "\" is there twice");
        }
        return node->body;
    }

    void index(const Bytes& moov) {
        const std::vector<Node> nodes = children(moov);
        expect(!find(nodes, "mvex"), "an ordinary movie says that fragments follow");
        Reader header(need(nodes, "mvhd"));
        const bool wide = header.u32() >> 24 == 1;
        header.skip(wide ? 16 : 8);
        movie.timeScale = header.u32();
        movie.duration = header.wide(wide);
        header.skip(4 + 2 + 10 + 36 + 24);
        const std::uint32_t nextTrack = header.u32();
        expect(header.left() == 0, "mvhd is longer than its fields");
        std::set<std::uint32_t> ids;
        std::int64_t longest = 0;
        for (const Node& node : nodes) {
            if (node.type == "trak") {
                movie.tracks.emplace_back();
                track(node.body, movie.tracks.back());
                expect(ids.insert(movie.tracks.back().id).second, "two tracks have one id");
                longest = std::max(longest, movie.tracks.back().trackDuration);
            }
        }
        expect(!ids.empty() && nextTrack > *ids.rbegin(), "the next track's id is taken");
        expect(longest == movie.duration,
               fmt::format("the movie lasts {} ticks, its longest track {}", movie.duration, longest));
        if (const Node* userData = find(nodes, "udta")) {
            children(userData->body);
        }
        if (const Node* metadata = find(nodes, "meta")) {
            const std::vector<Node> parts = children(metadata->body);
            need(parts, "hdlr");
            need(parts, "keys");
            children(need(parts, "ilst"));
        }
    }

    void track(const Bytes& trak, WalkedTrack& result) {
        const std::vector<Node> nodes = children(trak);
        Reader header(need(nodes, "tkhd"));
        const bool wide = header.u32() >> 24 == 1;
        header.skip(wide ? 16 : 8);
        result.id = header.u32();
        header.skip(4);
        result.trackDuration = header.wide(wide);
        header.skip(8 + 8 + 36 + 8);
        expect(header.left() == 0, "tkhd is longer than its fields");
        const std::vector<Node> mediaNodes = children(need(nodes, "mdia"));
        mediaHeader(need(mediaNodes, "mdhd"), result);
        result.handler = need(mediaNodes, "hdlr").substr(8, 4);
        const std::vector<Node> information = children(need(mediaNodes, "minf"));
        const std::map<std::string, std::string> headers = {
            {"vide", "vmhd"}, {"soun", "smhd"}, {"tmcd", "gmhd"}};
        need(information, headers.at(result.handler));
        need(children(need(information, "dinf")), "dref");
        tables(children(need(information, "stbl")), result);
        edits(find(nodes, "edts"), result);
        if (const Node* references = find(nodes, "tref")) {
            for (const Node& kind : children(references->body)) {
                Reader ids(kind.body);
                while (ids.left() > 0) {
                    result.references.push_back(ids.u32());
                }
            }
        }
    }

    void mediaHeader(const Bytes& body, WalkedTrack& result) {
        Reader reader(body);
        const bool wide = reader.u32() >> 24 == 1;
        reader.skip(wide ? 16 : 8);
        result.timeScale = reader.u32();
        result.mediaDuration = reader.wide(wide);
        reader.skip(4);
        expect(reader.left() == 0, "mdhd is longer than its fields");
        expect(result.timeScale > 0, "a track's time scale is 0");
    }

    void edits(const Node* edts, WalkedTrack& track) {
        std::int64_t length = 0;
        std::int64_t start = 0;
        if (edts) {
            const std::vector<Node> nodes = children(edts->body);
            const Bytes list = need(nodes, "elst");
            Reader reader(list);
            const bool wide = reader.u32() >> 24 == 1;
            const std::uint32_t count = reader.u32();
            for (std::uint32_t i = 0; i < count; ++i) {
                length += reader.wide(wide);
                const std::int64_t from = wide ? reader.wide(true) : static_cast<std::int32_t>(reader.u32());
                start = i == 0 ? from : start;
                expect(from >= 0 && from <= track.mediaDuration, "an edit begins outside the media");
                expect(reader.u32() == 0x10000, "an edit does not run at normal speed");
            }
            expect(reader.left() == 0, "elst is longer than its entries");
            expect(length == track.trackDuration, "the edits last another time than the track");
        }
        track.editStart = start;
        // Up to the next tick of the movie.
        const std::int64_t scaled = track.mediaDuration * movie.timeScale;
        const std::int64_t expected = (scaled + track.timeScale - 1) / track.timeScale;
        expect(track.trackDuration == expected,
               fmt::format("track {} lasts {} ticks, its media {}", track.id, track.trackDuration, expected));
        if (!track.samples.empty()) {
            std::int64_t first = track.samples.front().shown;
            for (const WalkedTrack::Sample& sample : track.samples) {
                first = std::min(first, sample.shown);
            }
            expect(first == start, "the first sample is not shown at the beginning");
        }
    }

    std::vector<std::pair<std::uint32_t, std::uint32_t>> runs(const Bytes& body) {
        Reader reader(body);
        reader.skip(4);
        std::vector<std::pair<std::uint32_t, std::uint32_t>> result(reader.u32());
        for (auto& [count, value] : result) {
            count = reader.u32();
            value = reader.u32();
        }
        expect(reader.left() == 0, "a table is longer than its entries");
        return result;
    }

    void tables(const std::vector<Node>& nodes, WalkedTrack& result) {
        description(need(nodes, "stsd"), result);
        sizes(need(nodes, "stsz"), result);
        times(need(nodes, "stts"), result);
        if (const Node* offsets = find(nodes, "ctts")) {
            composition(runs(offsets->body), result);
        }
        keys(find(nodes, "stss"), result);
        chunks(nodes, result);
    }

    /// Bytes of the colour table after the fixed fields of a video description, there where its number is 0:
    /// seed, flags, the last index, and four 16-bit numbers an entry.
    static std::size_t colourTableLength(const Bytes& video) {
        if (video.size() < 86 || video.substr(76, 2) != Bytes(2, '\0'))
            return 0;
        const auto last = static_cast<std::size_t>(static_cast<unsigned char>(video[84])) << 8 |
                          static_cast<unsigned char>(video[85]);
        return 8 + (last + 1) * 8;
    }

    void description(const Bytes& stsd, WalkedTrack& result) {
        Reader reader(stsd);
        reader.skip(4);
        expect(reader.u32() == 1, "a track has more than one sample description");
        const std::vector<Node> entries = children(stsd.substr(8));
        expect(entries.size() == 1, "stsd does not hold what it counts");
        result.codec = entries.at(0).type;
        result.description = entries.at(0).body;
        // Fixed fields of a video description, then atoms, which four zero bytes may end.
        if (result.handler == "vide") {
            const std::string extensions =
                result.description.substr(78 + colourTableLength(result.description));
            const bool ended =
                extensions.size() >= 4 && extensions.substr(extensions.size() - 4) == Bytes(4, '\0');
            children(ended ? extensions.substr(0, extensions.size() - 4) : extensions);
        }
    }

    void sizes(const Bytes& body, WalkedTrack& result) {
        Reader reader(body);
        reader.skip(4);
        const std::uint32_t common = reader.u32();
        result.samples.resize(reader.u32());
        for (WalkedTrack::Sample& sample : result.samples) {
            sample.bytes = common != 0 ? common : reader.u32();
            expect(sample.bytes > 0, "a sample has no bytes");
            sample.key = false;
        }
        expect(reader.left() == 0, "stsz is longer than its entries");
    }

    void times(const Bytes& body, WalkedTrack& result) {
        std::int64_t time = 0;
        std::size_t sample = 0;
        for (const auto& [count, duration] : runs(body)) {
            expect(duration > 0, "a sample lasts no time");
            for (std::uint32_t i = 0; i < count && sample < result.samples.size(); ++i, ++sample) {
                result.samples[sample].decoded = result.samples[sample].shown = time;
                time += duration;
            }
        }
        expect(sample == result.samples.size() && total(runs(body)) == result.samples.size(),
               "stts and stsz count different samples");
        expect(time == result.mediaDuration,
               fmt::format("track {}: mdhd says {} ticks, stts {}", result.id, result.mediaDuration, time));
    }

    static std::uint64_t total(const std::vector<std::pair<std::uint32_t, std::uint32_t>>& table) {
        std::uint64_t count = 0;
        for (const auto& run : table) {
            count += run.first;
        }
        return count;
    }

    void composition(const std::vector<std::pair<std::uint32_t, std::uint32_t>>& table, WalkedTrack& result) {
        std::size_t sample = 0;
        std::set<std::int64_t> shown;
        for (const auto& [count, offset] : table) {
            for (std::uint32_t i = 0; i < count && sample < result.samples.size(); ++i, ++sample) {
                result.samples[sample].shown += static_cast<std::int32_t>(offset);
                expect(shown.insert(result.samples[sample].shown).second, "two pictures are shown at once");
            }
        }
        expect(total(table) == result.samples.size(), "ctts and stsz count different samples");
    }

    void keys(const Node* stss, WalkedTrack& result) {
        if (!stss) {
            for (WalkedTrack::Sample& sample : result.samples) {
                sample.key = true;
            }
            return;
        }
        Reader reader(stss->body);
        reader.skip(4);
        const std::uint32_t count = reader.u32();
        std::uint32_t previous = 0;
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint32_t key = reader.u32();
            expect(key > previous && key <= result.samples.size(), "stss is out of order or out of range");
            previous = key;
            result.samples.at(key - 1).key = true;
        }
        expect(result.samples.empty() || result.samples.front().key,
               "a track does not begin with a key sample");
    }

    void chunks(const std::vector<Node>& nodes, WalkedTrack& result) {
        const Node* narrow = find(nodes, "stco");
        const Node* wide = find(nodes, "co64");
        if (!narrow == !wide) {
            throw std::runtime_error("there is not exactly one of stco and co64");
        }
        result.wideOffsets = wide;
        Reader reader(wide ? wide->body : narrow->body);
        reader.skip(4);
        std::vector<std::int64_t> offsets(reader.u32());
        for (std::int64_t& offset : offsets) {
            offset = reader.wide(result.wideOffsets);
        }
        expect(reader.left() == 0, "the chunk table is longer than its entries");
        assign(need(nodes, "stsc"), offsets, result);
    }

    void assign(const Bytes& stsc, const std::vector<std::int64_t>& offsets, WalkedTrack& result) {
        Reader reader(stsc);
        reader.skip(4);
        const std::uint32_t entries = reader.u32();
        std::vector<std::pair<std::uint32_t, std::uint32_t>> runs;
        for (std::uint32_t i = 0; i < entries; ++i) {
            const std::uint32_t first = reader.u32();
            runs.emplace_back(first, reader.u32());
            expect(reader.u32() == 1, "stsc names a description that is not there");
            expect(i == 0 ? first == 1 : first > runs[i - 1].first, "stsc is out of order");
        }
        expect(reader.left() == 0, "stsc is longer than its entries");
        std::size_t sample = 0;
        for (std::size_t run = 0; run < runs.size(); ++run) {
            const std::size_t end = run + 1 < runs.size() ? runs[run + 1].first - 1 : offsets.size();
            for (std::size_t chunk = runs[run].first - 1; chunk < end && chunk < offsets.size(); ++chunk) {
                std::int64_t offset = offsets[chunk];
                for (std::uint32_t i = 0; i < runs[run].second && sample < result.samples.size();
                     ++i, ++sample) {
                    result.samples[sample].offset = offset;
                    offset += result.samples[sample].bytes;
                }
                used.emplace_back(offsets[chunk], offset);
            }
        }
        expect(sample == result.samples.size(), "the chunks hold fewer samples than stsz counts");
        std::uint64_t held = 0;
        for (std::size_t run = 0; run < runs.size(); ++run) {
            const std::size_t end = run + 1 < runs.size() ? runs[run + 1].first - 1 : offsets.size();
            held += (end - (runs[run].first - 1)) * runs[run].second;
        }
        expect(held == result.samples.size(), "stsc and stsz count different samples");
    }

    void checkChunks() {
        std::sort(used.begin(), used.end());
        for (std::size_t i = 0; i < used.size(); ++i) {
            const auto [begin, end] = used[i];
            const bool inside =
                std::any_of(media.begin(), media.end(), [&, first = begin, last = end](const auto& m) {
                    return first >= m.first && last <= m.second;
                });
            expect(inside, fmt::format("the chunk at {} lies outside the media data", begin));
            expect(i == 0 || begin >= used[i - 1].second,
                   fmt::format("the chunk at {} overlaps another", begin));
        }
    }

    void checkReferences() {
        const WalkedTrack* pictures = movie.track("vide");
        const WalkedTrack* timecode = movie.track("tmcd");
        expect(pictures && pictures == &movie.tracks.front(), "the first track holds no pictures");
        if (timecode && pictures) {
            expect(pictures->references == std::vector<std::uint32_t>{timecode->id},
                   "the pictures do not refer to the time code");
            expect(timecode->mediaDuration == pictures->mediaDuration &&
                       timecode->timeScale == pictures->timeScale,
                   "the time code lasts another time than the pictures");
        } else {
            expect(!pictures || pictures->references.empty(),
                   "the pictures refer to a track that is not there");
        }
    }

    WalkedMovie& movie;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file;
    std::int64_t fileSize = 0;
    std::vector<std::pair<std::int64_t, std::int64_t>> media;
    std::vector<std::pair<std::int64_t, std::int64_t>> used;
};

}  // namespace

const WalkedTrack* WalkedMovie::track(const std::string& handler) const {
    const auto found = std::find_if(tracks.begin(), tracks.end(),
                                    [&](const WalkedTrack& track) { return track.handler == handler; });
    return found == tracks.end() ? nullptr : &*found;
}

WalkedMovie walkMovie(const std::string& path) {
    WalkedMovie movie;
    try {
        Walk(path, movie).run();
    } catch (const std::exception& error) {
        movie.problems.push_back(error.what());
    }
    return movie;
}

std::string problemsOf(const std::string& path) {
    std::string text;
    for (const std::string& problem : walkMovie(path).problems) {
        text += problem + "\n";
    }
    return text;
}

}  // namespace Morvane::Tests
