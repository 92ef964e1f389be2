#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "quicktime/QuickTimeCodecReaderIPCController.h"
#include "tests/integration/real_worker/WorkerFixture.h"

namespace Morvane::Testing {

/// What the reader says of a movie.
struct MovieInfo {
    int width = 0, height = 0, channels = 0;
    float rate = 0;
    int aspectNumerator = 0, aspectDenominator = 0;
    int frames = 0;
    int bits = 0;
};

/// Reads movies that programs which are not ours have made, through the reader's controller.
class ReaderFixture : public WorkerFixture {
protected:
    static constexpr int width = 160;
    static constexpr int height = 96;

    void TearDown() override;

    /// Runs ffmpeg: `frames` pictures of a moving test card (160 x 96, 25 a second), encoded with `options`.
    std::string makeMovie(const std::string& name, int frames, const std::vector<std::string>& options);
    static void runFfmpeg(std::vector<std::string> arguments);

    /// A new worker with the movie open; its status is `openStatus`.
    void open(const std::string& movie, int mode = 1);
    MovieInfo info();
    std::map<std::string, std::string> metadata();

    /// Frame `number` as floats; empty, with the status in `readStatus`, where there is none.
    std::vector<float> read(int number);

    /// All frames as ffmpeg decodes and turns them, brought by `filter` to 8 bits a sample, as 0…1 floats:
    /// `samples` of them a frame.
    std::vector<std::vector<float>> framesByFfmpeg(const std::string& movie, const std::string& filter,
                                                   std::size_t samples);

    /// PSNR in dB of our RGBA against RGB.
    static double similarity(const std::vector<float>& rgba, const std::vector<float>& rgb);

    std::unique_ptr<QuickTime::QuickTimeCodecReaderIPCController> sut;
    int openStatus = 0;
    int readStatus = 0;
};

}  // namespace Morvane::Testing
