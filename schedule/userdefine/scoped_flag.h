/// @file A flag that is raised for the duration of a block.
#pragma once

/// Raises a flag, and lowers it when the block is left, also by an exception.
class ScopedFlag {
public:
    explicit ScopedFlag(bool& flag) : m_flag(flag) { m_flag = true; }
    ~ScopedFlag() { m_flag = false; }
    ScopedFlag(ScopedFlag const&) = delete;
    ScopedFlag& operator=(ScopedFlag const&) = delete;

private:
    bool& m_flag;
};
