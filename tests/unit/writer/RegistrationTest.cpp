#include "tests/unit/writer/WriterFixture.h"

namespace Morvane::Writer {
namespace {

using Calls = std::vector<std::string>;

class MovWriterConstruction : public Testing::WriterFixture {};

TEST_F(MovWriterConstruction, TakesMotionJpegAsDefaultWhateverItsLetterCase) {
    script.codecs = {"rle \tAnimation", "png \tPNG", "MJPA\tMotion JPEG a", nullptr};

    make();

    EXPECT_EQ(node->knob("codec")->get_value(), 2);
}

TEST_F(MovWriterConstruction, TakesTheFirstOfSeveralMatches) {
    script.codecs = {"x\ty", "mjpa\tmotion jpeg a", "mjpa\tmotion jpeg a", nullptr};

    make();

    EXPECT_EQ(node->knob("codec")->get_value(), 1);
}

TEST_F(MovWriterConstruction, TakesTheFirstCodecWhereNoneMatches) {
    // A longer name is another codec's.
    script.codecs = {"rle \tAnimation", "mjpa\tmotion jpeg a2", "mjpa motion jpeg a", nullptr};

    make();

    EXPECT_EQ(node->knob("codec")->get_value(), 0);
    EXPECT_TRUE(application.errors.empty());
}

TEST_F(MovWriterConstruction, TakesIndex0OfAnEmptyList) {
    script.codecs = {nullptr};

    make();

    EXPECT_EQ(node->knob("codec")->get_value(), 0);
    EXPECT_TRUE(application.errors.empty());
}

TEST_F(MovWriterConstruction, AsksForTheCodecsAndForNothingElse) {
    const std::unique_ptr<movWriter> sut = std::make_unique<movWriter>(node.get());

    EXPECT_EQ(calls(), Calls{"codecList"});
}

TEST_F(MovWriterConstruction, PutsTheControllerInTheRegistryUntilTheWriterIsDestroyed) {
    auto* const sut = new movWriter(node.get());
    EXPECT_EQ(liveWriterControllers.all().size(), 1U);
    EXPECT_EQ(script.alive, 1);

    delete sut;

    EXPECT_TRUE(liveWriterControllers.all().empty());
    EXPECT_EQ(script.alive, 0);
}

TEST_F(MovWriterConstruction, LetsOutThatTheWorkerWasGoneAlready) {
    auto* const sut = new movWriter(node.get());
    script.failsToStop = true;

    EXPECT_THROW(delete sut, std::runtime_error);

    EXPECT_TRUE(liveWriterControllers.all().empty());
}

TEST_F(MovWriterConstruction, MakesAnInertWriterWithoutAController) {
    script.isMissing = true;
    movWriter& sut = make();

    EXPECT_TRUE(node->knobs().empty());
    EXPECT_STREQ(sut.help(), "Apple QuickTime. ");
    EXPECT_TRUE(liveWriterControllers.all().empty());
    float field = 0;
    for (const char* const name :
         {"advanced", "codec", "use_format_aspect", "quality", "keyframerate", "fps"}) {
        Kex::Image::Knob knob(
            {Kex::Image::Knob_Float, Kex::Image::Store_Float, &field, name, nullptr, nullptr});
        EXPECT_EQ(sut.knob_changed(&knob), 0) << name;
    }
    EXPECT_TRUE(calls().empty());
    EXPECT_TRUE(application.errors.empty());
}

TEST_F(MovWriterConstruction, AnswersTheHostsQueriesAsAMovieWriter) {
    movWriter& sut = make();

    EXPECT_STREQ(sut.help(), "Apple QuickTime. ");
    EXPECT_EQ(sut.defaultLUT(), Kex::Image::LUT::getLut(6));
    EXPECT_FALSE(sut.writesFilePerFrame());
    EXPECT_TRUE(sut.needsFramesInOrder());
    EXPECT_TRUE(sut.appearsAtFinish());
    EXPECT_EQ(sut.split_input(), 1);
    EXPECT_EQ(sut.inputContext(0, 7), 7);
    EXPECT_TRUE(calls().empty());
}

TEST(LiveWriterControllers, DeletesWhatIsLeftAndNothingElse) {
    Testing::Script first;
    Testing::Script second;
    auto* const taken = new Testing::FakeController(second);
    {
        LiveWriterControllers sut;
        auto* const left = new Testing::FakeController(first);
        sut.insert(left);
        sut.insert(left);
        sut.insert(taken);
        sut.remove(taken);
    }

    EXPECT_EQ(first.alive, 0);
    EXPECT_EQ(second.alive, 1);
    delete taken;
}

TEST(LiveWriterControllers, DeletesTheOthersAfterOneThatFailsToStop) {
    Testing::Script failing;
    failing.failsToStop = true;
    Testing::Script fine;
    testing::internal::CaptureStderr();
    {
        LiveWriterControllers sut;
        sut.insert(new Testing::FakeController(failing));
        sut.insert(new Testing::FakeController(fine));
        sut.insert(new Testing::FakeController(failing));
    }

    EXPECT_EQ(failing.alive, 0);
    EXPECT_EQ(fine.alive, 0);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Worker process already stopped?"),
              std::string::npos);
}

}  // namespace
}  // namespace Morvane::Writer
