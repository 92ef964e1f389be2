#include "worker/write/WriteMode.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "property/FieldEncoding.h"
#include "property/NumberText.h"
#include "property/PropertyList.h"

namespace Morvane::Worker {

using Property::numberText;

struct WriteMode::Operation {
    std::int32_t opcode;
    FailureForm failure;
    void (WriteMode::*run)(const Task&, Request&);
};

const WriteMode::Operation* WriteMode::findOperation(std::int32_t opcode) {
    using enum FailureForm;
    static constexpr Operation operations[] = {
        {0, Number, &WriteMode::openFile},
        {1, ErrorPrefix, &WriteMode::addFrame},
        {2, ErrorPrefix, &WriteMode::finishVideo},
        {3, ErrorPrefix, &WriteMode::addAudioFile},
        {4, Number, &WriteMode::closeFile},
        {5, ErrorPrefix, &WriteMode::configure},
        {6, ErrorPrefix, &WriteMode::summary},
        {7, ErrorPrefix, &WriteMode::defaultSettings},
        {8, ErrorPrefix, &WriteMode::editSettings},
        {9, ErrorPrefix, &WriteMode::setCodec},
        {10, ErrorPrefix, &WriteMode::getCodec},
        {11, ErrorPrefix, &WriteMode::setProperties},
        {12, ErrorPrefix, &WriteMode::addTimecodeTrack},
        {13, ErrorPrefix, &WriteMode::setUseFormatAspect},
        {14, ErrorPrefix, &WriteMode::codecList},
        {15, ErrorPrefix, &WriteMode::getFrameRate},
        {16, ErrorPrefix, &WriteMode::getQuality},
        {17, ErrorPrefix, &WriteMode::getKeyFrameRate},
        {18, ErrorPrefix, &WriteMode::addSamples},
        {19, ErrorPrefix, &WriteMode::finishSamples},
        {20, ErrorPrefix, &WriteMode::setSampleFormat},
        {21, ErrorPrefix, &WriteMode::settingsAsProperties},
        {22, ErrorPrefix, &WriteMode::propertiesAsSettings},
    };
    const auto found = std::find_if(std::begin(operations), std::end(operations),
                                    [&](const Operation& operation) { return operation.opcode == opcode; });
    return found == std::end(operations) ? nullptr : found;
}

void WriteMode::handle(Request& request) {
    const Task task(request.text);
    const Operation* operation = findOperation(task.opcode);
    if (operation == nullptr)
        throw StatusError(Status::BadArgument, "the writer has no operation " + std::to_string(task.opcode));
    (this->*operation->run)(task, request);
}

FailureForm WriteMode::failureForm(std::int32_t opcode) const {
    const Operation* operation = findOperation(opcode);
    return operation == nullptr ? FailureForm::ErrorPrefix : operation->failure;
}

OpenMovie& WriteMode::openMovie() {
    if (movie == nullptr)
        throw StatusError(Status::BadArgument, "no movie is open");
    return *movie;
}

void WriteMode::openFile(const Task& task, Request&) {
    if (movie != nullptr)
        throw StatusError(Status::BadArgument,
                          "cannot open " + task.fileName + ": another movie is still open");
    if (task.mode != 0 && task.mode != 1)
        throw StatusError(Status::BadArgument,
                          "cannot open " + task.fileName + ": there is no mode " + std::to_string(task.mode));
    OpenMovie::Options options = planMovie(task.fileName);
    options.existing = task.mode == 1 ? ExistingFile::Replace : ExistingFile::Refuse;
    movie = std::make_unique<OpenMovie>(options);
    nextMetadata.clear();
}

OpenMovie::Options WriteMode::planMovie(const std::string& path) const try {
    OpenMovie::Options options;
    options.plan = settings.plan();
    options.path = path;
    options.metadata = settings.metadata(options.plan);
    for (const auto& [key, value] : nextMetadata)
        options.metadata[key] = value;
    options.provisionalTimecode = settings.provisionalTimecode();
    return options;
} catch (const StatusError& error) {
    throw StatusError(error.status, "cannot open " + path + ": " + error.what());
}

void WriteMode::addFrame(const Task&, Request& request) {
    OpenMovie& open = openMovie();
    // The host sizes its frames by what it configured last, which may be meant for the next movie.
    const PictureSetup& setup = settings.setup();
    if (!open.hasSize(setup.width, setup.height))
        throw StatusError(Status::BadArgument, "the frame has not the size of the movie that is open");
    // The frame's number is not used: frames are laid end to end as they come.
    open.addFrame(request.payload(open.frameBytes()).data());
}

void WriteMode::finishVideo(const Task&, Request&) {
    openMovie().finishVideo();
}

void WriteMode::addAudioFile(const Task& task, Request&) {
    openMovie().addAudioFile(task.audioFileName, task.audioOffset);
}

void WriteMode::closeFile(const Task& task, Request&) {
    openMovie();
    // Whatever comes of it, this movie is over.
    const std::unique_ptr<OpenMovie> closing = std::move(movie);
    closing->close(task.flatten);
}

void WriteMode::configure(const Task& task, Request& request) {
    const PictureSetup setup{task.width,   task.height,   task.keyFrameRate,
                             task.quality, task.hasAlpha, task.framesPerSecond};
    request.answer(settings.configure(setup, request.payloadText()));
}

void WriteMode::summary(const Task&, Request& request) {
    request.answer(settings.summary(request.payloadText()));
}

void WriteMode::defaultSettings(const Task&, Request& request) {
    request.answer(settings.defaultText());
}

void WriteMode::editSettings(const Task&, Request& request) {
    request.answer(settings.edit(request.payloadText()));
}

void WriteMode::setCodec(const Task& task, Request&) {
    settings.setCodec(task.codec);
}

void WriteMode::getCodec(const Task&, Request& request) {
    request.answer(numberText(settings.codecIndex()));
}

void WriteMode::setProperties(const Task&, Request& request) {
    Property::PropertyList properties;
    Property::readPropertyList(request.payloadText(), properties);
    Metadata added;
    Metadata& metadata = movie != nullptr ? added : nextMetadata;
    for (const auto& property : properties)
        metadata[property->name] = property->toString();
    if (movie != nullptr)
        movie->addMetadata(added);
}

void WriteMode::addTimecodeTrack(const Task& task, Request&) {
    TimecodeTrack track;
    track.framesPerSecond =
        static_cast<int>(std::min<std::uint32_t>(task.timecodeRate.nominalRate(), 0x7fffffff));
    track.startFrame = task.timecodeStartFrame;
    track.reel = task.reelName;
    openMovie().setTimecode(track);
}

void WriteMode::setUseFormatAspect(const Task&, Request& request) {
    // The record deliberately leaves this argument alone.
    const auto fields = Property::splitFields(request.text);
    if (fields.size() < 2)
        throw StatusError(Status::BadArgument, "operation 13 lacks its argument");
    bool on = false;
    Property::readNumber(fields[1], on);
    settings.setUseFormatAspect(on);
}

void WriteMode::codecList(const Task&, Request& request) {
    request.answer(codecListText());
}

void WriteMode::getFrameRate(const Task&, Request& request) {
    request.answer(numberText(settings.setup().framesPerSecond));
}

void WriteMode::getQuality(const Task&, Request& request) {
    request.answer(numberText(settings.setup().quality));
}

void WriteMode::getKeyFrameRate(const Task&, Request& request) {
    request.answer(numberText(settings.setup().keyFrameRate));
}

void WriteMode::addSamples(const Task& task, Request& request) {
    // A count whose bytes cannot be told in 64 bits is nonsense and must not wrap to one that is not.
    constexpr std::int64_t most = std::int64_t{1} << 60;
    if (task.sampleCount < 0 || task.sampleCount > most)
        throw StatusError(Status::BadArgument, std::to_string(task.sampleCount) + " is no number of samples");
    OpenMovie& open = openMovie();
    const auto bytes = static_cast<std::uint64_t>(task.sampleCount) * SampleFormat::bytesPerFrame;
    open.addSamples(task.samplePosition, task.sampleCount, request.payload(bytes).data());
}

void WriteMode::finishSamples(const Task&, Request&) {
    openMovie().finishSamples();
}

void WriteMode::setSampleFormat(const Task& task, Request& request) {
    openMovie().setSampleFormat(
        {task.sampleFormatA, task.sampleFormatB, task.sampleFormatC, request.payloadText()});
}

void WriteMode::settingsAsProperties(const Task&, Request& request) {
    request.answer(settings.propertyListText(request.payloadText()));
}

void WriteMode::propertiesAsSettings(const Task&, Request& request) {
    request.answer(settings.textOfPropertyList(request.payloadText()));
}

}  // namespace Morvane::Worker
