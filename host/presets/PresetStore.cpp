#include "host/presets/PresetStore.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <utility>

#include "host/images/NameMatch.h"
#include "host/render/Failure.h"

namespace Corvel {
namespace {

namespace fs = std::filesystem;

constexpr const char* ending = ".json";
constexpr std::size_t longestName = 100;  // bytes

std::string contentsOf(const fs::path& path) {
    std::ifstream file(path);
    std::ostringstream contents;
    contents << file.rdbuf();
    if (!file) {
        throw Failure(Exit::Usage, fmt::format("cannot read {}: {}", path.string(), std::strerror(errno)));
    }
    return contents.str();
}

// A name is a file's name on every system and can be told from an option.
void checkName(const std::string& name) {
    const bool control = std::any_of(name.begin(), name.end(), [](unsigned char character) {
        return character < ' ' || character == '/' || character == '\\';
    });
    if (name.empty() || name.size() > longestName || name.front() == '.' || name.front() == '-' || control) {
        throw Failure(Exit::Usage, fmt::format("\"{}\" is no name for a preset", name));
    }
}

void addPresets(const std::string& folder, bool shipped, std::map<std::string, Preset>& found) {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        const fs::path& path = entry.path();
        if (path.extension() != ending || path.filename().string().front() == '.') {
            continue;
        }
        try {
            Preset preset = readPreset(contentsOf(path), path.string());
            preset.name = path.stem().string();
            preset.shipped = shipped;
            found[preset.name] = std::move(preset);
        } catch (const Failure& failure) {
            spdlog::warn(failure.what());
        }
    }
}

void writeWhole(const std::string& path, const std::string& contents) {
    const std::string temporary = fmt::format("{}.{}.new", path, getpid());
    std::ofstream file(temporary, std::ios::trunc);
    file << contents;
    file.close();
    if (!file || std::rename(temporary.c_str(), path.c_str()) != 0) {
        const int reason = errno;
        unlink(temporary.c_str());
        throw Failure(Exit::Usage, fmt::format("cannot write {}: {}", path, std::strerror(reason)));
    }
}

}  // namespace

PresetStore::PresetStore(std::string shippedFolder, const std::string& ownFolder)
    : shipped(std::move(shippedFolder)), own(fs::path(ownFolder).is_absolute() ? ownFolder : "") {}

std::vector<Preset> PresetStore::list() const {
    std::map<std::string, Preset> found;
    addPresets(shipped, true, found);
    addPresets(own, false, found);
    std::vector<Preset> presets;
    presets.reserve(found.size());
    for (auto& [name, preset] : found) {
        presets.push_back(std::move(preset));
    }
    return presets;
}

Preset PresetStore::load(const std::string& name) const {
    std::string names;
    std::vector<Preset> fitting;
    for (Preset& preset : list()) {
        names += (names.empty() ? "" : ", ") + preset.name;
        if (preset.name == name) {
            return preset;
        }
        if (!name.empty() && lowered(preset.name).compare(0, name.size(), lowered(name)) == 0) {
            fitting.push_back(std::move(preset));
        }
    }
    if (fitting.size() != 1) {
        throw Failure(Exit::Usage, fmt::format("{} preset \"{}\"; there are {}",
                                               fitting.empty() ? "there is no" : "there is more than one",
                                               name, names.empty() ? "none" : names));
    }
    return fitting.front();
}

std::string PresetStore::ownPath(const std::string& name) const {
    checkName(name);
    if (own.empty()) {
        throw Failure(Exit::Usage, "there is no folder for presets: neither XDG_CONFIG_HOME nor HOME is set");
    }
    return own + "/" + name + ending;
}

std::string PresetStore::save(const Preset& preset) const {
    const std::string path = ownPath(preset.name);
    std::error_code error;
    fs::create_directories(own, error);
    if (error) {
        throw Failure(Exit::Usage, fmt::format("cannot make the folder {}: {}", own, error.message()));
    }
    writeWhole(path, presetJson(preset));
    return path;
}

void PresetStore::remove(const std::string& name) const {
    const std::string path = ownPath(name);
    if (unlink(path.c_str()) == 0) {
        return;
    }
    const int reason = errno;
    const std::vector<Preset> rest = list();
    const bool isShipped =
        std::any_of(rest.begin(), rest.end(), [&](const Preset& preset) { return preset.name == name; });
    if (reason == ENOENT && isShipped) {
        throw Failure(Exit::Usage, fmt::format("the preset {} comes with corvel and stays", name));
    }
    throw Failure(Exit::Usage, fmt::format("cannot delete {}: {}", path, std::strerror(reason)));
}

std::string personalPresetFolder() {
    const char* const config = std::getenv("XDG_CONFIG_HOME");
    if (config != nullptr && config[0] == '/') {
        return std::string(config) + "/corvel/presets";
    }
    const char* const home = std::getenv("HOME");
    return home != nullptr && home[0] == '/' ? std::string(home) + "/.config/corvel/presets" : "";
}

PresetStore presetStore(const std::string& bundleContents) {
    return {bundleContents + "/Resources/presets", personalPresetFolder()};
}

}  // namespace Corvel
