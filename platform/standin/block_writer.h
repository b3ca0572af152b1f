/// @file A long text, sent while it is made.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>

namespace standin {

/// Collects text and writes it to a descriptor, which it does not own, in blocks: a long answer
/// takes no memory of its own length, and its reader has work while the rest is made.
class BlockWriter {
public:
    explicit BlockWriter(int fd);

    /// Adds text, which is lost once a write has failed. Takes no more memory than it began with.
    void Put(std::string_view text)
    {
        while (text.size() > kBlockSize - m_used) {
            std::size_t const room = kBlockSize - m_used;
            PutFitting(text.substr(0, room));
            text.remove_prefix(room);
            WriteBlock();
        }
        PutFitting(text);
    }

    void Put(char character)
    {
        if (m_used == kBlockSize) {
            WriteBlock();
        }
        m_block[m_used++] = character;
    }

    /// Writes what is left. False with errno set if this or an earlier write failed.
    bool Finish();

private:
    static constexpr std::size_t kBlockSize =
        std::size_t{16} * 1024; ///< a quarter of what a pipe holds

    void PutFitting(std::string_view text)
    {
        std::ranges::copy(text, m_block.get() + m_used);
        m_used += text.size();
    }

    void WriteBlock();

    int m_fd;
    int m_error = 0; ///< the errno of the write that failed
    std::size_t m_used = 0;
    std::unique_ptr<char[]> m_block;
};

} // namespace standin
