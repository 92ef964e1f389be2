#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "host/images/ImageReader.h"
#include "tests/unit/host/TemporaryFolder.h"
#include "tests/unit/host/TestImages.h"

namespace Corvel {

/// All samples of the picture, one channel after the other.
std::vector<float> samplesOf(const Picture& picture);

/// A number of four bytes, the first the highest.
std::string bigEndian(std::size_t number);

/// A PNG chunk of these four letters and the data behind them.
std::string pngChunk(const std::string& typeAndData);

/// Files of whole numbers, and what is read of them by their statement and by the image library.
class IntegerStatementFixture : public testing::Test {
protected:
    /// Writes noise by the image library; the file's path.
    std::string written(const std::string& name, const OIIO::ImageSpec& spec) const;
    std::string tenBitDpx(const char* order = "big") const;
    /// Puts a number where that is in the file, as the file orders its bytes.
    static void put(const std::string& path, std::size_t at, std::uint32_t number, std::size_t size);

    /// The file is ordinary, and header and picture are what the image library makes of it.
    static void expectOrdinary(const std::string& path, const PictureChoice& choice = {},
                               const std::string& what = "");
    /// The file is not ordinary.
    static void expectLeft(const std::string& path, const std::string& what);

    const TemporaryFolder folder;
};

}  // namespace Corvel
