/// @file What the fuzz targets share: how an input is cut into texts, files of the appliance, and
/// what ends an input that fails.
#pragma once

#include "platform/appliance_paths.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

/// Runs one input. Called by the fuzzer and by the replay of the committed inputs.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

/// Cuts an input at its lines `--`, so that it can be read and written by hand; texts that are
/// missing are empty.
inline std::vector<std::string> CutInput(std::uint8_t const* data, std::size_t size,
                                         std::size_t count)
{
    std::string rest(reinterpret_cast<char const*>(data), size);
    std::vector<std::string> texts(count);
    for (std::string& text : texts) {
        std::size_t const end = rest.find("\n--\n");
        text = rest.substr(0, end);
        rest.erase(0, end == std::string::npos ? end : end + 4);
    }
    return texts;
}

/// Ends the process, and so fails the input, unless `holds`.
inline void Require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

/// Replaces a file of the appliance; empty text removes it.
inline void Put(std::string const& path, std::string const& text)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::filesystem::remove(path); // file systems flush what is truncated and rewritten
    if (!text.empty()) {
        std::ofstream(path, std::ios::binary) << text;
    }
}
