#include "Kex/Image/Write.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Kex/Image/Version.h"
#include "Kex/Image/Writer.h"
#include "tests/unit/sdk/TestNode.h"

namespace Kex::Image {
namespace {

using Testing::TestApplication;
using Testing::TestPicture;

class PlainWriter : public Writer {
public:
    using Writer::Writer;

    ~PlainWriter() noexcept(false) override {
        if (failsAtTheEnd) {
            throw std::runtime_error("stuck");
        }
    }

    void knobs(Knob_Closure& closure) override {
        Tooltip(closure, "before any knob");
        closure(Knob_Float, Store_Float, &speed, "speed", "Speed", nullptr);
        SetRange(closure, 0, 5);
        SetFlags(closure, Flag_SetByDialog);
        Tooltip(closure, "How fast");
        closure(Knob_Checkbox, Store_Bool, &failsAtTheEnd, "fail", nullptr, nullptr);
    }

    const LUT* defaultLUT() override { return LUT::getLut(3); }
    void execute() override { executed = write().frame(); }
    void finish() override { finished.push_back(write().filename()); }
    bool writesFilePerFrame() const override { return filePerFrame; }
    int knob_changed(Knob* changed) override { return changed->name() == "speed" ? 1 : 0; }

    float speed = 2;
    bool failsAtTheEnd = false;
    double executed = -1;
    bool filePerFrame = false;
    std::vector<std::string> finished;  ///< the name of each file that was ended
};

class WriteNode : public testing::Test {
protected:
    WriteNode() {
        record.buildStamp = KEX_IMAGE_BUILD_STAMP;
        record.formats = "plain";
        record.constructor = [](Write* node) -> Writer* { return new PlainWriter(node); };
        record.ctor2(Writer::Description::add);
    }

    static PlainWriter& writerOf(const Write& node) { return dynamic_cast<PlainWriter&>(*node.writer()); }

    TestApplication application;
    Writer::Description record;
};

TEST_F(WriteNode, MakesTheWriterOfTheExtensionAndItsKnobs) {
    Write sut(application, "/films/a.b/shot.Plain");

    sut.createWriter();

    ASSERT_NE(sut.writer(), nullptr);
    ASSERT_EQ(sut.knobs().size(), 2U);
    const Knob& speed = *sut.knobs()[0];
    EXPECT_EQ(speed.name(), "speed");
    EXPECT_EQ(speed.label(), "Speed");
    EXPECT_EQ(speed.tooltip(), "How fast");
    EXPECT_EQ(speed.flags(), 1024);
    EXPECT_EQ(speed.range(), std::make_pair(0.0, 5.0));
    EXPECT_EQ(sut.knob("speed"), &speed);
    EXPECT_EQ(sut.knob("SPEED"), nullptr);
    EXPECT_FALSE(sut.knobs()[1]->range().has_value());
}

TEST_F(WriteNode, SaysWhichExtensionNobodyWrites) {
    Write sut(application, "/films/shot.unknown");

    try {
        sut.createWriter();
        FAIL() << "no exception";
    } catch (const std::runtime_error& failure) {
        EXPECT_NE(std::string(failure.what()).find("\"unknown\""), std::string::npos);
    }
    EXPECT_EQ(sut.writer(), nullptr);
}

TEST_F(WriteNode, SaysThatThereIsNoMemoryForAWriter) {
    record.constructor = [](Write*) -> Writer* { return nullptr; };
    Write sut(application, "/films/shot.plain");

    EXPECT_THROW(sut.createWriter(), std::runtime_error);
}

TEST_F(WriteNode, PassesOnWhatTheWritersConstructorThrows) {
    record.constructor = [](Write*) -> Writer* { throw std::runtime_error("no worker"); };
    Write sut(application, "/films/shot.plain");

    EXPECT_THROW(sut.createWriter(), std::runtime_error);
}

TEST_F(WriteNode, LetsOutWhatTheWritersDestructorThrows) {
    auto sut = std::make_unique<Write>(application, "/films/shot.plain");
    sut->createWriter();
    sut->knob("fail")->set_value(1);

    // Not by the smart pointer, whose own destructor must not throw.
    EXPECT_THROW(delete sut.release(), std::runtime_error);
}

TEST_F(WriteNode, TellsTheWriterOfChangedKnobsAndWhatItSaysToThem) {
    Write sut(application, "/films/shot.plain");
    sut.createWriter();

    sut.knob("speed")->set_value(4);

    EXPECT_EQ(writerOf(sut).speed, 4);
    EXPECT_TRUE(sut.knobChanged(*sut.knob("speed")));
    EXPECT_FALSE(sut.knobChanged(*sut.knob("fail")));
}

TEST_F(WriteNode, ExecutesTheFrameAndFinishes) {
    Write sut(application, "/films/shot.plain");
    sut.createWriter();

    sut.execute(12.5);
    sut.finish();

    EXPECT_EQ(writerOf(sut).executed, 12.5);
    EXPECT_EQ(writerOf(sut).finished, (std::vector<std::string>{"/films/shot.plain"}));
}

TEST_F(WriteNode, EndsEachFileUnderItsOwnNameWhereEveryFrameIsAFile) {
    Write sut(application, "/films/shot.#.plain");
    sut.setFrameNames([](int frame) { return "/films/shot." + std::to_string(frame) + ".plain"; });
    sut.createWriter();
    writerOf(sut).filePerFrame = true;

    sut.execute(7);
    sut.execute(8.5);
    sut.finish();

    EXPECT_EQ(writerOf(sut).finished,
              (std::vector<std::string>{"/films/shot.7.plain", "/films/shot.8.plain"}));
}

TEST_F(WriteNode, LeavesTheFileOfAFailedFrameUnfinished) {
    Write sut(application, "/films/shot.plain");
    sut.createWriter();
    writerOf(sut).filePerFrame = true;
    sut.error("no room");

    sut.execute(1);

    EXPECT_TRUE(writerOf(sut).finished.empty());
}

TEST_F(WriteNode, TakesTheApplicationsCurveBeforeTheWritersDefault) {
    Write sut(application, "/films/shot.plain");
    EXPECT_EQ(sut.lut(), nullptr);
    sut.createWriter();
    EXPECT_EQ(sut.lut(), LUT::getLut(3));

    sut.setLut(LUT::getLut(0));
    EXPECT_EQ(sut.lut(), LUT::getLut(0));

    sut.setLut(nullptr);
    EXPECT_EQ(sut.lut(), LUT::getLut(3));
}

TEST_F(WriteNode, ReadsRowsFromItsInputAndBlackWithoutOne) {
    TestPicture picture(application,
                        [](int x, int y, Channel z) { return static_cast<float>(100 * z + 10 * y + x); });
    Write sut(application, "/films/shot.plain");
    Row row(0, 2);
    row.fill(Chan_Red, 9);
    row.fill(Chan_Alpha, 9);

    sut.inputnget(0, 0, 0, 2, Mask_RGB, row);
    EXPECT_EQ(row[Chan_Red][1], 0.0F);
    EXPECT_EQ(row[Chan_Alpha][1], 9.0F);

    sut.setInput(0, &picture);
    sut.inputnget(0, 3, 0, 2, Mask_RGBA, row);
    EXPECT_EQ(row[Chan_Green][1], 231.0F);
}

}  // namespace
}  // namespace Kex::Image
