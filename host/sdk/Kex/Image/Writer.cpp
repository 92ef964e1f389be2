#include "Kex/Image/Writer.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>

#include "Kex/Image/Write.h"

namespace Kex::Image {

namespace {

/// Longest file name that every file system takes, in bytes.
constexpr std::size_t longestName = 255;

std::string randomDigits() {
    std::random_device source;
    return fmt::format("{:08x}{:08x}", source(), source());
}

/// ".NAME.HASH.EXTENSION" beside the output, NAME shortened where the whole would be too long.
std::filesystem::path hiddenNameBeside(const std::filesystem::path& output) {
    const std::string tail = "." + randomDigits() + output.extension().string();
    std::string stem = output.stem().string();
    if (const std::size_t room = longestName - 1 - tail.size(); stem.size() > room) {
        stem.resize(room);
    }
    return output.parent_path() / ("." + stem + tail);
}

/// Makes a rename in that folder last. False with errno set when the system refuses.
bool syncFolder(const std::filesystem::path& folder) {
    const int descriptor = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor == -1) {
        // A folder that may be written but not listed cannot be synced; the name in it is as safe as it gets.
        return errno == EACCES || errno == EPERM;
    }
    // Some network file systems know no sync of folders.
    const bool synced = fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP;
    const int reason = errno;
    close(descriptor);
    errno = reason;
    return synced;
}

}  // namespace

Writer::Writer(Write* node) : write_(node) {}

Writer::~Writer() noexcept(false) = default;

void Writer::knobs(Knob_Closure&) {}

const char* Writer::help() {
    return "";
}

void Writer::abi6_0_1() {}

const LUT* Writer::defaultLUT() {
    return nullptr;
}

bool Writer::writesFilePerFrame() const {
    return true;
}

bool Writer::needsFramesInOrder() const {
    return false;
}

int Writer::split_input() const {
    return 1;
}

double Writer::inputContext(int, double frame) const {
    return frame;
}

bool Writer::appearsAtFinish() const {
    return false;
}

void Writer::finish() {}

int Writer::knob_changed(Knob*) {
    return 0;
}

const std::string& Writer::createFileHash() {
    while (temporaryFile_.empty()) {
        const std::filesystem::path candidate = hiddenNameBeside(write().filename());
        std::error_code ignored;
        if (!std::filesystem::exists(std::filesystem::symlink_status(candidate, ignored))) {
            temporaryFile_ = candidate.string();
        }
    }
    return temporaryFile_;
}

void Writer::renameFromHash() {
    const std::string& output = write().filename();
    if (temporaryFile_.empty()) {
        write().error("Nothing was written to %s", output.c_str());
        return;
    }
    const std::string temporary = std::exchange(temporaryFile_, {});
    if (std::rename(temporary.c_str(), output.c_str()) != 0) {
        write().error("Couldn't move %s to %s: %s", temporary.c_str(), output.c_str(), std::strerror(errno));
        return;
    }
    if (!syncFolder(std::filesystem::path(output).parent_path())) {
        write().error("Couldn't sync the folder of %s: %s", output.c_str(), std::strerror(errno));
    }
}

void Writer::to_float(int z, float* to, const float* from, const float* alpha, int width, int delta) const {
    const LUT& used = curveOf(z);
    const auto count = static_cast<std::size_t>(width);
    const auto stride = static_cast<std::size_t>(delta);
    if (alpha == nullptr || z == Chan_Alpha - 1) {
        used.toStored(to, from, count, stride);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const double divisor = alpha[i] > 0 ? alpha[i] : 1.0;
        to[i * stride] = static_cast<float>(used.toStored(from[i] / divisor) * divisor);
    }
}

void Writer::to_float(int z, float* to, const Row::Samples& from, const float* alpha, int width,
                      int delta) const {
    if (from.table() == nullptr || alpha != nullptr) {
        to_float(z, to, from.floats(), alpha, width, delta);
        return;
    }
    const LUT& curve = curveOf(z);
    lookUp(to, from.codes(), curve.type() == 0 ? from.table()->linear() : from.table()->stored(curve),
           static_cast<std::size_t>(width), static_cast<std::size_t>(delta));
}

const LUT& Writer::curveOf(int z) const {
    const LUT* const curve = z == Chan_Alpha - 1 ? nullptr : write().lut();
    return curve != nullptr ? *curve : *LUT::getLut(0);
}

}  // namespace Kex::Image
