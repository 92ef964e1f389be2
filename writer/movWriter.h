#pragma once

#include <cstdint>
#include <string>

#include "Kex/Image/Writer.h"
#include "quicktime/QuickTimeCodecWriterInterface.h"

namespace Morvane::Writer {

/// Writes a QuickTime movie from the frames of a Write node. It encodes nothing itself: from construction to
/// destruction it owns one controller and with it one worker process, to which everything goes.
///
/// A writer whose controller could not be made stays inert: it shows no knobs, handles no knob changes,
/// writes nothing and says so at every frame.
///
/// The movie is opened at the first frame and open until `finish`; the next frame then begins a new one.
/// Codec, quality, key-frame rate, frame rate and settings are fixed when it is opened. All calls come on one
/// thread of the host's.
class movWriter : public Kex::Image::Writer {
public:
    /// Starts the worker and asks it for the codecs. Throws what starting it throws.
    explicit movWriter(Kex::Image::Write* node);
    /// Stops the worker and waits for it. Throws std::runtime_error when the worker is gone already.
    ~movWriter() noexcept(false) override;

    void knobs(Kex::Image::Knob_Closure& closure) override;
    const char* help() override;
    const Kex::Image::LUT* defaultLUT() override;
    bool writesFilePerFrame() const override { return false; }
    bool needsFramesInOrder() const override { return true; }
    bool appearsAtFinish() const override { return true; }
    void execute() override;
    void finish() override;
    int knob_changed(Kex::Image::Knob* changed) override;

private:
    void declareCodecKnobs(Kex::Image::Knob_Closure& closure);
    void declareAudioKnobs(Kex::Image::Knob_Closure& closure);
    void declareTimeCodeKnob(Kex::Image::Knob_Closure& closure);
    void editCodecSettings();
    void changeCodec(const Kex::Image::Knob& changed);
    void setKnobText(const char* name, const std::string& text);
    void setKnobValue(const char* name, double value);

    /// Tells the worker everything that is settled before a movie is opened, but for the codec.
    void configure();
    bool openMovie();
    void takeTimeCodeStart();
    /// Fills width x height x 4 floats, RGBA, top row first, as far as the host doesn't abort.
    void fillFrame(float* pixels);
    void addAudio();
    void addTimeCode();

    QuickTime::QuickTimeCodecWriterInterface* controller;  // owned, see LiveWriterControllers
    bool controllerAvailable = false;
    bool fileOpen = false;
    std::string settings;  ///< the codec's own text
    std::int32_t quality = 4;
    bool useFormatAspect = false;
    std::int32_t codec = 0;             ///< index into the worker's list
    const char* audioFile = nullptr;    ///< owned by the host's knob
    float audioOffset = 0;              ///< in audioOffsetUnits
    std::int32_t audioOffsetUnits = 0;  ///< 0 seconds, 1 frames
    float fps = 24;
    std::int32_t keyFrameRate = 1;
    bool flatten = true;
    bool writeTimeCode = false;
    std::int64_t timeCodeStart = 0;  ///< in frames, taken when the movie is opened
};

/// What the host calls to make a writer. Null when there is no memory for one.
Kex::Image::Writer* build(Kex::Image::Write* node);

}  // namespace Morvane::Writer
