#pragma once

#include <openexr.h>

#include <optional>
#include <string>

#include "host/images/Picture.h"

namespace Corvel {

/// An OpenEXR file that is open for reading.
class ExrFile {
public:
    /// Does not throw: see isOpen().
    explicit ExrFile(const std::string& path);
    ~ExrFile();
    ExrFile(const ExrFile&) = delete;
    ExrFile& operator=(const ExrFile&) = delete;

    /// False for what cannot be opened or is no OpenEXR file.
    bool isOpen() const { return context_ != nullptr; }
    const std::string& path() const { return path_; }
    /// Valid while the file is; only for a file that is open.
    exr_const_context_t context() const { return context_; }

private:
    const std::string path_;
    exr_context_t context_ = nullptr;
};

/// A window as OpenEXR stores it, whose last column and row belong to it; nothing for one without pixels or
/// with more than an int can count.
std::optional<Window> exrWindow(const exr_attr_box2i_t& box);

}  // namespace Corvel
