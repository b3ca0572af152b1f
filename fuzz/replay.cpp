/// @file Runs the inputs of a folder through the fuzz target, without a fuzzer.
#include "fuzz/files.h"

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

int main(int /*count*/, char** arguments)
{
    for (auto const& entry : std::filesystem::directory_iterator(arguments[1])) {
        std::string const text = ReadFile(entry.path());
        std::fprintf(stderr, "%s\n", entry.path().c_str()); // the last one is the one that failed
        LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(text.data()), text.size());
    }
}
