#include "worker/read/FrameStore.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

namespace Morvane::Worker {

namespace {

/// Frames decoded before the host asks for them.
constexpr std::size_t framesAhead = 6;
/// How far apart two frames are at most that a host asks for one after the other in one direction.
constexpr std::size_t longestStep = 8;
/// Walking backwards, this many frames before the wanted one are decoded with it.
constexpr std::size_t framesBehind = 8;
/// In either direction, this many frames that the host has left behind are kept.
constexpr std::size_t framesLeft = 2;
/// The part of the budget that is kept for a host that jumps about among frames that each stand for
/// themselves: fresh memory for one costs a third of what decoding it does, and few are asked for again.
constexpr std::size_t partForJumps = 4;
/// A key packet no further ahead than this is reached by decoding on, since starting anew costs as much.
constexpr std::size_t shortestJump = 4;
/// Frames come out in showing order, but for movies whose times are wrong: so many later ones are waited for
/// before one counts as missing.
constexpr std::size_t patience = 16;

std::size_t bytesOf(const AVFrame& frame) {
    std::size_t bytes = 0;
    for (const AVBufferRef* buffer : frame.buf)
        if (buffer != nullptr)
            bytes += buffer->size;
    return bytes;
}

}  // namespace

FrameStore::FrameStore(const MovieInput& movie, const FrameIndex& frameIndex, std::size_t budgetBytes)
    : index(frameIndex), path(movie.source()->path), budget(budgetBytes), decoder(movie, frameIndex) {
    thread = std::thread([this] { decode(); });
}

FrameStore::~FrameStore() {
    interrupt();
    thread.join();
}

void FrameStore::interrupt() {
    const std::lock_guard lock(mutex);
    stopping = true;
    changed.notify_all();
}

std::shared_ptr<const AVFrame> FrameStore::frame(std::size_t number) {
    std::unique_lock lock(mutex);
    follow(number);
    changed.notify_all();
    changed.wait(lock, [&] { return stopping || failure || frames.count(number) != 0; });
    asked = false;
    if (const auto found = frames.find(number); found != frames.end())
        return found->second;
    if (failure)
        throw *failure;
    throw StatusError(Status::InputOutput, "reading " + path + " was interrupted");
}

/// Takes note of the frame that is asked for, and of where that leads.
void FrameStore::follow(std::size_t number) {
    if (number > anchor)
        direction = number - anchor <= longestStep || !run.active ? Direction::Forward : Direction::None;
    else if (number < anchor)
        direction = anchor - number <= longestStep ? Direction::Backward : Direction::None;
    anchor = number;
    asked = true;
    ++questions;
    decided = false;
    failure.reset();
    restartAt.reset();
}

void FrameStore::decode() {
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return stopping || hasWork(); });
        if (stopping)
            return;
        const unsigned question = questions;
        std::optional<StatusError> problem;
        try {
            decodeOne(lock);
        } catch (const StatusError& error) {
            problem.emplace(error);
        } catch (const std::bad_alloc&) {
            problem.emplace(Status::NoMemory, "not enough memory to decode " + path);
        }
        run.active = run.active && !problem;
        // Somebody may have asked for another frame meanwhile, and what failed was not that one's.
        if (problem && question == questions)
            failure.emplace(*problem);
        changed.notify_all();
    }
}

bool FrameStore::hasWork() const {
    if (failure)
        return false;
    return isWantedMissing() || (direction == Direction::Forward && run.active && !isAheadEnough());
}

bool FrameStore::isWantedMissing() const {
    return asked && frames.count(anchor) == 0;
}

bool FrameStore::isAheadEnough() const {
    const auto firstAhead = frames.upper_bound(anchor);
    const auto ahead = static_cast<std::size_t>(std::distance(firstAhead, frames.end()));
    return ahead >= framesAhead || (ahead > 0 && ahead * bytesOf(*firstAhead->second) > budget / 2);
}

/// Decides, once for each question, where decoding leads to the wanted frame: the packet to start anew from;
/// nothing where decoding on does. Afterwards only `giveUpIfMissing` starts anew, so that every question
/// comes to an end.
std::optional<std::size_t> FrameStore::takeNewStart() {
    if (!isWantedMissing())
        return std::nullopt;
    if (decided)
        return std::exchange(restartAt, std::nullopt);
    decided = true;
    const std::size_t first =
        direction == Direction::Backward ? anchor - std::min(anchor, framesBehind) : anchor;
    const std::size_t start = index.startFor(first);
    const bool goesIn = !decoder.hasStopped() || decoder.position() > index.packetOfFrame(anchor);
    const bool comes =
        run.active && run.start <= index.startFor(anchor) && run.nextNumber <= anchor && goesIn;
    if (comes && start <= decoder.position() + shortestJump)
        return std::nullopt;
    return start;
}

/// The packet after which nothing needs to be decoded any more; nothing where frames ahead are welcome, or
/// where a decoder that has been emptied would have to start far behind.
std::optional<std::size_t> FrameStore::lastPacketNeeded() const {
    if (direction == Direction::Forward || !decoder.isIntraOnly() || !isWantedMissing())
        return std::nullopt;
    return index.packetOfFrame(anchor);
}

void FrameStore::decodeOne(std::unique_lock<std::mutex>& lock) {
    const auto start = takeNewStart();
    if (start)
        run = Run{true, *start, 0};
    const auto lastPacket = lastPacketNeeded();
    const unsigned question = questions;
    lock.unlock();
    std::optional<DecodedFrame> decoded;
    try {
        if (start)
            decoder.startAt(*start);
        decoded = decoder.next(lastPacket);
    } catch (...) {
        lock.lock();
        throw;
    }
    lock.lock();
    if (decoded)
        keep(std::move(*decoded));
    else
        run.active = false;
    if (question == questions)
        giveUpIfMissing();
    evict();
}

void FrameStore::keep(DecodedFrame decoded) {
    run.nextNumber = std::max(run.nextNumber, decoded.number + 1);
    const auto [place, isNew] = frames.try_emplace(decoded.number, nullptr);
    if (!isNew)
        return;
    place->second = std::shared_ptr<const AVFrame>(std::move(decoded.picture));
    heldBytes += bytesOf(*place->second);
}

/// A frame that has been passed by does not come any more. It gets one more chance from the key packet before
/// the one that should do, since not every movie marks its keys rightly.
void FrameStore::giveUpIfMissing() {
    const bool passed = !run.active || run.nextNumber > anchor + patience;
    if (!isWantedMissing() || !passed)
        return;
    const std::size_t earlier = index.keyBefore(index.startFor(anchor));
    if (run.start > earlier)
        restartAt = earlier;
    else
        failure.emplace(Status::CodecFailed,
                        "frame " + std::to_string(anchor) + " of " + path + " is damaged");
}

/// Drops what the host is least likely to ask for: in one direction what lies behind it, and beyond the
/// budget what lies furthest away.
void FrameStore::evict() {
    while (direction == Direction::Forward && !frames.empty() && frames.begin()->first + framesLeft < anchor)
        drop(frames.begin());
    while (direction == Direction::Backward && !frames.empty() &&
           std::prev(frames.end())->first > anchor + framesLeft)
        drop(std::prev(frames.end()));
    const bool jumps = direction == Direction::None && decoder.isIntraOnly();
    const std::size_t limit = jumps ? budget / partForJumps : budget;
    while (heldBytes > limit && frames.size() > 1) {
        const auto first = frames.begin();
        const auto last = std::prev(frames.end());
        const std::size_t below = anchor - std::min(anchor, first->first);
        const std::size_t above = last->first - std::min(last->first, anchor);
        const bool dropFirst = direction == Direction::Forward    ? below > 0
                               : direction == Direction::Backward ? above == 0
                                                                  : below > above;
        drop(dropFirst ? first : last);
    }
}

void FrameStore::drop(Frames::iterator frame) {
    heldBytes -= bytesOf(*frame->second);
    frames.erase(frame);
}

}  // namespace Morvane::Worker
