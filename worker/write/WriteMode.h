#pragma once

#include <memory>
#include <optional>

#include "quicktime/QuickTimeCodecTask.h"
#include "worker/bridge/Mode.h"
#include "worker/movie/MovieTracks.h"
#include "worker/write/OpenMovie.h"
#include "worker/write/WriterSettings.h"

namespace Morvane::Worker {

/// The worker as a writer ("write"): makes one movie after the other. The requests stand in docs/protocol.md.
///
/// Legal order: `setCodec` and `configure`; `openFile`; frames, samples, sound, time code and metadata;
/// `finishVideo`, after which no frame comes; `closeFile`; then the next movie. Lists, texts and settings at
/// any time. What comes out of order is answered BadArgument and changes nothing.
class WriteMode : public Mode {
public:
    void handle(Request& request) override;
    FailureForm failureForm(std::int32_t opcode) const override;
    void interrupt() override { settings.endEditing(); }

private:
    using Task = QuickTime::QuickTimeCodecWriteTask;
    struct Operation;
    static const Operation* findOperation(std::int32_t opcode);

    void openFile(const Task& task, Request& request);
    void addFrame(const Task& task, Request& request);
    void finishVideo(const Task& task, Request& request);
    void addAudioFile(const Task& task, Request& request);
    void closeFile(const Task& task, Request& request);
    void configure(const Task& task, Request& request);
    void summary(const Task& task, Request& request);
    void defaultSettings(const Task& task, Request& request);
    void editSettings(const Task& task, Request& request);
    void setCodec(const Task& task, Request& request);
    void getCodec(const Task& task, Request& request);
    void setProperties(const Task& task, Request& request);
    void addTimecodeTrack(const Task& task, Request& request);
    void setUseFormatAspect(const Task& task, Request& request);
    void codecList(const Task& task, Request& request);
    void getFrameRate(const Task& task, Request& request);
    void getQuality(const Task& task, Request& request);
    void getKeyFrameRate(const Task& task, Request& request);
    void addSamples(const Task& task, Request& request);
    void finishSamples(const Task& task, Request& request);
    void setSampleFormat(const Task& task, Request& request);
    void settingsAsProperties(const Task& task, Request& request);
    void propertiesAsSettings(const Task& task, Request& request);

    /// Everything about the next movie but what becomes of an existing file.
    OpenMovie::Options planMovie(const std::string& path) const;
    /// The movie that is open; throws BadArgument where there is none.
    OpenMovie& openMovie();

    WriterSettings settings;
    Metadata nextMetadata;  ///< `setProperties` before the movie was open
    std::unique_ptr<OpenMovie> movie;
};

}  // namespace Morvane::Worker
