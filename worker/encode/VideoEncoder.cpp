#include "worker/encode/VideoEncoder.h"

#include "worker/Status.h"
#include "worker/encode/EncoderContext.h"
#include "worker/encode/FrameQueue.h"
#include "worker/encode/PacketOrder.h"
#include "worker/encode/PngEncoder.h"
#include "worker/picture/PictureConverter.h"
#include "worker/picture/PicturePool.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <thread>
#include <vector>

namespace Morvane::Worker {

namespace {

/// Pictures that wait before the encoders, beside those being encoded.
constexpr std::size_t waitingPictures = 2;
/// More contexts side by side bring nothing but memory.
constexpr int mostContexts = 16;

std::size_t contextCount(const EncodingPlan& plan) {
    return plan.codec->intraOnly ? std::min(plan.threads, mostContexts) : 1;
}

}  // namespace

class VideoEncoder::Pipeline {
public:
    explicit Pipeline(const EncodingPlan& encodingPlan);
    ~Pipeline();

    const AVCodecParameters& parameters() const { return *description; }
    AVRational timeBase() const { return av_inv_q(plan.rate); }
    void start(PacketSink packetSink);
    void addFrame(const float* rgba);
    void finish();

private:
    void encodeSideBySide(EncoderContext& context);
    void encodeInARow(EncoderContext& context);
    void passOn(EncoderContext& context);
    static std::int64_t delayOf(const AVPacket& first, const EncoderContext& context);
    void deliver();
    void guarded(void (Pipeline::*work)(EncoderContext&), EncoderContext& context);
    void fail(std::exception_ptr reason);
    void throwFailure();
    bool hasFailed();
    void stop();

    const EncodingPlan plan;
    PictureConverter converter;
    PicturePool pictures;
    std::vector<std::unique_ptr<EncoderContext>> contexts;
    ParametersPointer description;
    PacketSink sink;
    FrameQueue queue{waitingPictures};
    PacketOrder packets;
    std::int64_t framesAdded = 0;
    std::int64_t packetsMade = 0;   ///< by the one context of encoders that work in a row
    std::int64_t reorderDelay = 0;  ///< frames that decoding runs ahead of showing, in a row
    std::atomic<int> busyEncoders = 0;
    std::vector<std::thread> threads;
    bool finished = false;

    std::mutex failureMutex;
    std::exception_ptr failure;  ///< null after it was thrown
    bool failed = false;
};

VideoEncoder::Pipeline::Pipeline(const EncodingPlan& encodingPlan)
    : plan(encodingPlan), converter(plan), pictures(plan), packets(2 * contextCount(plan)) {
    for (std::size_t i = 0; i < contextCount(plan); ++i)
        contexts.push_back(createEncoder(plan));
    description = contexts.front()->parameters();
}

VideoEncoder::Pipeline::~Pipeline() {
    queue.close();
    packets.close();
    stop();
}

void VideoEncoder::Pipeline::start(PacketSink packetSink) {
    sink = std::move(packetSink);
    busyEncoders = static_cast<int>(contexts.size());
    const auto work = plan.codec->intraOnly ? &Pipeline::encodeSideBySide : &Pipeline::encodeInARow;
    for (const auto& context : contexts)
        threads.emplace_back([this, work, &encoder = *context] { guarded(work, encoder); });
    threads.emplace_back([this] { deliver(); });
}

void VideoEncoder::Pipeline::addFrame(const float* rgba) {
    if (threads.empty() || finished)
        throw StatusError(Status::BadArgument,
                          "a frame came before the encoder was started or after it was finished");
    FramePointer frame = queue.waitForRoom() ? pictures.take() : nullptr;
    throwFailure();
    if (hasFailed())
        throw StatusError(Status::BadArgument, "no more frames can be added after an earlier failure");
    converter.convert(rgba, *frame);
    frame->pts = framesAdded++;
    queue.put(std::move(frame));
}

void VideoEncoder::Pipeline::finish() {
    if (finished)
        return;
    finished = true;
    queue.end();
    stop();
    throwFailure();
}

void VideoEncoder::Pipeline::stop() {
    for (std::thread& thread : threads)
        if (thread.joinable())
            thread.join();
}

/// Each picture stands alone and gives one packet, so the packet's number is the picture's.
void VideoEncoder::Pipeline::encodeSideBySide(EncoderContext& context) {
    while (auto entry = queue.take()) {
        context.send(entry->frame.get());
        entry->frame.reset();
        PacketPointer packet = context.receive();
        if (!packet)
            throw StatusError(Status::CodecFailed,
                              std::string(plan.codec->name) + " gave no packet for a frame");
        packet->pts = packet->dts = entry->index;
        packets.put(entry->index, std::move(packet));
    }
}

void VideoEncoder::Pipeline::encodeInARow(EncoderContext& context) {
    while (auto entry = queue.take()) {
        context.send(entry->frame.get());
        entry->frame.reset();
        passOn(context);
    }
    // What is dropped needs no encoding either.
    if (queue.isClosed())
        return;
    context.send(nullptr);
    passOn(context);
}

void VideoEncoder::Pipeline::passOn(EncoderContext& context) {
    while (PacketPointer packet = context.receive()) {
        if (packetsMade == 0)
            reorderDelay = delayOf(*packet, context);
        packet->dts = packetsMade - reorderDelay;
        packets.put(packetsMade++, std::move(packet));
    }
}

/// One encoder says that it reorders less than its first packet shows; another makes up decoding times when
/// there are fewer frames than it reorders.
std::int64_t VideoEncoder::Pipeline::delayOf(const AVPacket& first, const EncoderContext& context) {
    constexpr std::int64_t mostReordered = 16;
    const std::int64_t stated = context.reorderDelay();
    return first.dts != AV_NOPTS_VALUE && first.dts >= -mostReordered ? std::max(stated, -first.dts) : stated;
}

void VideoEncoder::Pipeline::deliver() {
    std::exception_ptr reason;
    try {
        while (PacketPointer packet = packets.take())
            sink(*packet);
    } catch (...) {
        reason = std::current_exception();
    }
    if (reason)
        fail(std::move(reason));
}

void VideoEncoder::Pipeline::guarded(void (Pipeline::*work)(EncoderContext&), EncoderContext& context) {
    std::exception_ptr reason;
    try {
        (this->*work)(context);
    } catch (...) {
        reason = std::current_exception();
    }
    if (reason)
        fail(std::move(reason));
    if (--busyEncoders == 0)
        packets.end();
}

/// The first failure counts; what follows from it is not reported. Called outside of the handler, so that the
/// thread that is told of it is the last to hold it.
void VideoEncoder::Pipeline::fail(std::exception_ptr reason) {
    {
        const std::lock_guard lock(failureMutex);
        if (!failed)
            failure = std::move(reason);
        failed = true;
    }
    queue.close();
    packets.close();
}

void VideoEncoder::Pipeline::throwFailure() {
    const std::lock_guard lock(failureMutex);
    if (failure)
        std::rethrow_exception(std::exchange(failure, nullptr));
}

bool VideoEncoder::Pipeline::hasFailed() {
    const std::lock_guard lock(failureMutex);
    return failed;
}

VideoEncoder::VideoEncoder(const EncodingPlan& plan) : pipeline(std::make_unique<Pipeline>(plan)) {}
VideoEncoder::~VideoEncoder() = default;

const AVCodecParameters& VideoEncoder::parameters() const {
    return pipeline->parameters();
}
AVRational VideoEncoder::timeBase() const {
    return pipeline->timeBase();
}
void VideoEncoder::start(PacketSink sink) {
    pipeline->start(std::move(sink));
}
void VideoEncoder::addFrame(const float* rgba) {
    pipeline->addFrame(rgba);
}
void VideoEncoder::finish() {
    pipeline->finish();
}

}  // namespace Morvane::Worker
