#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Morvane::Tests {

/// One track as its tables state it.
struct WalkedTrack {
    struct Sample {
        std::int64_t offset;  ///< bytes from the beginning of the file
        std::uint32_t bytes;
        std::int64_t decoded;  ///< ticks
        std::int64_t shown;    ///< ticks, before the edit list
        bool key;
    };

    std::uint32_t id = 0;
    std::string handler;  ///< "vide", "soun", "tmcd"
    std::string codec;    ///< four characters
    std::uint32_t timeScale = 0;
    std::int64_t mediaDuration = 0;  ///< ticks of the track
    std::int64_t trackDuration = 0;  ///< ticks of the movie
    std::int64_t editStart = 0;      ///< ticks of the track at which the edit begins; 0 without an edit list
    std::vector<Sample> samples;     ///< sound: one for each sample frame
    std::vector<std::uint32_t> references;
    bool wideOffsets = false;
    std::string description;  ///< bytes of the sample description
};

struct WalkedMovie {
    std::uint32_t timeScale = 0;
    std::int64_t duration = 0;
    bool indexFirst = false;
    std::vector<WalkedTrack> tracks;
    std::vector<std::string> topLevel;  ///< types in order
    /// What is wrong with it, each in words; empty when nothing is.
    std::vector<std::string> problems;

    const WalkedTrack* track(const std::string& handler) const;
};

/// Walks through an ordinary QuickTime movie atom by atom and checks what the QuickTime File Format asks:
/// sizes nest, the sample tables agree with each other, every sample lies inside media data and no two
/// tracks' chunks overlap, every duration is the sum of what it is made of. Shares no code with the program
/// that writes.
WalkedMovie walkMovie(const std::string& path);

/// The problems, one a line; empty when there are none.
std::string problemsOf(const std::string& path);

}  // namespace Morvane::Tests
