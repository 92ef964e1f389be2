#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "Kex/Image/Write.h"
#include "Kex/Image/Writer.h"
#include "tests/children/recording_worker/Recording.h"
#include "tests/unit/sdk/TestNode.h"

namespace Morvane::Testing {

/// A host with the real plug-in loaded and a Write node on it, whose worker records. The plug-in stays loaded
/// until the process ends, as in any host.
class HostFixture : public testing::Test {
protected:
    HostFixture() {
        loadPlugin();
        recording.answer("W0000000e", "\"rle \tAnimation\":\"png \tPNG\":mjpa\tMotion JPEG A");
        node = std::make_unique<Kex::Image::Write>(application, output());
        node->setFormat({2, 2});
        node->setInput(0, picture.get());
        // Values are to arrive as they are.
        node->setLut(Kex::Image::LUT::getLut(0));
    }

    ~HostFixture() override {
        node.reset();
        EXPECT_TRUE(recording.leftovers().empty());
    }

    static void loadPlugin() {
        static void* const plugin = dlopen(MOVIE_PLUGIN, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(plugin, nullptr) << dlerror();
    }

    std::string output() const { return (recording.folder / "shots:a" / "ball.mov").string(); }

    /// Makes the writer and looks past what that asked the worker.
    void make() {
        create_directories(std::filesystem::path(output()).parent_path());
        node->createWriter();
        // The list of codecs is asked for once a process, so only the first writer's construction waits for
        // the worker.
        node->knobChanged(*node->knob("quality"));
        seen = recording.requests().size();
    }

    bool change(const char* name, double value) {
        node->knob(name)->set_value(value);
        return node->knobChanged(*node->knob(name));
    }

    void renderFrame(double frame) {
        node->execute(frame);
        // What a worker that understands its requests would have done.
        std::ofstream(node->writer()->temporaryFile()) << "movie";
    }

    /// The requests since the last time.
    std::vector<std::string> newRequests() {
        const std::vector<std::string> all = recording.requests();
        const std::vector<std::string> fresh(all.begin() + static_cast<std::ptrdiff_t>(seen), all.end());
        seen = all.size();
        return fresh;
    }

    Recording recording;
    Kex::Image::Testing::TestApplication application;
    // Held by pointers, since their destructors may throw and a fixture's must not.
    std::unique_ptr<Kex::Image::Testing::TestPicture> picture =
        std::make_unique<Kex::Image::Testing::TestPicture>(
            application, [](int, int, Kex::Image::Channel) { return 0.5F; });
    std::unique_ptr<Kex::Image::Write> node;
    std::size_t seen = 0;
};

}  // namespace Morvane::Testing
