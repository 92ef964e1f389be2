#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "host/images/FrameSource.h"
#include "host/images/PictureStep.h"
#include "host/render/FramePlan.h"

namespace Corvel {

/// Decodes the frames of a plan on threads of its own, and does the steps that every picture goes through,
/// ahead of the one thread that takes them in order.
///
/// Memory is bounded: there is a fixed number of pictures, which go round between the reading threads and the
/// taker, so that after the first few frames nothing is allocated any more. A thread begins a frame only when
/// it has a picture to put it in, and frames are begun in the order of the plan, so the frame that the taker
/// waits for is always under way.
class ReadAhead {
public:
    struct Limits {
        unsigned threads = 1;      ///< reading threads, at least 1
        std::size_t pictures = 2;  ///< pictures in all, the taker's included; at least 2
    };

    /// Whether the taker can do with pictures of codes. None come where there is a step that can't.
    enum class Samples { Floats, AlsoCodes };

    /// A decoded frame. `picture` is lent: it goes back with the next call of `next`.
    struct Frame {
        PlannedFrame planned;
        PictureHeader header;
        Picture* picture = nullptr;  ///< null for a black frame without steps
    };

    /// Starts reading. `source` must outlive this object. Where there are steps, a black frame goes through
    /// them as a black picture of the size that `blank` says, transparent where that has alpha.
    ReadAhead(const FrameSource& source, std::vector<PlannedFrame> plan, Limits limits,
              MakePictureSteps makeSteps = {}, PictureHeader blank = {}, Samples samples = Samples::Floats);
    /// Gives up the frames not yet begun and waits for those under way.
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// The next frame of the plan, nothing after the last one. Blocks until it is decoded. Throws what
    /// reading it and its steps threw (UnreadableImage, std::bad_alloc); the frame counts as taken then. One
    /// thread.
    std::optional<Frame> next();

    /// What the threads do for each frame, for whoever wants a single one: reads it, or makes it black as
    /// `blank` says where the plan has no source for it, and does the steps. A black frame without steps
    /// leaves the picture as it was and has an empty header. Throws as `next`.
    static PictureHeader readFrame(FrameReader& reader, const PictureSteps& steps, const PictureHeader& blank,
                                   const PlannedFrame& planned, std::size_t position, Picture& picture);

    /// The limits for pictures of `pictureBytes` on a machine of `threads` threads: as many pictures as there
    /// is work for, within `memoryBytes`, but never fewer than two.
    static Limits limitsFor(unsigned threads, std::size_t pictureBytes, std::size_t memoryBytes);

private:
    /// One frame of the plan while it is under way.
    struct Slot {
        bool hasPicture() const { return planned.source || header.display.width > 0; }

        PlannedFrame planned;
        std::size_t position = 0;  // in the plan
        PictureHeader header;
        std::unique_ptr<Picture> picture;
        std::exception_ptr failure;
        bool done = false;
    };

    void readFrames();
    Slot* beginFrame(std::unique_lock<std::mutex>& lock);
    void recycle(std::unique_ptr<Picture> picture);

    const FrameSource& source;
    const std::vector<PlannedFrame> plan;
    const MakePictureSteps makeSteps;
    const PictureHeader blank;
    const Samples samples;
    std::mutex mutex;
    std::condition_variable pictureFree;  // or stopping
    std::condition_variable frameDone;
    std::vector<std::unique_ptr<Picture>> freePictures;
    std::deque<std::unique_ptr<Slot>>
        underWay;  // in the order of the plan; the first one is the taker's next
    std::unique_ptr<Slot> taken;
    std::size_t begun = 0;  // frames of the plan
    std::size_t given = 0;
    bool stopping = false;
    std::vector<std::thread> threads;
};

}  // namespace Corvel
