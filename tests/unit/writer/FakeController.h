#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "quicktime/QuickTimeCodecWriterInterface.h"

namespace Morvane::Writer::Testing {

/// What the fake controllers of one test answer, and what they were asked. The controllers refer to it.
struct Script {
    std::vector<const char*> codecs = {"rle \tAnimation", "png \tPNG", nullptr};
    std::vector<std::int32_t>
        openResults;  ///< answers of openFile one after the other, 0 once they are used up
    std::int32_t frameResult = 0;
    std::int32_t closeResult = 0;
    bool hasBuffer = true;
    std::string editedSettings = "edited";
    std::int32_t codecAnswer = 1;
    std::int32_t qualityAnswer = 2;
    float frameRateAnswer = 30;
    std::int32_t keyFrameRateAnswer = 5;
    bool failsToStop = false;
    bool isMissing = false;  ///< there is no controller at all

    std::vector<std::string> calls;          ///< every operation with its arguments
    std::vector<std::vector<float>> frames;  ///< what addFrame was handed
    std::vector<std::string> openedPaths;
    int alive = 0;  ///< controllers that exist
    std::vector<float> buffer;
};

/// Records every call as a line of text.
class FakeController : public QuickTime::QuickTimeCodecWriterInterface {
public:
    explicit FakeController(Script& theScript) : script(theScript) { ++script.alive; }

    ~FakeController() noexcept(false) override {
        --script.alive;
        if (script.failsToStop) {
            throw std::runtime_error("Worker process already stopped?");
        }
    }

    void initialise() override { note("initialise"); }

    std::int32_t openFile(const std::string& path, std::int32_t mode) override {
        note("openFile mode " + std::to_string(mode));
        script.openedPaths.push_back(path);
        const std::size_t attempt = script.openedPaths.size() - 1;
        return attempt < script.openResults.size() ? script.openResults[attempt] : 0;
    }

    void finishVideo() override { note("finishVideo"); }
    void finishSamples() override { note("finishSamples"); }

    std::int32_t closeFile(bool flatten) override {
        note(flatten ? "closeFile flat" : "closeFile");
        return script.closeResult;
    }

    std::int32_t addFrame(std::int32_t frame, const char* pixels, bool flag) override {
        note("addFrame " + std::to_string(frame) + (flag ? " flag" : "") +
             (pixels == reinterpret_cast<const char*>(script.buffer.data()) ? "" : " elsewhere"));
        script.frames.push_back(script.buffer);
        return script.frameResult;
    }

    std::int32_t addSamples(std::int64_t, std::int64_t, const char*) override {
        return unexpected("addSamples");
    }

    void setSampleFormat(std::int32_t, bool, std::uint32_t, const std::string&) override {
        unexpected("setSampleFormat");
    }

    std::int32_t setProperties(const Property::PropertyList&) override { return unexpected("setProperties"); }

    std::int32_t addTimecodeTrack(Timecode::FrameRate rate, std::int64_t startFrame,
                                  const std::string& reel) override {
        note("addTimecodeTrack " + rate.ratioText() + " " + std::to_string(startFrame) + " \"" + reel + "\"");
        return 0;
    }

    std::int32_t addAudioFile(const char* path, float offset) override {
        note("addAudioFile " + std::string(path) + " " + std::to_string(offset));
        return -43;  // never looked at
    }

    void configure(std::int32_t width, std::int32_t height, std::int32_t keyFrameRate, std::int32_t quality,
                   bool hasAlpha, const std::string& settings, float framesPerSecond) override {
        note("configure " + std::to_string(width) + "x" + std::to_string(height) + " key " +
             std::to_string(keyFrameRate) + " quality " + std::to_string(quality) +
             (hasAlpha ? " alpha" : "") + " settings \"" + settings + "\" fps " +
             std::to_string(framesPerSecond));
    }

    std::string textOperation6(const std::string&) override {
        return std::to_string(unexpected("textOperation6"));
    }

    std::string editSettings(const std::string& settings) override {
        note("editSettings \"" + settings + "\"");
        return script.editedSettings;
    }

    std::string textOperation7(const std::string&) override {
        return std::to_string(unexpected("textOperation7"));
    }
    std::string textOperation21(const std::string&) override {
        return std::to_string(unexpected("textOperation21"));
    }
    std::string textOperation22(const std::string&) override {
        return std::to_string(unexpected("textOperation22"));
    }

    const char* const* codecList() override {
        note("codecList");
        return script.codecs.data();
    }

    std::int32_t getCodec() override {
        note("getCodec");
        return script.codecAnswer;
    }

    void setCodec(std::int32_t index) override { note("setCodec " + std::to_string(index)); }

    void setUseFormatAspect(bool on) override {
        note(on ? "setUseFormatAspect on" : "setUseFormatAspect off");
    }

    std::int32_t getQuality() override {
        note("getQuality");
        return script.qualityAnswer;
    }

    float getFrameRate() override {
        note("getFrameRate");
        return script.frameRateAnswer;
    }

    std::int32_t getKeyFrameRate() override {
        note("getKeyFrameRate");
        return script.keyFrameRateAnswer;
    }

    char* acquireBuffer(std::size_t count) override {
        note("acquireBuffer " + std::to_string(count));
        // Never a value that a frame would have.
        script.buffer.assign(count, -99.0F);
        return script.hasBuffer ? reinterpret_cast<char*>(script.buffer.data()) : nullptr;
    }

    void releaseBuffer(char* buffer) override {
        note(buffer == reinterpret_cast<char*>(script.buffer.data()) ? "releaseBuffer"
                                                                     : "releaseBuffer elsewhere");
    }

private:
    void note(std::string call) { script.calls.push_back(std::move(call)); }

    /// Operations that the plug-in has no use for.
    std::int32_t unexpected(const char* call) {
        note(std::string("unexpected ") + call);
        return 0;
    }

    Script& script;
};

/// What createController makes in these tests: a fake controller that follows this script.
extern Script* currentScript;

}  // namespace Morvane::Writer::Testing
