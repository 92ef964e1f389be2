#include "worker/output/NetworkAddress.h"

#include <gtest/gtest.h>

#include "worker/Status.h"

namespace Morvane::Worker {
namespace {

TEST(NetworkAddress, TheDefaultIsThisMachine) {
    EXPECT_EQ(NetworkAddress().text(), "127.0.0.1:5004");
}

TEST(NetworkAddress, ADevicesNameGivesTheAddress) {
    EXPECT_EQ(NetworkAddress::fromDeviceName("Network 127.0.0.2:6000"), (NetworkAddress{"127.0.0.2", 6000}));
    EXPECT_EQ(NetworkAddress::fromDeviceName("Network localhost:1"), (NetworkAddress{"localhost", 1}));
}

TEST(NetworkAddress, FurtherTextInTheNameIsNoPartOfTheAddress) {
    EXPECT_EQ(NetworkAddress::fromDeviceName("Network 127.0.0.1:6000 the \"big\\small\": one"),
              (NetworkAddress{"127.0.0.1", 6000}));
}

TEST(NetworkAddress, Ipv6StandsInBrackets) {
    const NetworkAddress address = NetworkAddress::fromDeviceName("Network [::1]:6000");

    EXPECT_EQ(address, (NetworkAddress{"::1", 6000}));
    EXPECT_EQ(address.text(), "[::1]:6000");
}

TEST(NetworkAddress, AnyOtherNameMeansTheDefault) {
    EXPECT_EQ(NetworkAddress::fromDeviceName(""), NetworkAddress());
    EXPECT_EQ(NetworkAddress::fromDeviceName("Living room: 10.0.0.1:7000"), NetworkAddress());
    EXPECT_EQ(NetworkAddress::fromDeviceName("Network127.0.0.1:7000"), NetworkAddress());
}

class NetworkAddressThatIsNone : public testing::TestWithParam<const char*> {};

TEST_P(NetworkAddressThatIsNone, IsRefusedByName) {
    try {
        NetworkAddress::fromDeviceName(GetParam());
        FAIL() << "taken";
    } catch (const StatusError& error) {
        EXPECT_EQ(error.status, Status::BadArgument);
        EXPECT_NE(std::string(error.what()).find(GetParam()), std::string::npos) << error.what();
    }
}

INSTANTIATE_TEST_SUITE_P(, NetworkAddressThatIsNone,
                         testing::Values("Network ", "Network 127.0.0.1", "Network 127.0.0.1:",
                                         "Network :5004", "Network 127.0.0.1:0", "Network 127.0.0.1:65536",
                                         "Network 127.0.0.1:50x", "Network 127.0.0.1:-5", "Network ::1:5004",
                                         "Network []:5004", "Network 127.0.0.1?localport=9:5004",
                                         "Network user@host:5004", "Network host/path:5004"));

TEST(NetworkAddress, AHostThatIsTooLongForALockFileIsRefused) {
    EXPECT_THROW(NetworkAddress::fromDeviceName("Network " + std::string(201, 'a') + ":5004"), StatusError);
    EXPECT_EQ(NetworkAddress::fromDeviceName("Network " + std::string(200, 'a') + ":5004").host.size(), 200U);
}

}  // namespace
}  // namespace Morvane::Worker
