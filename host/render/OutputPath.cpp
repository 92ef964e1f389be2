#include "host/render/OutputPath.h"

#include <filesystem>
#include <system_error>

namespace Corvel {

std::string outputBehindLinks(const std::string& output) {
    constexpr int mostLinks = 40;  // as many as the system follows
    std::filesystem::path path(output);
    for (int followed = 0; followed < mostLinks; ++followed) {
        std::error_code error;
        const std::filesystem::path target = std::filesystem::read_symlink(path, error);
        if (error) {
            return path.string();
        }
        path = path.parent_path() / target;
    }
    return output;
}

}  // namespace Corvel
