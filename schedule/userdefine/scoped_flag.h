/// @file A flag that is up for as long as a block runs.
#pragma once

/// Raises a flag, and lowers it when it goes, also when an exception leaves the block.
class ScopedFlag {
public:
    explicit ScopedFlag(bool& flag) : m_flag(flag) { m_flag = true; }
    ~ScopedFlag() { m_flag = false; }
    ScopedFlag(ScopedFlag const&) = delete;
    ScopedFlag& operator=(ScopedFlag const&) = delete;

private:
    bool& m_flag;
};
