#include "worker/movie/AtomWriter.h"

namespace Morvane::Worker {

void AtomWriter::u8(std::uint32_t value) {
    buffer.push_back(static_cast<std::uint8_t>(value));
}

void AtomWriter::u16(std::uint32_t value) {
    u8(value >> 8);
    u8(value);
}

void AtomWriter::u32(std::uint64_t value) {
    u16(static_cast<std::uint32_t>(value >> 16));
    u16(static_cast<std::uint32_t>(value));
}

void AtomWriter::u64(std::uint64_t value) {
    u32(value >> 32);
    u32(value);
}

void AtomWriter::zeros(std::size_t count) {
    buffer.resize(buffer.size() + count);
}

void AtomWriter::append(ByteView bytes) {
    buffer.insert(buffer.end(), bytes.begin(), bytes.end());
}

void AtomWriter::text(std::string_view bytes) {
    buffer.insert(buffer.end(), bytes.begin(), bytes.end());
}

void AtomWriter::pascalText(std::string_view bytes) {
    const std::string_view kept = bytes.substr(0, 255);
    u8(static_cast<std::uint32_t>(kept.size()));
    text(kept);
}

std::size_t AtomWriter::begin(std::uint32_t type) {
    const std::size_t start = buffer.size();
    u32(0);
    u32(type);
    return start;
}

void AtomWriter::end(std::size_t start) {
    const auto size = static_cast<std::uint32_t>(buffer.size() - start);
    for (std::size_t i = 0; i < 4; ++i) {
        buffer[start + i] = static_cast<std::uint8_t>(size >> (24 - 8 * i));
    }
}

}  // namespace Morvane::Worker
