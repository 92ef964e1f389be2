#include "tests/unit/host/IntegerStatementFixture.h"

namespace Corvel {
namespace {

using OIIO::ImageSpec;

/// Where chunks end that are not the header.
constexpr std::size_t endOfPngHeader = 8 + 12 + 13;

class PngStatementTest : public IntegerStatementFixture {
protected:
    std::string pngWith(const std::string& chunks) const {
        const std::string path = written("a.png", ImageSpec(9, 5, 3, OIIO::TypeUInt8));
        std::string bytes = bytesOf(path);
        writeBytes(path, bytes.insert(endOfPngHeader, chunks));
        return path;
    }
};

TEST_F(PngStatementTest, SaysTheSameToBothReaders) {
    for (const OIIO::TypeDesc& type : {OIIO::TypeUInt8, OIIO::TypeUInt16}) {
        for (int channels = 1; channels <= 4; ++channels) {
            for (const char* space : {"", "sRGB"}) {
                ImageSpec spec(9, 5, channels, type);
                if (*space != 0) {
                    spec.attribute("oiio:ColorSpace", space);
                }
                spec.attribute("oiio:UnassociatedAlpha", 1);
                expectOrdinary(written("a.png", spec));
            }
        }
    }
}

TEST_F(PngStatementTest, WithUsualChunksSaysTheSameToBothReaders) {
    const std::string gamma = pngChunk("gAMA" + bigEndian(45455));
    const std::string srgb = pngChunk(std::string("sRGB\0", 5));
    std::string primaries = "cHRM";
    for (const int share : {31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000}) {
        primaries += bigEndian(static_cast<std::size_t>(share));
    }
    const std::string square = pngChunk("pHYs" + bigEndian(2835) + bigEndian(2835) + '\1');
    const std::string text = pngChunk(std::string("tEXtSoftware\0somebody's", 23));
    const std::string time = pngChunk(std::string("tIME\x07\xEA\x0B\x15\x14\x05\x06", 11));
    for (const std::string& chunks :
         {gamma, srgb, gamma + srgb, srgb + gamma, gamma + pngChunk(primaries), square, text, time,
          gamma + srgb + pngChunk(primaries) + square + text + time}) {
        expectOrdinary(pngWith(chunks), {}, chunks);
    }
}

TEST_F(PngStatementTest, WithAnythingElseIsLeftToTheLibrary) {
    const std::string gamma = pngChunk("gAMA" + bigEndian(45455));
    for (const std::string& chunks :
         {pngChunk("gAMA" + bigEndian(100000)), pngChunk("gAMA" + bigEndian(45454)), gamma + gamma,
          pngChunk(std::string("sRGB\7", 5)), pngChunk("cHRM" + std::string(32, '\1')),
          pngChunk("pHYs" + bigEndian(2) + bigEndian(1) + '\0'),
          pngChunk("oFFs" + bigEndian(2) + bigEndian(0) + '\0'), pngChunk("iCCPx"), pngChunk("eXIfMM"),
          pngChunk("cICP\1\1\0\1"), pngChunk("tRNS" + std::string(6, '\0')), pngChunk("iTXtSoftware"),
          pngChunk("PLTEabc"), pngChunk(std::string("tEXtcolorSpace\0ACEScg", 21)),
          pngChunk(std::string("tEXtOrientation\0006", 17)),
          pngChunk(std::string("tEXtoiio:ColorSpace\0Linear", 26)), pngChunk("tEXtSoftware"),
          gamma.substr(0, gamma.size() - 1) + 'x'}) {
        expectLeft(pngWith(chunks), chunks);
    }
    std::string bytes = bytesOf(written("interlaced.png", ImageSpec(9, 5, 3, OIIO::TypeUInt8)));
    bytes[endOfPngHeader - 5] = 1;
    writeBytes(folder / "interlaced.png", bytes.replace(8, 25, pngChunk(bytes.substr(12, 17))));
    expectLeft(folder / "interlaced.png", "interlaced");
}

}  // namespace
}  // namespace Corvel
