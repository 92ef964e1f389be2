#include "MovieWalker.h"

#include <cstdio>

/// Walks through the movies named on the command line; prints what is wrong and ends with 1 if anything is.
int main(int argc, char** argv) {
    int result = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string problems = Morvane::Tests::problemsOf(argv[i]);
        if (!problems.empty()) {
            std::printf("%s:\n%s", argv[i], problems.c_str());
            result = 1;
        }
    }
    return result;
}
