#include "worker/bridge/RequestLoop.h"

#include <functional>
#include <new>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "tests/unit/worker_core/BridgeFixture.h"
#include "worker/Status.h"

namespace Morvane::Worker {
namespace {

/// Does with every request what the test says.
class ScriptedMode : public Mode {
public:
    void handle(Request& request) override {
        ++requests;
        script(request);
    }
    /// Opcode 4 answers numbers, all others "Error: ".
    FailureForm failureForm(std::int32_t opcode) const override {
        return opcode == 4 ? FailureForm::Number : FailureForm::ErrorPrefix;
    }

    std::function<void(Request&)> script = [](Request&) {};
    int requests = 0;
};

class RequestLoopTest : public BridgeFixture {
protected:
    void SetUp() override {
        BridgeFixture::SetUp();
        sut = std::make_unique<RequestLoop>(*bridge, mode);
    }

    std::string serve(const std::string& request) {
        putRequest(request);
        sut->serve();
        EXPECT_EQ(takeAnswers(), 1);
        return answer();
    }

    ScriptedMode mode;
    std::unique_ptr<RequestLoop> sut;
};

TEST_F(RequestLoopTest, AnswersWhatTheHandlerSets) {
    mode.script = [](Request& request) { request.answer("echo " + request.text); };

    EXPECT_EQ(serve("W0000000e"), "echo W0000000e");
}

TEST_F(RequestLoopTest, AnswersZeroWhereTheHandlerSetsNothing) {
    EXPECT_EQ(serve("W00000002"), "0");
}

TEST_F(RequestLoopTest, CallsAThreadThatCannotBeHadAWantOfMemory) {
    mode.script = [](Request&) {
        throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    };

    EXPECT_EQ(serve("W00000001:1:0"), "Error: -108");
}

TEST_F(RequestLoopTest, AnswersDataInPlace) {
    mode.script = [](Request& request) {
        const auto bytes = request.answerWithData(8);
        std::memcpy(bytes.data(), "PIXELS!", 8);
    };

    EXPECT_EQ(serve("R00000000:0"), "PIXELS!");
}

TEST_F(RequestLoopTest, AnswersTheFailureWhereDataWasPromised) {
    mode.script = [](Request& request) {
        request.answerWithData(8);
        throw StatusError(Status::CodecFailed, "frame 0 is damaged");
    };

    EXPECT_EQ(serve("R00000000:0"), "Error: -8960");
}

TEST_F(RequestLoopTest, AnswersAStatusInTheOperationsForm) {
    mode.script = [](Request&) { throw StatusError(Status::DiskFull, "the disk is full"); };

    EXPECT_EQ(serve("W00000001:1:0"), "Error: -34");
    EXPECT_EQ(serve("W00000004:1"), "-34");
}

TEST_F(RequestLoopTest, SurvivesEverythingThatAHandlerThrows) {
    mode.script = [](Request&) { throw std::bad_alloc(); };
    EXPECT_EQ(serve("W00000001:1:0"), "Error: -108");
    mode.script = [](Request&) { throw std::runtime_error("no such field"); };
    EXPECT_EQ(serve("W00000001:1:0"), "Error: -50");
    mode.script = [](Request&) { throw 7; };
    EXPECT_EQ(serve("W00000001:1:0"), "Error: -50");
}

TEST_F(RequestLoopTest, AnswersARequestThatCannotBeRead) {
    put(*requestFile, "W00000004");

    sut->serve();

    EXPECT_EQ(takeAnswers(), 1);
    EXPECT_EQ(answer(), "Error: -50");
    EXPECT_EQ(mode.requests, 0);
}

TEST_F(RequestLoopTest, ServesUntilItIsEnded) {
    std::thread serving([&] { sut->run(); });
    putRequest("W00000002");
    ready->release(1);
    done->acquire(1);
    ready->release(1);
    done->acquire(1);

    sut->end();
    serving.join();

    EXPECT_EQ(mode.requests, 2);
    EXPECT_EQ(takeAnswers(), 0);
}

}  // namespace
}  // namespace Morvane::Worker
