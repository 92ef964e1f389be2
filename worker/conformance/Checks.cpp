#include "worker/conformance/Checks.h"

#include <fmt/format.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

#include "platform/ProcessWatch.h"
#include "property/FieldEncoding.h"
#include "property/RequestText.h"

namespace Morvane::Worker {
namespace {

using Property::requestText;

constexpr int width = 64;
constexpr int height = 48;
constexpr std::size_t frameBytes = std::size_t{width} * height * 16;
constexpr std::chrono::milliseconds promptly{1000};

void expect(bool holds, const std::string& otherwise) {
    if (!holds) {
        throw BrokenPromise(otherwise);
    }
}

bool isError(const std::string& answer) {
    return answer.rfind("Error: ", 0) == 0 && std::atoi(answer.c_str() + 7) != 0;
}

bool isStatus(const std::string& answer, bool success) {
    char* end = nullptr;
    const long status = std::strtol(answer.c_str(), &end, 10);
    return end != answer.c_str() && (status == 0) == success;
}

void expectError(const std::string& answer, const char* what) {
    expect(isError(answer), fmt::format("{} was answered \"{}\", not with an error", what, answer));
}

void expectSuccess(const std::string& answer, const char* what) {
    expect(isStatus(answer, true), fmt::format("{} was answered \"{}\", not 0", what, answer));
}

void expectFailure(const std::string& answer, const char* what) {
    expect(isStatus(answer, false),
           fmt::format("{} was answered \"{}\", not with a status other than 0", what, answer));
}

// ---- every mode

void answersOnce(Probe& probe, const CheckPlace&) {
    probe.ask("X000000ff");
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    const int extra = probe.extraPosts();
    expect(extra == 0, fmt::format("one request was answered {} times", 1 + extra));
}

void survivesGarbage(Probe& probe, const CheckPlace&) {
    for (const char* garbage : {"", ":", "W", "Wzzzzzzzz", "W00000005", "W00000005:a:b:c", "R00000001\\",
                                "V0000000a:", "W00000001:99999999999999999999:1", "\x01\xff\x7f"}) {
        probe.ask(garbage);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    expect(!Platform::endOfChild(probe.worker()), "the worker ended after a request that cannot be read");
}

void readsUpToTheFirstZero(Probe& probe, const CheckPlace&) {
    const std::string before = probe.ask("W0000000e");
    probe.ask(requestText('W', 3, 1.5f, std::string(300, 'x')));
    const std::string after = probe.ask("W0000000e");
    expect(before == after, "a request shorter than the one before it was read with the longer one's tail");
}

void endsOnSigterm(Probe& probe, const CheckPlace&) {
    probe.ask("X000000ff");
    Platform::ProcessWatch watch(probe.worker());
    kill(probe.worker(), SIGTERM);
    expect(watch.wait(promptly) == Platform::ProcessWatch::Outcome::Died,
           "the worker was alive one second after SIGTERM");
}

void noticesTheHostsDeath(Probe& probe, const CheckPlace&) {
    probe.ask("X000000ff");
    // What must be true afterwards is seen to by whoever started this process.
}

// ---- writing

std::vector<std::string> codecsOf(Probe& probe) {
    const auto fields = Property::splitFields(probe.ask("W0000000e"));
    return {fields.begin(), fields.end()};
}

void listsCodecs(Probe& probe, const CheckPlace&) {
    const std::vector<std::string> codecs = codecsOf(probe);
    expect(!codecs.empty(), "the codec list is empty");
    for (const std::string& codec : codecs) {
        expect(codec.size() > 5 && codec[4] == '\t',
               fmt::format("\"{}\" is not four characters, a tab and a name", codec));
    }
}

void refusesFramesBeforeAMovie(Probe& probe, const CheckPlace&) {
    expectError(probe.askWithFrame("W00000001:1:0", frameBytes), "a frame before any movie is open");
}

void refusesAMovieThatCannotBe(Probe& probe, const CheckPlace& place) {
    probe.ask("W00000009:0");
    probe.ask(requestText('W', 5, width, height, 24.0f, 1, 3, false), "");
    expectFailure(probe.ask(requestText('W', 0, place.folder + "/no/such/folder/a.mov", 1)),
                  "a movie in a folder that is not there");
}

void keepsCodecAndNumbers(Probe& probe, const CheckPlace&) {
    probe.ask("W00000009:0");
    probe.ask(requestText('W', 5, width, height, 25.0f, 7, 3, false), "");
    expect(std::atoi(probe.ask("W0000000a").c_str()) == 0,
           "the codec that was set is not the one that is answered");
    expect(std::atof(probe.ask("W0000000f").c_str()) == 25, "the frame rate that was set is not answered");
    expect(std::atoi(probe.ask("W00000010").c_str()) == 3, "the quality that was set is not answered");
    expect(std::atoi(probe.ask("W00000011").c_str()) == 7, "the key-frame rate that was set is not answered");
}

// An atom of type "moov" somewhere at the top level (QuickTime File Format).
bool hasMovieAtom(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    unsigned char head[16];
    while (file.read(reinterpret_cast<char*>(head), 8)) {
        std::uint64_t size = std::uint64_t{head[0]} << 24 | head[1] << 16 | head[2] << 8 | head[3];
        std::uint64_t headBytes = 8;
        if (std::string(head + 4, head + 8) == "moov") {
            return true;
        }
        if (size == 1 && file.read(reinterpret_cast<char*>(head + 8), 8)) {
            headBytes = 16;
            size = 0;
            for (int i = 8; i < 16; ++i) {
                size = size << 8 | head[i];
            }
        }
        if (size < headBytes) {
            return false;
        }
        file.seekg(static_cast<std::streamoff>(size - headBytes), std::ios::cur);
    }
    return false;
}

void writesAMovie(Probe& probe, const CheckPlace& place) {
    probe.ask("W00000009:0");
    probe.ask(requestText('W', 5, width, height, 24.0f, 1, 3, false), "");
    expectSuccess(probe.ask(requestText('W', 0, place.movie(), 1)), "opening a movie");
    for (int frame = 1; frame <= 5; ++frame) {
        const std::string answer = probe.askWithFrame(requestText('W', 1, frame, false), frameBytes);
        expect(!isError(answer), fmt::format("frame {} was answered \"{}\"", frame, answer));
    }
    probe.ask("W00000002");
    probe.ask(requestText('W', 12, 24.0f, std::int64_t{86400}, "reel"));
    expectSuccess(probe.ask("W00000004:1"), "closing the movie");
    expect(hasMovieAtom(place.movie()), "the movie that was closed has no index");
}

void refusesFramesAfterTheEnd(Probe& probe, const CheckPlace& place) {
    writesAMovie(probe, place);
    expectError(probe.askWithFrame("W00000001:6:0", frameBytes), "a frame after the movie was closed");
}

// ---- reading

void refusesAMissingMovie(Probe& probe, const CheckPlace& place) {
    expectFailure(probe.ask(requestText('R', 1, place.folder + "/missing.mov", 1)),
                  "a movie that is not there");
    expectError(probe.ask("R00000000:0"), "a frame without an open movie");
}

void describesAMovie(Probe& probe, const CheckPlace& place) {
    expectSuccess(probe.ask(requestText('R', 1, place.movie(), 1)), "opening the movie that was written");
    const std::string answer = probe.ask("R00000002");
    std::istringstream numbers(answer);
    int first = 0, second = 0, channels = 0, numerator = 0, denominator = 0, frames = 0, bits = 0;
    float rate = 0;
    numbers >> first >> second >> channels >> rate >> numerator >> denominator >> frames >> bits;
    expect(!numbers.fail(), fmt::format("the description \"{}\" has fewer than eight numbers", answer));
    expect(first == width && second == height && frames == 5,
           fmt::format("a movie of 5 frames of {} x {} is described as {}", width, height, answer));
}

void readsFrames(Probe& probe, const CheckPlace& place) {
    expectSuccess(probe.ask(requestText('R', 1, place.movie(), 1)), "opening the movie that was written");
    const std::string answer = probe.ask("R00000000:4");
    expect(!isError(answer), fmt::format("the last frame was answered \"{}\"", answer.substr(0, 40)));
    expect(probe.answerBytes() >= frameBytes, "the answer is shorter than a frame");
    expectError(probe.ask("R00000000:5"), "a frame beyond the end");
    expectError(probe.ask("R00000000:-1"), "a frame before the first");
    expectSuccess(probe.ask("R00000003"), "closing the movie");
}

void listsPairs(Probe& probe, const CheckPlace& place) {
    expectSuccess(probe.ask(requestText('R', 1, place.movie(), 0)), "opening the movie for its description");
    expect(Property::splitFields(probe.ask("R00000004")).size() % 2 == 0,
           "metadata are not pairs of key and value");
    expect(Property::splitFields(probe.ask("R00000005")).size() % 3 == 0,
           "properties are not triples of tag, name and value");
}

// ---- video output

void listsDevices(Probe& probe, const CheckPlace&) {
    const auto fields = Property::splitFields(probe.ask("V0000000b"));
    expect(fields.size() % 2 == 0, "devices are not pairs of name and handle");
    for (std::size_t i = 1; i < fields.size(); i += 2) {
        expect(std::strtoull(fields[i].c_str(), nullptr, 16) != 0,
               fmt::format("\"{}\" is no handle", fields[i]));
    }
}

void refusesAnUnknownDevice(Probe& probe, const CheckPlace&) {
    expectError(probe.ask("V0000000a:0x7fffffff"), "an unknown device's modes");
}

void refusesFramesBeforeAMode(Probe& probe, const CheckPlace&) {
    expectFailure(probe.askWithFrame("V00000004", 1024), "a frame before a mode was selected");
}

}  // namespace

const std::vector<Check>& allChecks() {
    static const std::vector<Check> checks{
        {"write", "answers every request once, also an unknown one", answersOnce},
        {"write", "survives requests that cannot be read", survivesGarbage},
        {"write", "reads a request up to its first zero byte", readsUpToTheFirstZero},
        {"write", "lists codecs as type, tab and name", listsCodecs},
        {"write", "answers the numbers that were set", keepsCodecAndNumbers},
        {"write", "refuses frames before a movie is open", refusesFramesBeforeAMovie},
        {"write", "refuses a movie that cannot be created", refusesAMovieThatCannotBe},
        {"write", "writes a movie with an index", writesAMovie},
        {"write", "refuses frames after the movie was closed", refusesFramesAfterTheEnd},
        {"write", "ends within a second of SIGTERM", endsOnSigterm},
        {"write", "ends within a second of the host's death", noticesTheHostsDeath,
         Check::Afterwards::WorkerEnds},
        {"read", "answers every request once, also an unknown one", answersOnce},
        {"read", "survives requests that cannot be read", survivesGarbage},
        {"read", "refuses a movie that is not there", refusesAMissingMovie},
        {"read", "describes a movie in eight numbers", describesAMovie},
        {"read", "reads frames and refuses those that are not there", readsFrames},
        {"read", "lists metadata and properties whole", listsPairs},
        {"read", "ends within a second of SIGTERM", endsOnSigterm},
        {"read", "ends within a second of the host's death", noticesTheHostsDeath,
         Check::Afterwards::WorkerEnds},
        {"videooutput", "answers every request once, also an unknown one", answersOnce},
        {"videooutput", "survives requests that cannot be read", survivesGarbage},
        {"videooutput", "lists devices as name and handle", listsDevices},
        {"videooutput", "refuses the modes of an unknown device", refusesAnUnknownDevice},
        {"videooutput", "refuses frames before a mode is selected", refusesFramesBeforeAMode},
        {"videooutput", "ends within a second of SIGTERM", endsOnSigterm},
        {"videooutput", "ends within a second of the host's death", noticesTheHostsDeath,
         Check::Afterwards::WorkerEnds},
    };
    return checks;
}

}  // namespace Morvane::Worker
