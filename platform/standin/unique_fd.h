/// @file A file descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

namespace standin {

/// Owns one descriptor; -1 is none.
class UniqueFd {
public:
    explicit UniqueFd(int fd = -1) : m_fd(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~UniqueFd() { Close(); }

    int Get() const { return m_fd; }
    explicit operator bool() const { return m_fd >= 0; }

    /// Closes early; false if the kernel reports a failed write this late.
    bool Close() { return m_fd < 0 || ::close(std::exchange(m_fd, -1)) == 0; }

    /// Gives the descriptor away.
    int Release() { return std::exchange(m_fd, -1); }

private:
    int m_fd;
};

} // namespace standin
