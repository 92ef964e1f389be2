#include "host/farm/Tally.h"

#include <fmt/format.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

namespace Corvel {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<const char*, 4> stateNames = {"waiting", "running", "done", "failed"};

Tally parse(const std::string& path) {
    Tally tally;
    std::ifstream file(path);
    const Json json = file ? Json::parse(file, nullptr, false) : Json();
    if (!json.is_object()) {
        return tally;
    }
    const std::string state = json.value("state", "");
    for (std::size_t i = 0; i < stateNames.size(); ++i) {
        if (state == stateNames[i]) {
            tally.state = static_cast<Tally::State>(i);
        }
    }
    tally.node = json.value("node", "");
    tally.attempt = json.value("attempt", 0);
    tally.done = json.value("done", 0);
    tally.bytes = json.value("bytes", std::uint64_t{0});
    tally.seconds = json.value("seconds", 0.0);
    tally.error = json.value("error", "");
    return tally;
}

bool writeText(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::trunc);
    file << text;
    file.close();
    return static_cast<bool>(file);
}

}  // namespace

Tally readTally(const FarmPlace& place, const FarmState& state, int chunk) {
    Tally tally;
    try {
        tally = parse(place.tallyFile(chunk));
    } catch (const Json::exception&) {
        // Half a file of a machine that died says nothing.
    }
    std::error_code ignored;
    if (std::filesystem::exists(place.chunkFile(chunk), ignored)) {
        tally.state = Tally::State::Done;
        tally.done = state.chunks[static_cast<std::size_t>(chunk) - 1].count;
        tally.bytes = std::filesystem::file_size(place.chunkFile(chunk), ignored);
    } else if (tally.state == Tally::State::Done) {
        tally.state = Tally::State::Waiting;
    }
    return tally;
}

std::vector<Tally> readTallies(const FarmPlace& place, const FarmState& state) {
    std::vector<Tally> tallies;
    for (int chunk = 1; chunk <= static_cast<int>(state.chunks.size()); ++chunk) {
        tallies.push_back(readTally(place, state, chunk));
    }
    return tallies;
}

void writeTally(const FarmPlace& place, int chunk, const Tally& tally) noexcept {
    try {
        const Json json = {{"state", stateNames.at(static_cast<std::size_t>(tally.state))},
                           {"node", tally.node},
                           {"attempt", tally.attempt},
                           {"done", tally.done},
                           {"bytes", tally.bytes},
                           {"seconds", tally.seconds},
                           {"error", tally.error}};
        const std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
        const std::string fresh = place.tallyFile(chunk) + "." + tally.node;
        if (!writeText(fresh, text) || std::rename(fresh.c_str(), place.tallyFile(chunk).c_str()) != 0) {
            std::remove(fresh.c_str());
            writeText(place.tallyFile(chunk), text);
        }
    } catch (const std::exception&) {
        // As it says.
    }
}

std::vector<std::string> failureTexts(const FarmState& state, const std::vector<Tally>& tallies) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < tallies.size(); ++i) {
        if (tallies[i].state == Tally::State::Failed) {
            texts.push_back(fmt::format("{} failed on {}: {}", chunkText(state, static_cast<int>(i) + 1),
                                        tallies[i].node, tallies[i].error));
        }
    }
    return texts;
}

}  // namespace Corvel
