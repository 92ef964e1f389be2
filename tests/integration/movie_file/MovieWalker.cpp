#include "MovieWalker.h"

#include "MovieAtoms.h"
#include "SampleTableWalk.h"

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
        const std::vector<Atom> atoms = topLevel();
        int indexes = 0;
        for (const Atom& atom : atoms) {
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

    std::vector<Atom> topLevel() {
        std::vector<Atom> atoms;
        for (std::int64_t offset = 0; offset < fileSize;) {
            const Bytes header = readFile(offset, std::min<std::int64_t>(16, fileSize - offset));
            Atom atom = atomAt(header, offset, fileSize - offset);
            if (atom.type != "mdat" && atom.type != "free") {
                atom.body = readFile(offset + atom.header, atom.size - atom.header);
            }
            offset += atom.size;
            atoms.push_back(std::move(atom));
        }
        return atoms;
    }

    void index(const Bytes& moov) {
        const std::vector<Atom> atoms = children(moov);
        expect(!find(atoms, "mvex"), "an ordinary movie says that fragments follow");
        Fields header(need(atoms, "mvhd"));
        const bool wide = header.u32() >> 24 == 1;
        header.skip(wide ? 16 : 8);
        movie.timeScale = header.u32();
        movie.duration = header.wide(wide);
        header.skip(4 + 2 + 10 + 36 + 24);
        const std::uint32_t nextTrack = header.u32();
        expect(header.left() == 0, "mvhd is longer than its fields");
        std::set<std::uint32_t> ids;
        std::int64_t longest = 0;
        for (const Atom& atom : atoms) {
            if (atom.type == "trak") {
                movie.tracks.emplace_back();
                track(atom.body, movie.tracks.back());
                expect(ids.insert(movie.tracks.back().id).second, "two tracks have one id");
                longest = std::max(longest, movie.tracks.back().trackDuration);
            }
        }
        expect(!ids.empty() && nextTrack > *ids.rbegin(), "the next track's id is taken");
        expect(longest == movie.duration,
               fmt::format("the movie lasts {} ticks, its longest track {}", movie.duration, longest));
        if (const Atom* userData = find(atoms, "udta")) {
            children(userData->body);
        }
        if (const Atom* metadata = find(atoms, "meta")) {
            const std::vector<Atom> parts = children(metadata->body);
            need(parts, "hdlr");
            need(parts, "keys");
            children(need(parts, "ilst"));
        }
    }

    void track(const Bytes& trak, WalkedTrack& result) {
        const std::vector<Atom> atoms = children(trak);
        Fields header(need(atoms, "tkhd"));
        const bool wide = header.u32() >> 24 == 1;
        header.skip(wide ? 16 : 8);
        result.id = header.u32();
        header.skip(4);
        result.trackDuration = header.wide(wide);
        header.skip(8 + 8 + 36 + 8);
        expect(header.left() == 0, "tkhd is longer than its fields");
        const std::vector<Atom> mediaAtoms = children(need(atoms, "mdia"));
        mediaHeader(need(mediaAtoms, "mdhd"), result);
        result.handler = need(mediaAtoms, "hdlr").substr(8, 4);
        const std::vector<Atom> information = children(need(mediaAtoms, "minf"));
        const std::map<std::string, std::string> headers = {
            {"vide", "vmhd"}, {"soun", "smhd"}, {"tmcd", "gmhd"}};
        need(information, headers.at(result.handler));
        need(children(need(information, "dinf")), "dref");
        const std::vector<FileRange> covered =
            walkSampleTables(children(need(information, "stbl")), result, movie.problems);
        chunks.insert(chunks.end(), covered.begin(), covered.end());
        edits(find(atoms, "edts"), result);
        if (const Atom* references = find(atoms, "tref")) {
            for (const Atom& kind : children(references->body)) {
                Fields ids(kind.body);
                while (ids.left() > 0) {
                    result.references.push_back(ids.u32());
                }
            }
        }
    }

    void mediaHeader(const Bytes& body, WalkedTrack& result) {
        Fields fields(body);
        const bool wide = fields.u32() >> 24 == 1;
        fields.skip(wide ? 16 : 8);
        result.timeScale = fields.u32();
        result.mediaDuration = fields.wide(wide);
        fields.skip(4);
        expect(fields.left() == 0, "mdhd is longer than its fields");
        expect(result.timeScale > 0, "a track's time scale is 0");
    }

    void edits(const Atom* edts, WalkedTrack& track) {
        std::int64_t length = 0;
        std::int64_t start = 0;
        if (edts) {
            const std::vector<Atom> atoms = children(edts->body);
            const Bytes list = need(atoms, "elst");
            Fields fields(list);
            const bool wide = fields.u32() >> 24 == 1;
            const std::uint32_t count = fields.u32();
            for (std::uint32_t i = 0; i < count; ++i) {
                length += fields.wide(wide);
                const std::int64_t from = wide ? fields.wide(true) : static_cast<std::int32_t>(fields.u32());
                start = i == 0 ? from : start;
                expect(from >= 0 && from <= track.mediaDuration, "an edit begins outside the media");
                expect(fields.u32() == 0x10000, "an edit does not run at normal speed");
            }
            expect(fields.left() == 0, "elst is longer than its entries");
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

    void checkChunks() {
        std::sort(chunks.begin(), chunks.end());
        for (std::size_t i = 0; i < chunks.size(); ++i) {
            const auto [begin, end] = chunks[i];
            const bool inside =
                std::any_of(media.begin(), media.end(), [&, first = begin, last = end](const auto& m) {
                    return first >= m.first && last <= m.second;
                });
            expect(inside, fmt::format("the chunk at {} lies outside the media data", begin));
            expect(i == 0 || begin >= chunks[i - 1].second,
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
    std::vector<FileRange> media;
    std::vector<FileRange> chunks;
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
