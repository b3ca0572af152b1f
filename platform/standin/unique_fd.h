/// @file Ownership of a file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace standin {

/// Owns a file descriptor and closes it in the destructor. -1 means none.
class UniqueFd {
public:
    explicit UniqueFd(int fd = -1) : m_fd(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~UniqueFd()
    {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
    }

    int Get() const { return m_fd; }
    explicit operator bool() const { return m_fd >= 0; }

    /// Returns the descriptor and gives up its ownership.
    int Release() { return std::exchange(m_fd, -1); }

private:
    int m_fd;
};

} // namespace standin
