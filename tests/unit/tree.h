/// @file Files of the appliance, for tests of what reads and writes them.
#pragma once

#include "platform/appliance_paths.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// A test that finds the appliance's folder without a file in it.
struct Tree : testing::Test {
    void SetUp() override { std::filesystem::remove_all(appliance::kRoot); }

    /// Makes the folders that are missing.
    static void Write(std::string const& path, std::string const& text)
    {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << text;
    }

    static std::string Read(std::string const& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::string const m_path = appliance::kRoot + std::string("/x");
};
