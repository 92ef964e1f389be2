#include "host/image_library/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace Corvel {
namespace {

class Descriptor {
public:
    explicit Descriptor(const std::string& path) : number(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~Descriptor() {
        if (number >= 0) {
            close(number);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    const int number;
};

}  // namespace

bool readWholeFile(const std::string& path, std::vector<unsigned char>& bytes) {
    const Descriptor file(path);
    struct stat facts {};
    if (file.number < 0 || fstat(file.number, &facts) != 0 || !S_ISREG(facts.st_mode)) {
        return false;
    }
    bytes.resize(static_cast<std::size_t>(facts.st_size));
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t got = read(file.number, bytes.data() + done, bytes.size() - done);
        if (got > 0) {
            done += static_cast<std::size_t>(got);
        } else if (got == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

}  // namespace Corvel
