#include "SampleTableWalk.h"

#include <fmt/format.h>

#include <set>
#include <string_view>

namespace Morvane::Tests {

namespace {

class SampleTableWalk {
public:
    SampleTableWalk(WalkedTrack& result, std::vector<std::string>& found) : track(result), problems(found) {}

    std::vector<FileRange> walk(const std::vector<Atom>& atoms) {
        description(need(atoms, "stsd"));
        sizes(need(atoms, "stsz"));
        times(need(atoms, "stts"));
        if (const Atom* offsets = find(atoms, "ctts")) {
            composition(runs(offsets->body));
        }
        keys(find(atoms, "stss"));
        chunks(atoms);
        return covered;
    }

private:
    void expect(bool fine, std::string_view text) {
        if (!fine) {
            problems.emplace_back(text);
        }
    }

    std::vector<std::pair<std::uint32_t, std::uint32_t>> runs(const Bytes& body) {
        Fields fields(body);
        fields.skip(4);
        std::vector<std::pair<std::uint32_t, std::uint32_t>> result(fields.u32());
        for (auto& [count, value] : result) {
            count = fields.u32();
            value = fields.u32();
        }
        expect(fields.left() == 0, "a table is longer than its entries");
        return result;
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

    void description(const Bytes& stsd) {
        Fields fields(stsd);
        fields.skip(4);
        expect(fields.u32() == 1, "a track has more than one sample description");
        const std::vector<Atom> entries = children(stsd.substr(8));
        expect(entries.size() == 1, "stsd does not hold what it counts");
        track.codec = entries.at(0).type;
        track.description = entries.at(0).body;
        // Fixed fields of a video description, then atoms, which four zero bytes may end.
        if (track.handler == "vide") {
            const std::string extensions =
                track.description.substr(78 + colourTableLength(track.description));
            const bool ended =
                extensions.size() >= 4 && extensions.substr(extensions.size() - 4) == Bytes(4, '\0');
            children(ended ? extensions.substr(0, extensions.size() - 4) : extensions);
        }
    }

    void sizes(const Bytes& body) {
        Fields fields(body);
        fields.skip(4);
        const std::uint32_t common = fields.u32();
        track.samples.resize(fields.u32());
        for (WalkedTrack::Sample& sample : track.samples) {
            sample.bytes = common != 0 ? common : fields.u32();
            expect(sample.bytes > 0, "a sample has no bytes");
            sample.key = false;
        }
        expect(fields.left() == 0, "stsz is longer than its entries");
    }

    void times(const Bytes& body) {
        std::int64_t time = 0;
        std::size_t sample = 0;
        for (const auto& [count, duration] : runs(body)) {
            expect(duration > 0, "a sample lasts no time");
            for (std::uint32_t i = 0; i < count && sample < track.samples.size(); ++i, ++sample) {
                track.samples[sample].decoded = track.samples[sample].shown = time;
                time += duration;
            }
        }
        expect(sample == track.samples.size() && total(runs(body)) == track.samples.size(),
               "stts and stsz count different samples");
        expect(time == track.mediaDuration,
               fmt::format("track {}: mdhd says {} ticks, stts {}", track.id, track.mediaDuration, time));
    }

    static std::uint64_t total(const std::vector<std::pair<std::uint32_t, std::uint32_t>>& table) {
        std::uint64_t count = 0;
        for (const auto& run : table) {
            count += run.first;
        }
        return count;
    }

    void composition(const std::vector<std::pair<std::uint32_t, std::uint32_t>>& table) {
        std::size_t sample = 0;
        std::set<std::int64_t> shown;
        for (const auto& [count, offset] : table) {
            for (std::uint32_t i = 0; i < count && sample < track.samples.size(); ++i, ++sample) {
                track.samples[sample].shown += static_cast<std::int32_t>(offset);
                expect(shown.insert(track.samples[sample].shown).second, "two pictures are shown at once");
            }
        }
        expect(total(table) == track.samples.size(), "ctts and stsz count different samples");
    }

    void keys(const Atom* stss) {
        if (!stss) {
            for (WalkedTrack::Sample& sample : track.samples) {
                sample.key = true;
            }
            return;
        }
        Fields fields(stss->body);
        fields.skip(4);
        const std::uint32_t count = fields.u32();
        std::uint32_t previous = 0;
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint32_t key = fields.u32();
            expect(key > previous && key <= track.samples.size(), "stss is out of order or out of range");
            previous = key;
            track.samples.at(key - 1).key = true;
        }
        expect(track.samples.empty() || track.samples.front().key,
               "a track does not begin with a key sample");
    }

    void chunks(const std::vector<Atom>& atoms) {
        const Atom* narrow = find(atoms, "stco");
        const Atom* wide = find(atoms, "co64");
        if (!narrow == !wide) {
            throw std::runtime_error("there is not exactly one of stco and co64");
        }
        track.wideOffsets = wide;
        Fields fields(wide ? wide->body : narrow->body);
        fields.skip(4);
        std::vector<std::int64_t> offsets(fields.u32());
        for (std::int64_t& offset : offsets) {
            offset = fields.wide(track.wideOffsets);
        }
        expect(fields.left() == 0, "the chunk table is longer than its entries");
        assign(need(atoms, "stsc"), offsets);
    }

    void assign(const Bytes& stsc, const std::vector<std::int64_t>& offsets) {
        Fields fields(stsc);
        fields.skip(4);
        const std::uint32_t entries = fields.u32();
        std::vector<std::pair<std::uint32_t, std::uint32_t>> runs;
        for (std::uint32_t i = 0; i < entries; ++i) {
            const std::uint32_t first = fields.u32();
            runs.emplace_back(first, fields.u32());
            expect(fields.u32() == 1, "stsc names a description that is not there");
            expect(i == 0 ? first == 1 : first > runs[i - 1].first, "stsc is out of order");
        }
        expect(fields.left() == 0, "stsc is longer than its entries");
        std::size_t sample = 0;
        for (std::size_t run = 0; run < runs.size(); ++run) {
            const std::size_t end = run + 1 < runs.size() ? runs[run + 1].first - 1 : offsets.size();
            for (std::size_t chunk = runs[run].first - 1; chunk < end && chunk < offsets.size(); ++chunk) {
                std::int64_t offset = offsets[chunk];
                for (std::uint32_t i = 0; i < runs[run].second && sample < track.samples.size();
                     ++i, ++sample) {
                    track.samples[sample].offset = offset;
                    offset += track.samples[sample].bytes;
                }
                covered.emplace_back(offsets[chunk], offset);
            }
        }
        expect(sample == track.samples.size(), "the chunks hold fewer samples than stsz counts");
        std::uint64_t held = 0;
        for (std::size_t run = 0; run < runs.size(); ++run) {
            const std::size_t end = run + 1 < runs.size() ? runs[run + 1].first - 1 : offsets.size();
            held += (end - (runs[run].first - 1)) * runs[run].second;
        }
        expect(held == track.samples.size(), "stsc and stsz count different samples");
    }

    WalkedTrack& track;
    std::vector<std::string>& problems;
    std::vector<FileRange> covered;
};

}  // namespace

std::vector<FileRange> walkSampleTables(const std::vector<Atom>& tables, WalkedTrack& track,
                                        std::vector<std::string>& problems) {
    return SampleTableWalk(track, problems).walk(tables);
}

}  // namespace Morvane::Tests
