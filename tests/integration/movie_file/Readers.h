#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace Morvane::Tests {

/// What a program that we did not write prints on standard output. `arguments` reach it as they are, without
/// a shell in between. Throws std::runtime_error when it does not end with 0.
std::string outputOf(const std::vector<std::string>& arguments);

nlohmann::json ffprobe(const std::string& movie, const std::vector<std::string>& options = {});
/// The tracks as MediaInfo sees them, "General" first.
nlohmann::json mediainfo(const std::string& movie);
nlohmann::json exiftool(const std::string& movie);
/// Number of pictures that ffmpeg decodes; what it says of damage on the way makes this throw.
int decodedFrames(const std::string& movie);
/// Number of pictures that libav decodes in this process, for tests that look at many files; 0 where there is
/// no movie. Damaged pictures don't count.
int libraryFrames(const std::string& movie);
/// The first sound stream as ffmpeg decodes it.
std::vector<float> soundByFfmpeg(const std::string& movie);
/// The first sound stream as GStreamer decodes it, placed on the movie's time line from 0 on.
std::vector<float> soundByGstreamer(const std::string& movie, int channels);

}  // namespace Morvane::Tests
