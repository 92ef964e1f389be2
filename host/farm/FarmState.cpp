#include "host/farm/FarmState.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "host/render/Failure.h"

namespace Corvel {

using Json = nlohmann::ordered_json;

// NOLINTBEGIN(readability-identifier-naming): the library finds them by these names
static void to_json(Json& json, const FarmChunk& chunk) {
    json = {{"frames", chunk.frames}, {"count", chunk.count}};
}

static void from_json(const Json& json, FarmChunk& chunk) {
    json.at("frames").get_to(chunk.frames);
    json.at("count").get_to(chunk.count);
}
// NOLINTEND(readability-identifier-naming)

namespace {

/// Calls `field(name, member)` for each.
template <typename State, typename Field>
void eachField(State& state, Field field) {
    field("engine", state.engine);
    field("program", state.program);
    field("folder", state.folder);
    field("node", state.node);
    field("input", state.input);
    field("options", state.options);
    field("first_options", state.firstOptions);
    field("other_options", state.otherOptions);
    field("join_options", state.joinOptions);
    field("chunks", state.chunks);
    field("retries", state.retries);
    field("jobs", state.jobs);
    field("width", state.width);
    field("height", state.height);
    field("submit_options", state.submitOptions);
    field("chunk_jobs", state.chunkJobs);
    field("join_job", state.joinJob);
}

[[noreturn]] void cannotWrite(const std::string& path, int systemError) {
    throw Failure(Exit::NodeFailed,
                  fmt::format("cannot write {} on {}: {}", path, nodeName(), std::strerror(systemError)));
}

}  // namespace

int FarmState::frames() const {
    int all = 0;
    for (const FarmChunk& chunk : chunks) {
        all += chunk.count;
    }
    return all;
}

bool stateExists(const FarmPlace& place) {
    std::error_code ignored;
    return std::filesystem::exists(place.stateFile(), ignored);
}

FarmState loadState(const FarmPlace& place) {
    std::ifstream file(place.stateFile());
    if (!file) {
        throw Failure(Exit::InputUnreadable,
                      fmt::format("no render in chunks of {} is under way", place.output()));
    }
    try {
        const Json json = Json::parse(file);
        FarmState state;
        eachField(state, [&](const char* name, auto& member) { json.at(name).get_to(member); });
        return state;
    } catch (const Json::exception& error) {
        throw Failure(Exit::NodeFailed, fmt::format("{} is damaged: {}", place.stateFile(), error.what()));
    }
}

void saveState(const FarmPlace& place, const FarmState& state) {
    Json json = Json::object();
    eachField(state, [&](const char* name, const auto& member) { json[name] = member; });
    const std::string fresh = place.folder() + "/state";
    std::ofstream file(fresh, std::ios::trunc);
    file << json.dump(1, ' ', false, Json::error_handler_t::replace) << '\n';
    file.close();
    if (!file || std::rename(fresh.c_str(), place.stateFile().c_str()) != 0) {
        cannotWrite(place.stateFile(), errno);
    }
}

std::string chunkText(const FarmState& state, int chunk) {
    return fmt::format("chunk {} (frames {})", chunk,
                       state.chunks.at(static_cast<std::size_t>(chunk) - 1).frames);
}

}  // namespace Corvel
