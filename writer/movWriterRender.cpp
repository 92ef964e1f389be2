#include <cstddef>

#include "Kex/Image/ChannelSet.h"
#include "Kex/Image/Iop.h"
#include "Kex/Image/MetaData.h"
#include "Kex/Image/Row.h"
#include "Kex/Image/Write.h"
#include "timecode/Timecode.h"
#include "writer/WholeNumber.h"
#include "writer/movWriter.h"

namespace Morvane::Writer {

namespace {

constexpr std::size_t channelsPerPixel = 4;
constexpr Kex::Image::ChannelSet pictureChannels = Kex::Image::Mask_RGBA;

}  // namespace

void movWriter::execute() {
    if (!controllerAvailable) {
        write().error("Quicktime not installed");
        return;
    }
    if (!fileOpen && !openMovie()) {
        return;
    }
    const Kex::Image::Format& format = write().format();
    const std::size_t pixels =
        static_cast<std::size_t>(format.width()) * static_cast<std::size_t>(format.height());
    char* const buffer = controller->acquireBuffer(pixels * channelsPerPixel);
    if (buffer == nullptr) {
        write().error("Couldn't encode frame\n");
        return;
    }
    fillFrame(reinterpret_cast<float*>(buffer));
    write().progressFraction(0.66);
    if (controller->addFrame(wholeNumber(write().frame()), buffer, false) != 0) {
        write().error("Couldn't encode frame\n");
    }
    write().progressFraction(1.0);
    controller->releaseBuffer(buffer);
}

/// Everything is said again at the next frame when the movie can't be opened.
bool movWriter::openMovie() {
    constexpr std::int32_t replaceExisting = 1;
    controller->initialise();
    controller->setCodec(codec);
    configure();
    if (controller->openFile(createFileHash(), replaceExisting) != 0) {
        write().error("Couldn't open file\n");
        return false;
    }
    fileOpen = true;
    if (writeTimeCode) {
        takeTimeCodeStart();
    }
    return true;
}

/// Leaves the start as it is where the metadata have no time code.
void movWriter::takeTimeCodeStart() {
    const Kex::Image::MetaData::Bundle metadata = write().fetchMetaData("");
    if (const Kex::Image::MetaData::Property* const timeCode = metadata.getData("input/timecode")) {
        // Read as non-drop at every rate, deliberately: the track is never drop-frame.
        timeCodeStart = Timecode::parseTimecode(timeCode->text(), Timecode::toFrameRateCode(fps),
                                                Timecode::Mode::NonDrop);
    }
}

void movWriter::fillFrame(float* pixels) {
    const int width = write().format().width();
    const int height = write().format().height();
    if (Kex::Image::Iop* const picture = write().input(0)) {
        picture->request(0, 0, width, height, pictureChannels, 1);
    }
    Kex::Image::Row row(0, width);
    for (int i = 0; i < height; ++i) {
        if (write().aborted()) {
            // The rest keeps what the buffer held, and the frame is encoded all the same, deliberately.
            return;
        }
        write().inputnget(0, height - 1 - i, 0, width, pictureChannels, row);
        float* const line =
            pixels + static_cast<std::size_t>(i) * static_cast<std::size_t>(width) * channelsPerPixel;
        for (int z = Kex::Image::Chan_Red; z <= Kex::Image::Chan_Alpha; ++z) {
            to_float(z - 1, line + (z - 1), row.samples(static_cast<Kex::Image::Channel>(z)), nullptr, width,
                     channelsPerPixel);
        }
        write().progressFraction((i + 1.0) / height / 3);
    }
}

void movWriter::finish() {
    if (!controllerAvailable) {
        return;
    }
    // Also when no frame was ever opened: the worker copes, deliberately.
    controller->finishVideo();
    addAudio();
    if (writeTimeCode) {
        addTimeCode();
    }
    if (controller->closeFile(flatten) != 0) {
        write().error("Failed to properly close file");
    }
    // Also after a failed close: what there is may be worth having.
    renameFromHash();
    fileOpen = false;
}

void movWriter::addAudio() {
    constexpr std::int32_t inFrames = 1;
    if (audioFile == nullptr || *audioFile == '\0') {
        return;
    }
    const float seconds = audioOffsetUnits == inFrames ? audioOffset / fps : audioOffset;
    controller->addAudioFile(audioFile, seconds);
}

void movWriter::addTimeCode() {
    const Kex::Image::MetaData::Bundle metadata = write().fetchMetaData("");
    const Kex::Image::MetaData::Property* const timeCode = metadata.getData("input/timecode");
    const Kex::Image::MetaData::Property* const reel = metadata.getData("quicktime/reel");
    if (timeCode == nullptr) {
        // Asks for both keys, though the reel may be missing: deliberately as it has always been.
        write().warning(
            "Skipping time code track generation, need both input/timecode and quicktime/reel present in the "
            "metadata!");
        return;
    }
    if (!timeCode->text().empty()) {
        controller->addTimecodeTrack(Timecode::toFrameRateCode(fps), timeCodeStart,
                                     reel != nullptr ? reel->text() : "");
    }
}

}  // namespace Morvane::Writer
