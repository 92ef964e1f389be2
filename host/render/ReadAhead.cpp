#include "host/render/ReadAhead.h"

#include <algorithm>

namespace Corvel {

ReadAhead::ReadAhead(const FrameSource& source, std::vector<PlannedFrame> plan, Limits limits,
                     MakePictureSteps makeSteps, PictureHeader blank, Samples samples)
    : source(source),
      plan(std::move(plan)),
      makeSteps(std::move(makeSteps)),
      blank(std::move(blank)),
      samples(samples) {
    for (std::size_t i = 0; i < std::max<std::size_t>(limits.pictures, 2); ++i) {
        freePictures.push_back(std::make_unique<Picture>());
    }
    for (unsigned i = 0; i < std::max(limits.threads, 1u); ++i) {
        threads.emplace_back([this] { readFrames(); });
    }
}

ReadAhead::~ReadAhead() {
    {
        const std::lock_guard lock(mutex);
        stopping = true;
    }
    pictureFree.notify_all();
    for (std::thread& thread : threads) {
        thread.join();
    }
}

ReadAhead::Limits ReadAhead::limitsFor(unsigned threads, std::size_t pictureBytes, std::size_t memoryBytes) {
    const std::size_t affordable =
        std::max<std::size_t>(memoryBytes / std::max<std::size_t>(pictureBytes, 1), 2);
    // The taker has one, each thread fills one, and one lies ready. More would only be more memory to touch.
    const std::size_t useful = std::size_t{threads} + 2;
    Limits limits;
    limits.pictures = std::min(affordable, useful);
    limits.threads = static_cast<unsigned>(std::clamp<std::size_t>(limits.pictures - 1, 1, threads));
    return limits;
}

// Waits for a picture and takes the next frame of the plan; null at the end.
ReadAhead::Slot* ReadAhead::beginFrame(std::unique_lock<std::mutex>& lock) {
    pictureFree.wait(lock, [this] { return stopping || begun == plan.size() || !freePictures.empty(); });
    if (stopping || begun == plan.size()) {
        return nullptr;
    }
    auto slot = std::make_unique<Slot>();
    slot->position = begun;
    slot->planned = plan[begun++];
    slot->picture = std::move(freePictures.back());
    freePictures.pop_back();
    underWay.push_back(std::move(slot));
    return underWay.back().get();
}

PictureHeader ReadAhead::readFrame(FrameReader& reader, const PictureSteps& steps, const PictureHeader& blank,
                                   const PlannedFrame& planned, std::size_t position, Picture& picture) {
    PictureHeader header;
    if (planned.source) {
        header = reader.read(*planned.source, picture);
    } else if (!steps.empty()) {
        header = blank;
        picture.reset(blank.display.width, blank.display.height, blank.hasAlpha ? 4 : 3);
        picture.clear();
    }
    for (const std::unique_ptr<PictureStep>& step : steps) {
        step->apply({planned.number, position, header}, picture);
    }
    return header;
}

void ReadAhead::readFrames() {
    const std::unique_ptr<FrameReader> reader = source.createReader();
    const PictureSteps steps = makeSteps ? makeSteps() : PictureSteps{};
    const bool mayHaveCodes =
        samples == Samples::AlsoCodes &&
        std::all_of(steps.begin(), steps.end(), [](const auto& step) { return step->takesCodes(); });
    std::unique_lock lock(mutex);
    while (Slot* slot = beginFrame(lock)) {
        lock.unlock();
        slot->picture->allowCodes(mayHaveCodes);
        try {
            slot->header = readFrame(*reader, steps, blank, slot->planned, slot->position, *slot->picture);
        } catch (...) {
            slot->failure = std::current_exception();
        }
        lock.lock();
        slot->done = true;
        frameDone.notify_one();
    }
}

void ReadAhead::recycle(std::unique_ptr<Picture> picture) {
    const std::lock_guard lock(mutex);
    freePictures.push_back(std::move(picture));
    pictureFree.notify_one();
}

std::optional<ReadAhead::Frame> ReadAhead::next() {
    if (taken) {
        recycle(std::move(taken->picture));
        taken.reset();
    }
    if (given == plan.size()) {
        return std::nullopt;
    }
    ++given;
    {
        std::unique_lock lock(mutex);
        frameDone.wait(lock, [this] { return !underWay.empty() && underWay.front()->done; });
        taken = std::move(underWay.front());
        underWay.pop_front();
    }
    if (taken->failure) {
        std::rethrow_exception(taken->failure);
    }
    return Frame{taken->planned, taken->header, taken->hasPicture() ? taken->picture.get() : nullptr};
}

}  // namespace Corvel
