// Prints what describes corvel's command line to others: a shell's completions, or the manual page's section.
// Run while the project is built; not installed.

#include <fmt/format.h>

#include <cstdio>
#include <string>

#include "host/manual/Renderings.h"

namespace {

using Rendering = std::string (*)(const Corvel::ProgramFacts&);

Rendering renderingNamed(const std::string& name) {
    if (name == "bash") {
        return Corvel::bashCompletion;
    }
    if (name == "zsh") {
        return Corvel::zshCompletion;
    }
    if (name == "fish") {
        return Corvel::fishCompletion;
    }
    return name == "manual" ? Corvel::manualSection : nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    const Rendering render = argc == 2 ? renderingNamed(argv[1]) : nullptr;
    if (render == nullptr) {
        fmt::print(stderr, "usage: corvel-manual bash|zsh|fish|manual\n");
        return 2;
    }
    fmt::print("{}", render(Corvel::programFacts()));
    return std::fflush(stdout) == 0 ? 0 : 1;
}
