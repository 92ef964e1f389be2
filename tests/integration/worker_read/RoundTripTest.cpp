#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include "MovieWalker.h"
#include "quicktime/QuickTimeCodecWriterIPCController.h"
#include "tests/integration/codecs/CodecTrial.h"
#include "tests/integration/real_worker/Commands.h"
#include "tests/integration/worker_read/ReaderFixture.h"
#include "timecode/Timecode.h"

namespace Morvane::Testing {
namespace {

using Worker::Codec;
using Worker::EncodingPlan;
using Worker::EncodingRequest;
using Worker::Lossless;
using Worker::Trial::Pixels;

constexpr int frameCount = 3;
constexpr float rate = 29.97f;

std::vector<std::string> codecTypes(bool losslessOnly) {
    std::vector<std::string> types;
    for (const Codec& codec : Worker::codecTable())
        if (!losslessOnly || codec.lossless != Lossless::Never)
            types.emplace_back(codec.type);
    return types;
}

std::string nameOf(const ::testing::TestParamInfo<std::string>& type) {
    std::string name = type.param;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}

/// How a picture's samples are measured: R, G, B, or Y, Cb, Cr with their own steps.
class Ruler {
public:
    explicit Ruler(const EncodingPlan& plan) : isRgb(std::string(plan.picture->chroma) == "rgb") {
        const double steps = std::ldexp(1.0, plan.picture->bits - 8);
        const bool full = isRgb || plan.colour.range == AVCOL_RANGE_JPEG;
        const double highest = 256 * steps - 1;
        codes = {full ? highest : 219 * steps, full ? highest : 224 * steps, highest};
        const bool old = plan.colour.matrix == AVCOL_SPC_SMPTE170M || plan.colour.matrix == AVCOL_SPC_BT470BG;
        red = old ? 0.299 : 0.2126;
        blue = old ? 0.114 : 0.0722;
    }

    /// How far apart two RGBA pixels are, in code values: the first component, the other two, alpha.
    std::array<double, 3> difference(const float* one, const float* other) const {
        const auto left = components(one), right = components(other);
        const double second = std::fabs(left[1] - right[1]), third = std::fabs(left[2] - right[2]);
        return {std::fabs(left[0] - right[0]) * codes[0],
                std::max(second, third) * (isRgb ? codes[0] : codes[1]),
                std::fabs(static_cast<double>(one[3]) - other[3]) * codes[2]};
    }

private:
    std::array<double, 3> components(const float* pixel) const {
        const double r = pixel[0], g = pixel[1], b = pixel[2];
        if (isRgb)
            return {r, g, b};
        const double y = red * r + (1 - red - blue) * g + blue * b;
        return {y, (b - y) / (2 * (1 - blue)), (r - y) / (2 * (1 - red))};
    }

    const bool isRgb;
    std::array<double, 3> codes{};  ///< code values from 0 to 1
    double red, blue;               ///< parts of luma
};

/// Every codec, written and read again through both controllers: floats in, floats out.
class RoundTrip : public ReaderFixture, public ::testing::WithParamInterface<std::string> {
protected:
    EncodingRequest requestFor(int bits, int quality, bool alpha) const {
        EncodingRequest request;
        request.settings = Worker::Settings::parse(settingsFor(bits), codec);
        request.width = 256;
        request.height = 144;
        if (!codec.sizes.only.empty()) {
            const auto smallest =
                std::min_element(codec.sizes.only.begin(), codec.sizes.only.end(),
                                 [](const auto& one, const auto& other) { return one.width < other.width; });
            request.width = smallest->width;
            request.height = smallest->height;
        }
        request.quality = quality;
        request.hasAlpha = alpha;
        return request;
    }

    static std::string settingsFor(int bits) { return bits == 0 ? "" : "bitdepth=" + std::to_string(bits); }

    /// Frames of a photograph, and at the end one of flat colours.
    static std::vector<Pixels> picturesFor(const EncodingRequest& request) {
        std::vector<Pixels> pictures;
        for (int frame = 1; frame < frameCount; ++frame)
            pictures.push_back(
                Worker::naturalPicture(request.width, request.height, frame, request.hasAlpha));
        pictures.push_back(Worker::Trial::colourBars(request.width, request.height));
        return pictures;
    }

    std::string sound() {
        const std::string file = path("sound.wav");
        if (!std::filesystem::exists(file))
            runFfmpeg({"-f", "lavfi", "-i", "anoisesrc=sample_rate=48000:duration=0.1:seed=5", "-ac", "2",
                       "-c:a", "pcm_s24le", file});
        return file;
    }

    static std::string samplesOf(const std::string& file) {
        return outputOf({"ffmpeg", "-v", "error", "-i", file, "-map", "0:a", "-f", "s32le", "-"});
    }

    void write(const EncodingRequest& request, int bits, const std::vector<Pixels>& pictures) {
        QuickTime::QuickTimeCodecWriterIPCController writer(newBridgeName());
        writer.codecList();
        writer.setCodec(static_cast<int>(&codec - Worker::codecTable().data()));
        writer.configure(request.width, request.height, 0, request.quality, request.hasAlpha,
                         settingsFor(bits), rate);
        ASSERT_EQ(writer.openFile(path("a.mov"), 1), 0);
        for (std::size_t frame = 0; frame < pictures.size(); ++frame)
            ASSERT_EQ(writer.addFrame(static_cast<int>(frame),
                                      reinterpret_cast<const char*>(pictures[frame].data()), false),
                      0);
        writer.finishVideo();
        writer.addAudioFile(sound().c_str(), 0);
        const auto counted = Timecode::toFrameRateCode(rate);
        writer.addTimecodeTrack(counted, parseTimecode("10:11:12:13", counted, Timecode::Mode::NonDrop),
                                "A001 \"night\": 7");
        ASSERT_EQ(writer.closeFile(true), 0);
    }

    /// What all of them must bring back, whatever they do to pictures.
    void expectFacts(const EncodingRequest& request) {
        EXPECT_EQ(Tests::problemsOf(path("a.mov")), "");
        open(path("a.mov"));
        ASSERT_EQ(openStatus, 0);
        const MovieInfo movie = info();
        EXPECT_EQ(movie.width, request.width);
        EXPECT_EQ(movie.height, request.height);
        EXPECT_EQ(movie.frames, frameCount);
        EXPECT_FLOAT_EQ(movie.rate, rate);
        auto known = metadata();
        EXPECT_EQ(known["input/timecode"], "10:11:12:13");
        EXPECT_EQ(known["quicktime/timecode_rate"], "30");
        EXPECT_EQ(known["quicktime/reel"], "A001 \"night\": 7");
        EXPECT_EQ(samplesOf(path("a.mov")), samplesOf(sound()));
    }

    void expectExact(const EncodingRequest& request, const std::vector<Pixels>& pictures) {
        const EncodingPlan plan = planEncoding(request);
        const Ruler ruler(plan);
        const std::string chroma = plan.picture->chroma;
        const bool wholeChroma = chroma == "rgb" || chroma == "444";
        for (int number = 0; number < frameCount; ++number) {
            const Pixels& wanted = pictures[static_cast<std::size_t>(number)];
            const std::vector<float> frame = read(number);
            ASSERT_EQ(frame.size(), wanted.size());
            // Half a code value and the rounding of floats.
            constexpr double half = 0.505;
            const bool flat = number == frameCount - 1;
            const auto width = static_cast<std::size_t>(request.width);
            for (std::size_t pixel = 0; pixel < wanted.size() / 4; ++pixel) {
                const auto [first, others, alpha] = ruler.difference(&frame[4 * pixel], &wanted[4 * pixel]);
                ASSERT_LE(first, half) << "frame " << number << " pixel " << pixel;
                // Subsampled chroma is its neighbours', too.
                const std::size_t inBar = pixel % width % (width / 8);
                if (wholeChroma || (flat && inBar > 8 && inBar + 8 < width / 8)) {
                    ASSERT_LE(others, half) << "frame " << number << " pixel " << pixel;
                }
                if (request.hasAlpha && plan.picture->alpha) {
                    ASSERT_LE(alpha, half) << "frame " << number << " pixel " << pixel;
                } else {
                    ASSERT_EQ(frame[4 * pixel + 3], 1.0f);
                }
            }
        }
    }

    const Codec& codec = *Worker::findCodec(GetParam());
};

class LosslessRoundTrip : public RoundTrip {};

TEST_P(LosslessRoundTrip, FramesComeBackWithinHalfACodeValue) {
    for (const bool alpha : {false, true}) {
        for (const int bits : {8, 10, 12, 16}) {
            const bool hasBits = std::any_of(codec.pictures.begin(), codec.pictures.end(),
                                             [&](const auto& picture) { return picture.bits == bits; });
            if (!hasBits || (alpha && !codec.hasAlpha()))
                continue;
            SCOPED_TRACE(std::to_string(bits) + (alpha ? " bits, alpha" : " bits"));
            const EncodingRequest request = requestFor(bits, 5, alpha);
            const auto pictures = picturesFor(request);
            write(request, bits, pictures);
            expectFacts(request);
            expectExact(request, pictures);
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_P(RoundTrip, FramesAtTheBestQualityComeBackAlike) {
    static const std::map<std::string, double> weak = {{"cvid", 36}, {"smc ", 28}, {"SVQ1", 39}};
    const auto found = weak.find(GetParam());
    const EncodingRequest request = requestFor(0, 4, false);
    const auto pictures = picturesFor(request);

    write(request, 0, pictures);

    expectFacts(request);
    EXPECT_EQ(metadata()["quicktime/codec_name"], codec.name);
    for (int number = 0; number < frameCount - 1; ++number)
        EXPECT_GE(Worker::Trial::psnr(read(number), pictures[static_cast<std::size_t>(number)]),
                  found == weak.end() ? 39.5 : found->second)
            << number;
}

INSTANTIATE_TEST_SUITE_P(Codecs, LosslessRoundTrip, ::testing::ValuesIn(codecTypes(true)), nameOf);
INSTANTIATE_TEST_SUITE_P(Codecs, RoundTrip, ::testing::ValuesIn(codecTypes(false)), nameOf);

}  // namespace
}  // namespace Morvane::Testing
