#include "worker/movie/MovieFile.h"

#include "worker/Status.h"
#include "worker/movie/FragmentedFile.h"
#include "worker/movie/MetadataAtoms.h"
#include "worker/movie/OrdinaryMovie.h"
#include "worker/movie/SoundMedia.h"
#include "worker/movie/TimecodeMedia.h"

#include <fmt/core.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <thread>
#include <utility>
#include <vector>

namespace Morvane::Worker {

namespace {

using Clock = std::chrono::steady_clock;

const MovieFile::Options& checked(const MovieFile::Options& options) {
    if (options.provisionalTimecode) {
        checkTimecode(*options.provisionalTimecode);
    }
    return options;
}

}  // namespace

class MovieFile::Writer {
public:
    Writer(const std::string& path, const Options& options)
        : movie(path, checked(options).video, options.existing),
          fewestInPlace(options.fewestBytesInPlace),
          longestWait(options.longestWait) {
        movie.timecode = options.provisionalTimecode;
        movie.metadata = options.metadata;
        flusher = std::thread([this] { flushInTime(); });
    }

    ~Writer() {
        stopFlusher();
        if (!movie.begun()) {
            movie.file().remove();
        } else if (!finished) {
            // Nobody is left to tell of a failure; everything that reached the file before can be read.
            writing([this] { movie.flush(); });
        }
    }

    void addVideoPacket(const AVPacket& packet) {
        const std::lock_guard lock(mutex);
        throwFailure();
        if (incomplete) {
            throw StatusError(
                Status::BadArgument,
                fmt::format("{} takes no more pictures after some were lost", movie.file().path()));
        }
        if (movie.waitingBytes() == 0) {
            oldest = Clock::now();
        }
        writing([&] {
            movie.add(packet);
            if (longestWait.count() == 0) {
                movie.flush();
            }
        });
        throwFailure();
        changed.notify_one();
    }

    void addAudioFile(const std::string& audioPath, double offsetSeconds) {
        std::unique_lock lock(mutex);
        const std::int64_t end = movie.end();
        const std::int64_t packets = movie.packets();
        lock.unlock();
        try {
            addSound(writeSoundFile(audioPath, offsetSeconds, appender()));
        } catch (const StatusError&) {
            lock.lock();
            if (movie.packets() == packets && movie.waitingBytes() == 0) {
                movie.shorten(end);  // a full disk needs the room
            }
            throw;
        }
    }

    void setSampleFormat(const SampleFormat& format) {
        checkSampleFormat(format);
        finishSamples();
        samples.emplace(format, appender());
    }

    void addSamples(std::int64_t position, std::int64_t count, const std::byte* data) {
        if (!samples) {
            throw StatusError(Status::BadArgument, "sound samples came before their format");
        }
        samples->add(position, count, data);
    }

    void finishSamples() {
        if (samples && !samples->empty()) {
            addSound(samples->finish());
        }
        samples.reset();
    }

    void setTimecode(const std::optional<TimecodeTrack>& timecode) {
        if (timecode) {
            checkTimecode(*timecode);
        }
        const std::lock_guard lock(mutex);
        movie.timecode = timecode;
    }

    void addMetadata(const Metadata& metadata) {
        const std::lock_guard lock(mutex);
        for (const auto& [key, value] : metadata) {
            movie.metadata[key] = value;
        }
    }

    std::int64_t size() {
        const std::lock_guard lock(mutex);
        return movie.end();
    }

    void finish(bool indexFirst) {
        stopFlusher();
        finished = true;
        writing([this] { finishSamples(); });
        writing([this] { movie.flush(); });
        movie.file().checkStillThere();
        FragmentedMovie found = scanFragments(movie.file());
        if (incomplete) {
            dropIncompleteTail(found.pictures, movie.timeScale().ticksPerFrame);
        } else if (static_cast<std::int64_t>(found.pictures.size()) != movie.packets()) {
            throw StatusError(Status::InputOutput,
                              fmt::format("{} holds {} of {} frames", movie.file().path(),
                                          found.pictures.size(), movie.packets()));
        }
        if (!found.pictures.empty()) {
            writing([&] {
                makeOrdinary(movie.file(), found,
                             {movie.timecode, sounds, writeMetadataAtoms(movie.metadata)}, indexFirst,
                             fewestInPlace);
            });
        }
        throwFailure();
        if (found.pictures.empty()) {
            throw StatusError(Status::BadArgument,
                              fmt::format("{} has no frames: none was written", movie.file().path()));
        }
    }

private:
    /// What fails while it writes is kept for whoever calls next, who is told once.
    template <typename Work>
    void writing(Work&& work) {
        try {
            std::forward<Work>(work)();
        } catch (const StatusError& error) {
            keepFailure(error);
        } catch (const std::bad_alloc&) {
            keepFailure({Status::NoMemory, "no memory to write " + movie.file().path()});
        }
    }

    void keepFailure(const StatusError& error) {
        incomplete = true;
        if (!failure) {
            failure.emplace(error);
        }
    }

    void throwFailure() {
        if (failure) {
            const StatusError told = *failure;
            failure.reset();
            throw StatusError(told);
        }
    }

    AppendMedia appender() {
        return [this](ByteView media) {
            const std::lock_guard lock(mutex);
            return movie.append(media);
        };
    }

    void addSound(IndexTrack track) {
        const std::lock_guard lock(mutex);
        sounds.push_back(std::move(track));
    }

    /// The flusher's thread: a slow render's packets must not wait for the next one.
    void flushInTime() {
        std::unique_lock lock(mutex);
        while (!stopping) {
            if (movie.waitingBytes() == 0 || incomplete) {
                changed.wait(lock);
            } else if (changed.wait_until(lock, oldest + longestWait) == std::cv_status::timeout &&
                       Clock::now() >= oldest + longestWait) {
                writing([this] { movie.flush(); });
            }
        }
    }

    void stopFlusher() {
        {
            const std::lock_guard lock(mutex);
            stopping = true;
        }
        changed.notify_one();
        if (flusher.joinable()) {
            flusher.join();
        }
    }

    FragmentedFile movie;
    std::int64_t fewestInPlace;
    std::chrono::milliseconds longestWait;
    std::vector<IndexTrack> sounds;
    std::optional<PositionedSound> samples;
    std::optional<StatusError> failure;  ///< that nobody has been told yet
    bool incomplete = false;             ///< something could not be written
    bool finished = false;

    std::mutex mutex;
    std::condition_variable changed;
    Clock::time_point oldest;  ///< when the first packet that is not in the file came
    bool stopping = false;
    std::thread flusher;
};

MovieFile::MovieFile(const std::string& path, const Options& options)
    : writer(std::make_unique<Writer>(path, options)) {}

MovieFile::~MovieFile() = default;

void MovieFile::addVideoPacket(const AVPacket& packet) {
    writer->addVideoPacket(packet);
}

void MovieFile::addAudioFile(const std::string& audioPath, double offsetSeconds) {
    writer->addAudioFile(audioPath, offsetSeconds);
}

void MovieFile::setSampleFormat(const SampleFormat& format) {
    writer->setSampleFormat(format);
}

void MovieFile::addSamples(std::int64_t position, std::int64_t count, const std::byte* samples) {
    writer->addSamples(position, count, samples);
}

void MovieFile::finishSamples() {
    writer->finishSamples();
}

void MovieFile::setTimecode(const std::optional<TimecodeTrack>& timecode) {
    writer->setTimecode(timecode);
}

void MovieFile::addMetadata(const Metadata& metadata) {
    writer->addMetadata(metadata);
}

std::int64_t MovieFile::size() const {
    return writer->size();
}

void MovieFile::finish(bool indexFirst) {
    writer->finish(indexFirst);
}

}  // namespace Morvane::Worker
