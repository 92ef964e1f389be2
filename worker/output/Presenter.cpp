#include "worker/output/Presenter.h"

#include <algorithm>

#include "worker/Status.h"

namespace Morvane::Worker {

namespace {

constexpr int pictureCount = 5;                         // one on its way to the device, the others waiting
constexpr std::chrono::milliseconds eventInterval{10};  // how soon a key or the close button is noticed
constexpr std::size_t pictureAlignment = 64;

}  // namespace

Presenter::Presenter(OutputMode::Rate rate, OpenPort openPort)
    : Presenter(rate, std::move(openPort), Patience()) {}

Presenter::Presenter(OutputMode::Rate rate, OpenPort openPort, Patience patience)
    : open(std::move(openPort)), patience(patience), pacer(rate) {
    std::promise<void> opened;
    std::future<void> opening = opened.get_future();
    thread = std::thread(&Presenter::run, this, std::move(opened));
    try {
        opening.get();
    } catch (...) {
        thread.join();
        throw;
    }
}

Presenter::~Presenter() {
    abandon();
    if (thread.joinable())
        thread.join();
}

Presenter::Outcome Presenter::submit(const float* rgba) {
    std::unique_lock lock(mutex);
    if (nextNumber == 0)
        firstArrival = Pacer::Clock::now();
    if (!closed && !failure && mustDrop(nextNumber, Pacer::Clock::now())) {
        ++nextNumber;
        ++counts_.dropped;
        return Outcome::Taken;
    }
    Picture picture = takeFreePicture(lock);
    if (!picture)
        return Outcome::Closed;

    converting = true;
    lock.unlock();
    std::exception_ptr refusal;
    try {
        port->convert(rgba, picture.get());
    } catch (...) {
        refusal = std::current_exception();
    }
    lock.lock();
    converting = false;
    changed.notify_all();
    if (refusal) {
        freePictures.push_back(std::move(picture));
        std::rethrow_exception(refusal);
    }
    queue.push_back({nextNumber++, std::move(picture)});
    return Outcome::Taken;
}

Presenter::Picture Presenter::takeFreePicture(std::unique_lock<std::mutex>& lock) {
    changed.wait(lock, [this] { return !freePictures.empty() || closed || abandoned || failure; });
    if (failure) {
        failureTold = true;
        std::rethrow_exception(failure);
    }
    if (abandoned)
        throw StatusError(Status::BadArgument, "cannot show a frame: the video output is ending");
    if (closed)
        return nullptr;
    Picture picture = std::move(freePictures.back());
    freePictures.pop_back();
    return picture;
}

void Presenter::finish() {
    {
        const std::lock_guard lock(mutex);
        finishing = true;
        changed.notify_all();
    }
    if (thread.joinable())
        thread.join();
    if (failure && !failureTold)
        std::rethrow_exception(failure);
}

void Presenter::abandon() {
    const std::lock_guard lock(mutex);
    abandoned = true;
    changed.notify_all();
}

Presenter::Counts Presenter::counts() const {
    const std::lock_guard lock(mutex);
    return counts_;
}

void Presenter::run(std::promise<void> opened) {
    try {
        openPort();
    } catch (...) {
        opened.set_exception(std::current_exception());
        return;
    }
    opened.set_value();
    try {
        present();
    } catch (...) {
        const std::lock_guard lock(mutex);
        failure = std::current_exception();
    }
    endPort();
}

void Presenter::openPort() {
    port = open();
    const std::size_t bytes =
        (port->pictureBytes() + pictureAlignment - 1) / pictureAlignment * pictureAlignment;
    for (int made = 0; made < pictureCount; ++made) {
        Picture picture(static_cast<std::uint8_t*>(std::aligned_alloc(pictureAlignment, bytes)));
        if (!picture) {
            port.reset();
            throw StatusError(Status::NoMemory,
                              "cannot open the video output: not enough memory for its frames");
        }
        freePictures.push_back(std::move(picture));
    }
}

void Presenter::present() {
    bool more = true;
    std::unique_lock lock(mutex);
    while (more && !abandoned && !closed) {
        lock.unlock();
        const PortEvent event = port->nextEvent();
        lock.lock();
        if (event == PortEvent::None)
            more = presentNext(lock);
        else
            obey(event);
    }
    lock.unlock();
    if (!more)
        port->finish();
}

void Presenter::endPort() {
    std::unique_lock lock(mutex);
    changed.notify_all();
    changed.wait(lock, [this] { return !converting; });
    port.reset();
}

void Presenter::obey(PortEvent event) {
    switch (event) {
        case PortEvent::TogglePause:
            paused = !paused;
            steps = 0;
            pacer.stop();
            break;
        case PortEvent::Step:
            paused = true;
            ++steps;
            pacer.stop();
            break;
        case PortEvent::Close:
            closed = true;
            break;
        case PortEvent::None:
            break;
    }
}

/// One turn of the presentation: prepares or drops the front frame, shows it if its time has come, else waits
/// a little. False when all is shown and no more will come.
bool Presenter::presentNext(std::unique_lock<std::mutex>& lock) {
    const auto now = Pacer::Clock::now();
    if (queue.empty()) {
        if (finishing && isOver(now))
            return false;
        wait(lock, now + eventInterval);
    } else if (!queue.front().prepared) {
        prepareFront(lock);
    } else if (steps > 0) {
        --steps;
        showFront(lock);
    } else if (const auto due = timeOfFront(now); now < due) {
        wait(lock, due);
    } else {
        showFront(lock);
    }
    return true;
}

/// Whether the last frame, too, has been shown for its whole time. During a pause it stays.
bool Presenter::isOver(Pacer::Clock::time_point now) const {
    return !paused && (!pacer.isRunning() || now >= pacer.due(nextNumber));
}

/// When the front frame is due. Starts the clock when it is held and may run; while it may not, nothing is
/// due.
Pacer::Clock::time_point Presenter::timeOfFront(Pacer::Clock::time_point now) {
    if (!pacer.isRunning()) {
        const bool mayStart =
            counts_.shown > 0 || freePictures.empty() || finishing || now >= firstArrival + patience.start;
        if (paused || !mayStart)
            return now + eventInterval;
        pacer.start(now, queue.front().number);
    }
    return pacer.due(queue.front().number);
}

/// From here on the frame is shown, however late it gets: what a port has prepared it may depend on.
void Presenter::prepareFront(std::unique_lock<std::mutex>& lock) {
    if (mustDrop(queue.front().number, Pacer::Clock::now())) {
        dropFront();
        return;
    }
    QueuedFrame& frame = queue.front();  // stays in its place, also while others are queued behind it
    frame.prepared = true;
    lock.unlock();
    port->prepare(frame.picture.get(), frame.number);
    lock.lock();
}

void Presenter::showFront(std::unique_lock<std::mutex>& lock) {
    QueuedFrame frame = std::move(queue.front());
    queue.pop_front();
    lock.unlock();
    port->show(frame.picture.get());
    lock.lock();
    ++counts_.shown;
    lastShown = Pacer::Clock::now();
    freePictures.push_back(std::move(frame.picture));
    changed.notify_all();
}

void Presenter::dropFront() {
    ++counts_.dropped;
    freePictures.push_back(std::move(queue.front().picture));
    queue.pop_front();
    changed.notify_all();
}

bool Presenter::mustDrop(std::int64_t frame, Pacer::Clock::time_point now) const {
    return pacer.isLate(frame, now) && now < lastShown + patience.picture;
}

void Presenter::wait(std::unique_lock<std::mutex>& lock, Pacer::Clock::time_point until) {
    changed.wait_until(lock, std::min(until, Pacer::Clock::now() + eventInterval));
}

}  // namespace Morvane::Worker
