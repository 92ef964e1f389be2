#include "host/images/ExrFile.h"

namespace Corvel {

ExrFile::ExrFile(const std::string& path) : path_(path) {
    exr_context_initializer_t options = EXR_DEFAULT_CONTEXT_INITIALIZER;
    // The library would print; the general reader, which has the file next, gives the reason.
    options.error_handler_fn = [](exr_const_context_t, exr_result_t, const char*) {};
    options.flags = EXR_CONTEXT_FLAG_SILENT_HEADER_PARSE | EXR_CONTEXT_FLAG_DISABLE_CHUNK_RECONSTRUCTION;
    if (exr_start_read(&context_, path.c_str(), &options) != EXR_ERR_SUCCESS) {
        context_ = nullptr;
    }
}

ExrFile::~ExrFile() {
    if (context_) {
        exr_finish(&context_);
    }
}

std::optional<Window> exrWindow(const exr_attr_box2i_t& box) {
    const std::int64_t width = std::int64_t{box.max.x} - box.min.x + 1;
    const std::int64_t height = std::int64_t{box.max.y} - box.min.y + 1;
    if (width < 1 || height < 1 || width * height > INT32_MAX) {
        return std::nullopt;
    }
    return Window{box.min.x, box.min.y, static_cast<int>(width), static_cast<int>(height)};
}

}  // namespace Corvel
