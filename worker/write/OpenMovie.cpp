#include "worker/write/OpenMovie.h"

namespace Morvane::Worker {

OpenMovie::OpenMovie(const Options& options) : plan(options.plan), path(options.path), encoder(plan) {
    MovieFile::Options fileOptions;
    fileOptions.video.parameters = &encoder.parameters();
    fileOptions.video.frameRate = plan.rate;
    fileOptions.video.compressorName = plan.codec->name;
    fileOptions.provisionalTimecode = options.provisionalTimecode;
    fileOptions.metadata = options.metadata;
    fileOptions.existing = options.existing;
    file.emplace(path, fileOptions);
    encoder.start([this](AVPacket& packet) { file->addVideoPacket(packet); });
}

void OpenMovie::keepFailure(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const StatusError& error) {
        if (!firstFailure)
            firstFailure.emplace(error);
        throw;
    }
}

std::uint64_t OpenMovie::frameBytes() const {
    return static_cast<std::uint64_t>(plan.width) * static_cast<std::uint64_t>(plan.height) * 4 *
           sizeof(float);
}

bool OpenMovie::hasSize(std::int32_t width, std::int32_t height) const {
    return plan.width == width && plan.height == height;
}

void OpenMovie::addFrame(const std::byte* pixels) {
    if (videoFinished)
        throw StatusError(Status::BadArgument, "the pictures of " + path + " are finished");
    encoder.addFrame(reinterpret_cast<const float*>(pixels));
}

void OpenMovie::finishVideo() {
    videoFinished = true;
    keepFailure([&] { encoder.finish(); });
}

void OpenMovie::setSampleFormat(const SampleFormat& format) {
    sampleFormatRefusal.reset();
    sampleFormatRefused = false;
    try {
        file->setSampleFormat(format);
    } catch (const StatusError& error) {
        sampleFormatRefusal.emplace(error);
        sampleFormatRefused = true;
        throw;
    }
}

void OpenMovie::addSamples(std::int64_t position, std::int64_t count, const std::byte* samples) {
    if (sampleFormatRefusal) {
        const StatusError told = *sampleFormatRefusal;
        sampleFormatRefusal.reset();
        throw StatusError(told);
    }
    if (sampleFormatRefused)
        throw StatusError(Status::BadArgument, "sound samples came after their format was refused");
    file->addSamples(position, count, samples);
}

void OpenMovie::finishSamples() {
    keepFailure([&] { file->finishSamples(); });
}

void OpenMovie::addAudioFile(const std::string& audioPath, double offsetSeconds) {
    keepFailure([&] { file->addAudioFile(audioPath, offsetSeconds); });
}

void OpenMovie::setTimecode(const TimecodeTrack& timecode) {
    keepFailure([&] {
        file->setTimecode(timecode);
        hasTimecode = true;
    });
}

void OpenMovie::addMetadata(const Metadata& metadata) {
    keepFailure([&] { file->addMetadata(metadata); });
}

void OpenMovie::close(bool indexFirst) {
    try {
        if (!videoFinished)
            finishVideo();
        // The settings' time code is for a movie that never gets here: it goes unless the host has named one.
        if (!hasTimecode)
            keepFailure([&] { file->setTimecode(std::nullopt); });
    } catch (const StatusError&) {
        // Kept: what has been encoded becomes a movie first.
    }
    file->finish(indexFirst);
    for (const auto& untold : {firstFailure, sampleFormatRefusal})
        if (untold)
            throw StatusError(untold->status, path + " is not whole: " + untold->what());
}

}  // namespace Morvane::Worker
