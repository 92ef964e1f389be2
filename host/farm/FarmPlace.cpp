#include "host/farm/FarmPlace.h"

#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "host/render/OutputPath.h"

namespace Corvel {

namespace fs = std::filesystem;

FarmPlace::FarmPlace(const std::string& output)
    : movie(fs::absolute(outputBehindLinks(output)).lexically_normal().string()) {}

std::string FarmPlace::folder() const {
    const fs::path path(movie);
    return path.parent_path() / fmt::format(".{}.farm", path.filename().string());
}

std::string FarmPlace::stateFile() const {
    return folder() + ".json";
}

std::string FarmPlace::chunkFile(int chunk) const {
    return fmt::format("{}/{:04}.mov", folder(), chunk);
}

std::string FarmPlace::tallyFile(int chunk) const {
    return fmt::format("{}/{:04}.json", folder(), chunk);
}

std::string FarmPlace::logFile(const std::string& part) const {
    return fmt::format("{}/{}.log", folder(), part);
}

std::string FarmPlace::partFile(int chunk) const {
    std::random_device random;
    return fmt::format("{}/{:04}.{:08x}.part.mov", folder(), chunk, random());
}

void FarmPlace::removeAllButChunks() const {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(folder(), ignored)) {
        const fs::path& path = entry.path();
        const bool isPart = path.stem().extension() == ".part" || path.filename().string().front() == '.';
        if (path.extension() != ".mov" || isPart) {
            fs::remove(path, ignored);
        }
    }
    fs::remove(stateFile(), ignored);
    fs::remove(folder(), ignored);  // only where it is empty
}

void FarmPlace::removeAll() const {
    std::error_code ignored;
    fs::remove(stateFile(), ignored);
    fs::remove_all(folder(), ignored);
}

std::string nodeName() {
    if (const char* const name = std::getenv("SLURMD_NODENAME")) {
        return name;
    }
    std::array<char, 256> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "this machine";
}

}  // namespace Corvel
