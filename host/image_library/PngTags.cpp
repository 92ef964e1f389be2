#include "host/image_library/PngTags.h"

#include <libdeflate.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <span>

namespace Corvel {
namespace {

struct Number {
    const char* word;
    unsigned char number;
};

// ITU-T H.273, tables 2 and 3.
constexpr Number primariesNumbers[] = {{"bt709", 1},     {"bt470m", 4},   {"bt470bg", 5}, {"smpte170m", 6},
                                       {"smpte240m", 7}, {"film", 8},     {"bt2020", 9},  {"smpte428", 10},
                                       {"smpte431", 11}, {"smpte432", 12}};
constexpr Number transferNumbers[] = {
    {"bt709", 1},         {"gamma22", 4},    {"bt470m", 4},    {"gamma28", 5},      {"bt470bg", 5},
    {"smpte170m", 6},     {"smpte240m", 7},  {"linear", 8},    {"bt2020-10", 14},   {"bt2020-12", 15},
    {"iec61966-2-1", 13}, {"smpte2084", 16}, {"smpte428", 17}, {"arib-std-b67", 18}};

// 0 where there is none.
unsigned char numberOf(std::span<const Number> numbers, const std::string& word) {
    const auto found = std::find_if(numbers.begin(), numbers.end(),
                                    [&](const Number& number) { return word == number.word; });
    return found == numbers.end() ? 0 : found->number;
}

void append(std::string& bytes, std::size_t number) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(number >> shift & 0xFF);
    }
}

std::string chunk(const std::string& typeAndData) {
    std::string bytes;
    append(bytes, typeAndData.size() - 4);
    bytes += typeAndData;
    append(bytes, libdeflate_crc32(0, typeAndData.data(), typeAndData.size()));
    return bytes;
}

}  // namespace

bool tagPng(const std::string& path, const std::string& primaries, const std::string& transfer) {
    constexpr std::size_t endOfHeader = 8 + 12 + 13;
    constexpr char rgb = 0;
    constexpr char fullRange = 1;
    const unsigned char primariesNumber = numberOf(primariesNumbers, primaries);
    const unsigned char transferNumber = numberOf(transferNumbers, transfer);
    if (primariesNumber == 0 || transferNumber == 0) {
        return true;
    }
    std::ifstream in(path, std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(in), {});
    bytes.insert(std::min(endOfHeader, bytes.size()),
                 chunk({'c', 'I', 'C', 'P', static_cast<char>(primariesNumber),
                        static_cast<char>(transferNumber), rgb, fullRange}));
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    return in.good() && out.good();
}

}  // namespace Corvel
