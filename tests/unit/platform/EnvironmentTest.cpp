#include "platform/Environment.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

bool holds(char** environment, const std::string& wanted) {
    for (; *environment != nullptr; ++environment) {
        if (*environment == wanted) {
            return true;
        }
    }
    return false;
}

TEST(Environment, HoldsWhatIsSetNow) {
    setenv("MORVANE_ENVIRONMENT_TEST", "here", 1);
    EXPECT_TRUE(holds(Morvane::Platform::environment(), "MORVANE_ENVIRONMENT_TEST=here"));

    unsetenv("MORVANE_ENVIRONMENT_TEST");
    EXPECT_FALSE(holds(Morvane::Platform::environment(), "MORVANE_ENVIRONMENT_TEST=here"));
}

}  // namespace
