#include "host/images/ExrScanlines.h"

#include <fmt/format.h>
#include <libdeflate.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <optional>

#include "host/images/ExrFile.h"
#include "host/images/ExrKernels.h"
#include "host/images/ImageReader.h"

namespace Corvel {
namespace {

[[noreturn]] void refuse(const std::string& path, int row, const char* reason) {
    throw UnreadableImage(fmt::format("cannot read {}: the pixels from row {} on {}", path, row, reason));
}

// A channel of the file that becomes a plane of the picture.
struct Channel {
    int plane;
    std::size_t offset;  // bytes from the start of a row of the file
    exr_pixel_type_t type;

    bool isHalf() const { return type == EXR_PIXEL_HALF; }
};

// Where everything is in a row of the file and in the picture.
struct Plan {
    bool hasOnlyHalves() const {
        return std::all_of(channels.begin(), channels.end(), std::mem_fn(&Channel::isHalf));
    }

    exr_compression_t compression = EXR_COMPRESSION_NONE;
    Window data;
    std::vector<Channel> channels;
    std::size_t rowBytes = 0;  // all channels of one row of the file
    int blockRows = 1;
    Window display;
    Window shown;  // of the data window, in the file's coordinates as all of them
};

// Some rows of the file with all their channels.
struct Block {
    const std::uint8_t* bytes;
    std::size_t size;
    bool split;  // bytes at even places first, then those at odd places
};

// False where a wanted channel is missing or one is subsampled, which is left to the general reader.
bool planChannels(const exr_attr_chlist_t& list, const ExrScanlines::ChannelNames& names, int planes,
                  Plan& plan) {
    const std::size_t width = static_cast<std::size_t>(plan.data.width);
    for (int i = 0; i < list.num_channels; ++i) {
        const exr_attr_chlist_entry_t& entry = list.entries[i];
        if (entry.x_sampling != 1 || entry.y_sampling != 1) {
            return false;
        }
        for (int plane = 0; plane < planes; ++plane) {
            if (names[static_cast<std::size_t>(plane)] == entry.name.str) {
                plan.channels.push_back({plane, plan.rowBytes, entry.pixel_type});
            }
        }
        plan.rowBytes += width * (entry.pixel_type == EXR_PIXEL_HALF ? 2 : 4);
    }
    return plan.channels.size() == static_cast<std::size_t>(planes);
}

std::optional<Plan> planOf(exr_const_context_t file, int part, const ExrScanlines::ChannelNames& names,
                           const Window& display, int planes) {
    exr_storage_t storage;
    exr_attr_box2i_t box;
    const exr_attr_chlist_t* list = nullptr;
    Plan plan;
    if (exr_get_storage(file, part, &storage) != EXR_ERR_SUCCESS || storage != EXR_STORAGE_SCANLINE ||
        exr_get_compression(file, part, &plan.compression) != EXR_ERR_SUCCESS ||
        exr_get_data_window(file, part, &box) != EXR_ERR_SUCCESS ||
        exr_get_channels(file, part, &list) != EXR_ERR_SUCCESS ||
        exr_get_scanlines_per_chunk(file, part, &plan.blockRows) != EXR_ERR_SUCCESS || plan.blockRows < 1) {
        return std::nullopt;
    }
    if (plan.compression != EXR_COMPRESSION_NONE && plan.compression != EXR_COMPRESSION_ZIP &&
        plan.compression != EXR_COMPRESSION_ZIPS) {
        return std::nullopt;
    }
    const std::optional<Window> data = exrWindow(box);
    if (!data) {
        return std::nullopt;
    }
    plan.data = *data;
    if (!planChannels(*list, names, planes, plan)) {
        return std::nullopt;
    }
    plan.display = display;
    plan.shown = overlapOf(plan.data, display);
    return plan;
}

// Whole numbers, such as those that tell objects apart, keep their values.
float numberOfBits(float bits) {
    std::uint32_t number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return static_cast<float>(number);
}

// One channel of one row. In a split block the two halves of each pair of bytes stand half a block apart.
void placeChannel(const Block& block, std::size_t at, exr_pixel_type_t type, float* to, std::size_t count) {
    const bool half = type == EXR_PIXEL_HALF;
    const std::uint8_t* even = block.bytes + at / 2;
    const std::uint8_t* odd = even + (block.size + 1) / 2;
    if (block.split && half) {
        joinHalves(even, odd, to, count);
    } else if (block.split) {
        joinFloats(even, odd, to, count);
    } else if (half) {
        widenHalves(block.bytes + at, to, count);
    } else {
        std::copy_n(block.bytes + at, count * sizeof(float), reinterpret_cast<std::uint8_t*>(to));
    }
    if (type == EXR_PIXEL_UINT) {
        std::transform(to, to + count, to, numberOfBits);
    }
}

// The same for a channel of halves that stays one.
void placeHalves(const Block& block, std::size_t at, Picture::Code* to, std::size_t count) {
    if (block.split) {
        const std::uint8_t* even = block.bytes + at / 2;
        joinHalves(even, even + (block.size + 1) / 2, to, count);
    } else {
        std::memcpy(to, block.bytes + at, count * sizeof(Picture::Code));
    }
}

void placeBlock(const Plan& plan, const Block& block, int firstRow, int rows, Picture& picture) {
    const Window& shown = plan.shown;
    const std::size_t columns = static_cast<std::size_t>(shown.width);
    const std::size_t skipped = static_cast<std::size_t>(shown.x - plan.data.x);
    const int end = std::min(firstRow + rows, shown.y + shown.height);
    for (int y = std::max(firstRow, shown.y); y < end; ++y) {
        const std::size_t row = static_cast<std::size_t>(y - firstRow) * plan.rowBytes;
        for (const Channel& channel : plan.channels) {
            const std::size_t at = row + channel.offset + skipped * (channel.isHalf() ? 2 : 4);
            const int left = shown.x - plan.display.x;
            const int line = y - plan.display.y;
            if (picture.table() != nullptr) {
                placeHalves(block, at, picture.codeRow(channel.plane, line) + left, columns);
            } else {
                placeChannel(block, at, channel.type, picture.row(channel.plane, line) + left, columns);
            }
        }
    }
}

}  // namespace

ExrScanlines::ExrScanlines() : decompressor(libdeflate_alloc_decompressor(), libdeflate_free_decompressor) {
    if (!decompressor) {
        throw std::bad_alloc();
    }
}

ExrScanlines::~ExrScanlines() = default;

bool ExrScanlines::read(const ExrFile& file, int part, const ChannelNames& names, const Window& display,
                        Picture& picture) {
    const std::optional<Plan> plan = planOf(file.context(), part, names, display, picture.channels());
    if (!plan || (picture.table() != nullptr && !plan->hasOnlyHalves())) {
        return false;
    }
    const std::string& path = file.path();

    // Blocks are counted from the top of the data window.
    const int skipped = (plan->shown.y - plan->data.y) / plan->blockRows * plan->blockRows;
    for (int row = plan->data.y + skipped; row < plan->shown.y + plan->shown.height; row += plan->blockRows) {
        exr_chunk_info_t chunk;
        if (exr_read_scanline_chunk_info(file.context(), part, row, &chunk) != EXR_ERR_SUCCESS) {
            refuse(path, row, "are missing; the file is cut short or damaged");
        }
        const std::size_t size = static_cast<std::size_t>(chunk.height) * plan->rowBytes;
        if (chunk.unpacked_size != size || chunk.packed_size > size) {
            refuse(path, row, "have a wrong length; the file is damaged");
        }
        packed.resize(chunk.packed_size);
        if (exr_read_chunk(file.context(), part, &chunk, packed.data()) != EXR_ERR_SUCCESS) {
            refuse(path, row, "are missing; the file is cut short or damaged");
        }

        // A block that compression would not make smaller is stored as it is.
        Block block{packed.data(), size, false};
        if (chunk.packed_size < size) {
            inflated.resize(size);
            if (libdeflate_zlib_decompress(decompressor.get(), packed.data(), packed.size(), inflated.data(),
                                           size, nullptr) != LIBDEFLATE_SUCCESS) {
                refuse(path, row, "cannot be decompressed; the file is damaged");
            }
            sumDifferences(inflated.data(), size);
            block = {inflated.data(), size, true};
        }
        placeBlock(*plan, block, chunk.start_y, chunk.height, picture);
    }
    return true;
}

}  // namespace Corvel
