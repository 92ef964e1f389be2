// Stands in for the fuzzer where a target is built without it: runs the target over the files of a folder,
// and over each of them cut short and with a byte changed, always in the same places.
//
//     fuzz_fields FOLDER COUNT      COUNT variations of all files together

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Input = std::vector<std::uint8_t>;

std::vector<Input> readAll(const std::filesystem::path& folder) {
    std::vector<Input> inputs;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream file(entry.path(), std::ios::binary);
        inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return inputs;
}

void run(const Input& input) {
    // A copy of its own length, so that a checker of memory sees what is read beyond.
    const Input copy(input);
    LLVMFuzzerTestOneInput(copy.data(), copy.size());
}

Input varied(Input input, std::minstd_rand& chance) {
    if (!input.empty()) {
        const std::size_t place = chance() % input.size();
        if (chance() % 4 == 0)
            input.resize(place);
        else
            input[place] = static_cast<std::uint8_t>(chance());
    }
    return input;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: " << argv[0] << " FOLDER COUNT\n";
        return 2;
    }
    const std::vector<Input> seeds = readAll(argv[1]);
    if (seeds.empty()) {
        std::cerr << "no file is in " << argv[1] << '\n';
        return 1;
    }
    for (const Input& seed : seeds)
        run(seed);
    std::minstd_rand chance(1);
    for (int number = 0; number < std::atoi(argv[2]); ++number)
        run(varied(seeds[static_cast<std::size_t>(number) % seeds.size()], chance));
    return 0;
}
