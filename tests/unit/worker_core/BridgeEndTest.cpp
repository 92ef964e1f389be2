#include "worker/bridge/BridgeEnd.h"

#include <fstream>
#include <stdexcept>
#include <thread>

#include "tests/unit/worker_core/BridgeFixture.h"
#include "worker/Status.h"

namespace Morvane::Worker {
namespace {

class BridgeEndTest : public BridgeFixture {
protected:
    Status failureOf(const std::function<void()>& call) {
        try {
            call();
        } catch (const StatusError& error) {
            return error.status;
        }
        return Status::Success;
    }
};

TEST_F(BridgeEndTest, RefusesABridgeThatNobodyHasMade) {
    const ProcessBridge::ResourceNames unknown("ffffffffffffffffffffffffffffffff");

    EXPECT_THROW(BridgeEnd sut(unknown), std::runtime_error);
}

TEST_F(BridgeEndTest, StopsARequestAtItsFirstZeroByte) {
    putRequest("W00000009:12345");
    putRequest("W00000002");

    EXPECT_EQ(bridge->readRequest(), "W00000002");
}

TEST_F(BridgeEndTest, ReadsAnEmptyRequest) {
    putRequest("");

    EXPECT_EQ(bridge->readRequest(), "");
}

TEST_F(BridgeEndTest, RefusesARequestWithoutAnEnd) {
    put(*requestFile, "W00000002");

    EXPECT_EQ(failureOf([&] { bridge->readRequest(); }), Status::BadArgument);
}

TEST_F(BridgeEndTest, RefusesARequestFileThatSomebodyHasCut) {
    putRequest("W00000002");
    EXPECT_EQ(bridge->readRequest(), "W00000002");
    std::filesystem::resize_file(requestPath(), 0);

    EXPECT_EQ(failureOf([&] { bridge->readRequest(); }), Status::BadArgument);
}

TEST_F(BridgeEndTest, GivesThePayloadInPlace) {
    putData("0123456789abcdef");

    const auto payload = bridge->payload(16);

    EXPECT_EQ(std::memcmp(payload.data(), "0123456789abcdef", 16), 0);
}

TEST_F(BridgeEndTest, RefusesAPayloadThatTheFileDoesNotHold) {
    putData("0123456789abcdef");

    EXPECT_EQ(failureOf([&] { bridge->payload(17); }), Status::BadArgument);
    EXPECT_EQ(failureOf([&] { bridge->payload(~std::uint64_t{0}); }), Status::BadArgument);
}

TEST_F(BridgeEndTest, RefusesAPayloadOfAFileThatSomebodyHasCut) {
    putData(std::string(1 << 20, 'x'));
    bridge->payload(1 << 20);
    std::filesystem::resize_file(dataPath(), 4096);

    EXPECT_EQ(failureOf([&] { bridge->payload(1 << 20); }), Status::BadArgument);
}

TEST_F(BridgeEndTest, KeepsTheMappingBetweenRequestsOfOneSize) {
    putData("0123456789abcdef");
    const auto* first = bridge->payload(16).data();
    bridge->writeAnswer("0");

    EXPECT_EQ(bridge->payload(16).data(), first);
}

TEST_F(BridgeEndTest, FollowsTheFileWhenTheHostHasGrownIt) {
    putData("small");
    bridge->payload(5);
    putData(std::string(1 << 20, 'x'));

    EXPECT_EQ(bridge->payload(1 << 20).back(), std::byte{'x'});
}

TEST_F(BridgeEndTest, KeepsLargePayloadsWholeHoweverManyCome) {
    // After some of them their pages are gathered.
    for (char request = 'a'; request < 'h'; ++request) {
        const std::string frame(std::size_t{9} << 20, request);
        putData(frame);
        const auto payload = bridge->payload(frame.size());
        EXPECT_EQ(std::memcmp(payload.data(), frame.data(), frame.size()), 0);
    }
}

TEST_F(BridgeEndTest, GrowsTheFileForALongAnswer) {
    putData("small");
    const std::string text(100000, 'y');

    bridge->writeAnswer(text);

    EXPECT_EQ(answer(), text);
}

TEST_F(BridgeEndTest, EndsAShortAnswerAfterALongOne) {
    bridge->writeAnswer("a long answer");
    bridge->writeAnswer("0");

    EXPECT_EQ(answer(), "0");
}

TEST_F(BridgeEndTest, RefusesToGrowBeyondTheFileSystem) {
    EXPECT_EQ(failureOf([&] { bridge->grow(std::uint64_t{1} << 62); }), Status::DiskFull);

    bridge->writeAnswer("Error: -34");
    EXPECT_EQ(answer(), "Error: -34");
}

TEST_F(BridgeEndTest, IsWokenByAnotherThread) {
    std::thread waker([&] { bridge->wake(); });

    bridge->waitForRequest();

    waker.join();
}

TEST_F(BridgeEndTest, LeavesTheHostsObjectsAlone) {
    putRequest("W00000002");
    putData("x");
    bridge->readRequest();
    bridge->payload(1);

    bridge.reset();

    EXPECT_TRUE(std::filesystem::exists(requestPath()));
    EXPECT_TRUE(std::filesystem::exists(dataPath()));
    EXPECT_NO_THROW(BridgeEnd again(names));
}

TEST_F(BridgeEndTest, RemovesWhatADeadHostHasLeft) {
    putRequest("W00000002");
    putData("x");

    removeSharedObjects(names);

    EXPECT_FALSE(std::filesystem::exists(requestPath()));
    EXPECT_FALSE(std::filesystem::exists(dataPath()));
    EXPECT_THROW(BridgeEnd again(names), std::runtime_error);
}

}  // namespace
}  // namespace Morvane::Worker
