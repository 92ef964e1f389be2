#include "worker/encode/PngEncoder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "worker/picture/PictureConverter.h"
#include "worker/picture/PicturePool.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace Morvane::Worker {
namespace {

EncodingPlan pngPlan(const std::string& settings, int width, int height, bool alpha = false) {
    EncodingRequest request;
    request.settings = Settings::parse(settings, *findCodec("png "));
    request.width = width;
    request.height = height;
    request.quality = 4;
    request.hasAlpha = alpha;
    return planEncoding(request);
}

/// Samples of every value, in no order.
FramePointer pictureOf(PicturePool& pool, const EncodingPlan& plan, unsigned seed = 1) {
    std::vector<float> pixels(4 * static_cast<std::size_t>(plan.width) *
                              static_cast<std::size_t>(plan.height));
    for (float& value : pixels) {
        seed = seed * 1664525U + 1013904223U;
        value = static_cast<float>(seed >> 8) / 0x1000000;
    }
    FramePointer frame = pool.take();
    PictureConverter(plan).convert(pixels.data(), *frame);
    return frame;
}

std::string rowsOf(const AVFrame& frame) {
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const auto bytes = static_cast<std::size_t>(frame.width) *
                       static_cast<std::size_t>(av_get_padded_bits_per_pixel(av_pix_fmt_desc_get(format))) /
                       8;
    std::string rows;
    for (int y = 0; y < frame.height; ++y)
        rows.append(
            reinterpret_cast<const char*>(frame.data[0]) + static_cast<std::ptrdiff_t>(y) * frame.linesize[0],
            bytes);
    return rows;
}

/// By libav's own decoder; null where it finds the packet damaged.
FramePointer decoded(AVPacket& packet) {
    const CodecPointer decoder(avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_PNG)));
    decoder->err_recognition = AV_EF_CRCCHECK | AV_EF_EXPLODE;
    FramePointer frame(av_frame_alloc());
    const bool good = avcodec_open2(decoder.get(), nullptr, nullptr) == 0 &&
                      avcodec_send_packet(decoder.get(), &packet) == 0 &&
                      avcodec_receive_frame(decoder.get(), frame.get()) == 0;
    return good ? std::move(frame) : nullptr;
}

/// Everything before the picture's own chunks.
std::string headOf(const AVPacket& packet) {
    const std::string bytes(reinterpret_cast<const char*>(packet.data),
                            static_cast<std::size_t>(packet.size));
    return bytes.substr(0, bytes.find("IDAT") - 4);
}

struct Trial {
    const char* settings;
    int width, height;
    bool alpha;
};

class PngEncoderPictures : public testing::TestWithParam<Trial> {};

TEST_P(PngEncoderPictures, ComeBackBitForBitWithTheHeadOfTheLibrary) {
    const EncodingPlan plan =
        pngPlan(GetParam().settings, GetParam().width, GetParam().height, GetParam().alpha);
    PicturePool pool(plan);
    ASSERT_TRUE(PngEncoder::takes(plan));
    PngEncoder sut(plan);
    EncoderContext library(plan);
    for (const unsigned seed : {1U, 2U}) {
        const FramePointer picture = pictureOf(pool, plan, seed);

        sut.send(picture.get());
        const PacketPointer packet = sut.receive();

        ASSERT_NE(packet, nullptr);
        EXPECT_NE(packet->flags & AV_PKT_FLAG_KEY, 0);
        EXPECT_EQ(sut.receive(), nullptr);
        const FramePointer back = decoded(*packet);
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(back->format, picture->format);
        EXPECT_EQ(rowsOf(*back), rowsOf(*picture));
        library.send(picture.get());
        EXPECT_EQ(headOf(*packet), headOf(*library.receive()));
    }
}

INSTANTIATE_TEST_SUITE_P(EveryFormat, PngEncoderPictures,
                         testing::Values(Trial{"bitdepth=8", 65, 17, false}, Trial{"bitdepth=8", 1, 1, false},
                                         Trial{"bitdepth=8", 33, 5, true}, Trial{"", 1, 3, false},
                                         Trial{"", 128, 72, false}, Trial{"", 67, 31, true},
                                         Trial{"aspect=16/15:colour=bt601", 720, 2, true}));

TEST(PngEncoder, IsNoLargerThanTheLibraryAtItsFastest) {
    const EncodingPlan plan = pngPlan("", 256, 128);
    PicturePool pool(plan);
    PngEncoder sut(plan);
    EncoderContext library(plan);
    const FramePointer picture = pictureOf(pool, plan);

    sut.send(picture.get());
    library.send(picture.get());

    EXPECT_LE(sut.receive()->size, library.receive()->size);
}

TEST(PngEncoder, LeavesWhatAPersonChoseToTheLibrary) {
    EXPECT_FALSE(PngEncoder::takes(pngPlan("compression=9", 64, 48)));
    EXPECT_FALSE(PngEncoder::takes(pngPlan("prediction=paeth", 64, 48)));
}

}  // namespace
}  // namespace Morvane::Worker
