// Plays the kept inputs and pseudo-random ones: zeb_fuzz_replay COUNT [FILE|FOLDER...]

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "player.h"

namespace
{

using Input = std::vector<std::uint8_t>;

Input read(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return Input(std::istreambuf_iterator<char>(file), {});
}

std::vector<std::filesystem::path> inputs(int count, char** names)
{
    std::vector<std::filesystem::path> paths;
    for (int i = 0; i < count; ++i) {
        if (!std::filesystem::is_directory(names[i])) {
            paths.emplace_back(names[i]);
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(names[i])) {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

// Says which input is under way when the process is ended by what it does.
const char* gUnderWay = "none";

void sayWhich()
{
    if (gUnderWay) std::fprintf(stderr, "ended while playing %s\n", gUnderWay);
}

}  // namespace

int main(int argc, char** argv)
{
    const int count = argc > 1 ? std::atoi(argv[1]) : 3000;
    std::atexit(sayWhich);
    std::string name;
    const auto play = [&](const std::string& what, const Input& input) {
        name = what;
        gUnderWay = name.c_str();
        zebfuzz::playInput(input.data(), input.size());
    };
    int files = 0;
    for (const auto& path : inputs(std::max(argc - 2, 0), argv + 2)) {
        play(path.string(), read(path));
        ++files;
    }
    for (int seed = 0; seed < count; ++seed) {
        // The generator's output is fixed by the language's standard, those of distributions isn't.
        std::mt19937 random(static_cast<unsigned>(seed));
        Input input(64 + random() % 1024);
        for (std::uint8_t& byte : input) byte = static_cast<std::uint8_t>(random() >> 11);
        play("random input " + std::to_string(seed), input);
    }
    gUnderWay = nullptr;
    std::printf("played %d files and %d random inputs\n", files, count);
    return 0;
}
