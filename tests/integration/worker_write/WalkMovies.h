#pragma once

#include <gtest/gtest.h>

#include <filesystem>

#include "MovieWalker.h"

namespace Morvane::Testing {

/// Whatever movies a test has left in its folder must be faultless; files that are no movies are a few bytes
/// long.
inline void walkMoviesIn(const std::filesystem::path& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".mov" && entry.file_size() > 100) {
            EXPECT_EQ(Tests::problemsOf(entry.path().string()), "") << entry.path();
        }
    }
}

}  // namespace Morvane::Testing
