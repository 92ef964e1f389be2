#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/movies/HelperKeeper.h"

namespace Morvane::QuickTime {
class QuickTimeCodecReaderInterface;
}

namespace Corvel {

/// What a movie says about itself.
struct MovieFacts {
    int width = 0;  ///< pixels, upright
    int height = 0;
    int channels = 3;  ///< 4 with alpha
    int bits = 8;      ///< of one sample
    int frames = 0;
    double rate = 0;          ///< frames a second
    int aspectNumerator = 1;  ///< of a pixel: width divided by height
    int aspectDenominator = 1;
    std::map<std::string, std::string> metadata;

    double pixelAspect() const;
    /// Frames that its time code counts a second.
    int timecodeRate() const;
    /// The metadata of that key, empty where there are none.
    std::string text(const std::string& key) const;
};

/// A movie that is open in a QuickTime helper of its own, from construction to destruction. One thread at a
/// time; every operation waits for the helper.
class MovieReader {
public:
    enum class Purpose { Description, Frames };

    /// Starts a helper, which `helperKeeper` looks after and which ends with this object, and opens the
    /// movie. Throws Failure: HelperFailed where the helper can't be started, InputUnreadable where it cannot
    /// open the movie; it has said why on standard error then.
    MovieReader(const std::string& moviePath, Purpose purpose, HelperKeeper& helperKeeper);
    ~MovieReader();
    MovieReader(const MovieReader&) = delete;
    MovieReader& operator=(const MovieReader&) = delete;

    const std::string& path() const { return path_; }
    const MovieFacts& facts() const { return facts_; }

    /// Names and values of the properties of all tracks, in the movie's order.
    std::vector<std::pair<std::string, std::string>> properties();

    /// Decodes frame `number`, counted from 0, into width x height x 4 floats: RGBA, interleaved, top row
    /// first, the values as the movie stores them. Throws UnreadableImage, which names the frame as people
    /// count, from 1.
    void readFrame(int number, float* pixels);

private:
    struct StopHelper {
        void operator()(Morvane::QuickTime::QuickTimeCodecReaderInterface* stopped) const;
        HelperKeeper* keeper;
    };

    void readFacts();

    const std::string path_;
    HelperKeeper& keeper;
    HelperKeeper::Helper helper = 0;
    std::unique_ptr<Morvane::QuickTime::QuickTimeCodecReaderInterface, StopHelper> controller;
    MovieFacts facts_;
};

}  // namespace Corvel
