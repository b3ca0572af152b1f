/// @file Runs the inputs of a folder through a fuzz target, without a fuzzer: as an ordinary test.
#include "fuzz/fuzz_target.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

int main(int /*count*/, char** arguments)
{
    int inputs = 0;
    for (auto const& entry : std::filesystem::directory_iterator(arguments[1])) {
        std::ifstream file(entry.path());
        std::string const text(std::istreambuf_iterator<char>(file), {});
        std::fprintf(stderr, "%s\n", entry.path().c_str()); // the last one is the one that failed
        LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(text.data()), text.size());
        ++inputs;
    }
    return inputs > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
