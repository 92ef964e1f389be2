#include "host/images/ExrContents.h"

#include <algorithm>
#include <array>
#include <utility>

#include "host/images/ExrFile.h"

namespace Corvel {
namespace {

const char* storageText(exr_storage_t storage) {
    switch (storage) {
        case EXR_STORAGE_SCANLINE:
            return "scan lines";
        case EXR_STORAGE_TILED:
            return "tiles";
        case EXR_STORAGE_DEEP_SCANLINE:
            return "deep scan lines";
        case EXR_STORAGE_DEEP_TILED:
            return "deep tiles";
        default:
            return "unknown";
    }
}

// In the order of the numbers that files have, OpenEXR file layout, attribute "compression".
const char* compressionText(exr_compression_t compression) {
    constexpr std::array names{"none", "rle", "zips", "zip", "piz", "pxr24", "b44", "b44a", "dwaa", "dwab"};
    const auto number = static_cast<std::size_t>(compression);
    return number < names.size() ? names[number] : "unknown";
}

const char* typeText(exr_pixel_type_t type) {
    return type == EXR_PIXEL_HALF ? "half" : type == EXR_PIXEL_FLOAT ? "float" : "uint";
}

std::string nameOf(exr_const_context_t file, int part) {
    const char* name = nullptr;
    return exr_get_name(file, part, &name) == EXR_ERR_SUCCESS && name ? name : "";
}

void readWindows(exr_const_context_t file, int index, FilePart& part) {
    exr_attr_box2i_t box{};
    if (exr_get_display_window(file, index, &box) == EXR_ERR_SUCCESS) {
        part.display = exrWindow(box).value_or(Window());
    }
    if (exr_get_data_window(file, index, &box) == EXR_ERR_SUCCESS) {
        part.data = exrWindow(box).value_or(Window());
    }
}

FilePart partOf(const ExrFile& file, int index) {
    const exr_const_context_t context = file.context();
    FilePart part;
    part.name = nameOf(context, index);
    part.view = exrText(file, index, "view");
    exr_storage_t storage = EXR_STORAGE_LAST_TYPE;
    exr_get_storage(context, index, &storage);
    part.storage = storageText(storage);
    part.deep = storage == EXR_STORAGE_DEEP_SCANLINE || storage == EXR_STORAGE_DEEP_TILED;
    exr_compression_t compression = EXR_COMPRESSION_LAST_TYPE;
    exr_get_compression(context, index, &compression);
    part.compression = compressionText(compression);
    readWindows(context, index, part);
    const exr_attr_chlist_t* list = nullptr;
    if (exr_get_channels(context, index, &list) == EXR_ERR_SUCCESS) {
        part.channels.reserve(static_cast<std::size_t>(list->num_channels));
        for (int i = 0; i < list->num_channels; ++i) {
            const exr_attr_chlist_entry_t& entry = list->entries[i];
            part.channels.push_back({{entry.name.str, static_cast<std::size_t>(entry.name.length)},
                                     typeText(entry.pixel_type),
                                     entry.x_sampling != 1 || entry.y_sampling != 1});
        }
    }
    return part;
}

void addView(FileContents& contents, const std::string& view) {
    if (!view.empty() &&
        std::find(contents.views.begin(), contents.views.end(), view) == contents.views.end()) {
        contents.views.push_back(view);
    }
}

// The names that a file of one part gives its views, the default one first.
void addStatedViews(exr_const_context_t file, FileContents& contents) {
    std::int32_t count = 0;
    if (exr_attr_get_string_vector(file, 0, "multiView", &count, nullptr) != EXR_ERR_SUCCESS || count < 1) {
        return;
    }
    std::vector<const char*> names(static_cast<std::size_t>(count));
    if (exr_attr_get_string_vector(file, 0, "multiView", &count, names.data()) != EXR_ERR_SUCCESS) {
        return;
    }
    for (const char* name : names) {
        addView(contents, name ? name : "");
    }
}

}  // namespace

std::string exrText(const ExrFile& file, int part, const char* name) {
    std::int32_t length = 0;
    const char* text = nullptr;
    if (exr_attr_get_string(file.context(), part, name, &length, &text) != EXR_ERR_SUCCESS) {
        return "";
    }
    return {text, static_cast<std::size_t>(length)};
}

FileContents contentsOf(const ExrFile& file) {
    FileContents contents;
    contents.format = "OpenEXR";
    int count = 0;
    exr_get_count(file.context(), &count);
    for (int part = 0; part < count; ++part) {
        contents.parts.push_back(partOf(file, part));
    }
    addStatedViews(file.context(), contents);
    for (const FilePart& part : contents.parts) {
        addView(contents, part.view);
    }
    return contents;
}

}  // namespace Corvel
