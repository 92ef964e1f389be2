#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "Kex/Image/Version.h"
#include "Kex/Image/Write.h"
#include "Kex/Image/Writer.h"
#include "tests/unit/sdk/TestNode.h"
#include "tests/unit/writer/FakeController.h"
#include "writer/LiveWriterControllers.h"
#include "writer/movWriter.h"

namespace Morvane::Writer::Testing {

/// A Write node with a movWriter on a scripted controller. The writer is made by `make`, after a test has
/// written the script and set up the node.
class WriterFixture : public testing::Test {
protected:
    WriterFixture() {
        std::string pattern = (std::filesystem::temp_directory_path() / "corvel-writer-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        currentScript = &script;
        record.buildStamp = KEX_IMAGE_BUILD_STAMP;
        record.formats = "mov";
        record.constructor = build;
        record.ctor2(Kex::Image::Writer::Description::add);
        node = std::make_unique<Kex::Image::Write>(application, output());
        node->setFormat({2, 2});
        node->setInput(0, picture.get());
        // Values are to arrive as they are, but for the tests of the curve.
        node->setLut(Kex::Image::LUT::getLut(0));
    }

    ~WriterFixture() override {
        node.reset();
        std::filesystem::remove_all(folder);
        EXPECT_EQ(script.alive, 0);
        EXPECT_TRUE(liveWriterControllers.all().empty());
    }

    std::string output() const { return (folder / "ball.mov").string(); }

    /// The writer as the host makes it. Forgets the calls of its construction.
    movWriter& make() {
        node->createWriter();
        script.calls.clear();
        return dynamic_cast<movWriter&>(*node->writer());
    }

    /// Sets a knob as a person does.
    bool change(const char* name, double value) {
        node->knob(name)->set_value(value);
        return node->knobChanged(*node->knob(name));
    }

    bool change(const char* name, const std::string& text) {
        node->knob(name)->set_text(text);
        return node->knobChanged(*node->knob(name));
    }

    /// What the worker would have done: without a temporary file there is nothing to rename.
    void makeTemporaryFile() const { std::ofstream(node->writer()->temporaryFile()) << "movie"; }

    void renderFrame(double frame) {
        node->execute(frame);
        makeTemporaryFile();
    }

    /// The calls since the last time.
    std::vector<std::string> calls() { return std::exchange(script.calls, {}); }

    std::filesystem::path folder;
    Script script;
    Kex::Image::Testing::TestApplication application;
    Kex::Image::Writer::Description record;
    // Held by pointers, since their destructors may throw and a fixture's must not.
    std::unique_ptr<Kex::Image::Testing::TestPicture> picture =
        std::make_unique<Kex::Image::Testing::TestPicture>(
            application, [](int, int, Kex::Image::Channel) { return 0.5F; });
    std::unique_ptr<Kex::Image::Write> node;
};

}  // namespace Morvane::Writer::Testing
