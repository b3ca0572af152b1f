/// @file Files of the appliance under the fuzzer.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// Replaces a file; makes the folders that are missing. Empty text removes the file.
inline void PutFile(std::string const& path, std::string const& text)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::filesystem::remove(path); // file systems flush what is truncated and rewritten
    if (!text.empty()) {
        std::ofstream(path, std::ios::binary) << text;
    }
}

inline std::string ReadFile(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
