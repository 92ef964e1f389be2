#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "tests/children/recording_worker/Recording.h"

namespace Morvane::Testing {

using Texts = std::vector<std::string>;

/// A controller (made by `create`) with a recording worker behind it. Proves at the end that nothing is left.
template <typename Controller, Controller* (*create)()>
class ControllerFixture : public testing::Test {
protected:
    ~ControllerFixture() override {
        sut.reset();
        if (!recording.arguments().empty()) {
            EXPECT_EQ(recording.leftovers(), Texts{});
        }
    }

    /// The requests since the last call.
    Texts sent() {
        const Texts all = recording.requests();
        const Texts fresh(all.begin() + static_cast<std::ptrdiff_t>(seen), all.end());
        seen = all.size();
        return fresh;
    }

    /// What was placed in shared memory for the last request.
    std::string lastPayload() const { return recording.payload(recording.requests().size() - 1); }
    std::string lastText() const { return recording.payloadText(recording.requests().size() - 1); }

    const Recording recording;
    std::unique_ptr<Controller> sut{create()};

private:
    std::size_t seen = 0;
};

/// Runs a test's body in a process of its own, for what is kept as long as a process lives.
#define IN_FRESH_PROCESS(body)                              \
    GTEST_FLAG_SET(death_test_style, "threadsafe");         \
    EXPECT_EXIT(                                            \
        {                                                   \
            body();                                         \
            std::exit(testing::Test::HasFailure() ? 1 : 0); \
        },                                                  \
        testing::ExitedWithCode(0), "")

}  // namespace Morvane::Testing
