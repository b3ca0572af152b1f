/// @file A long text, sent while it is made.
#include "platform/standin/block_writer.h"

#include "platform/standin/files.h"

#include <cerrno>

namespace standin {

BlockWriter::BlockWriter(int fd)
    : m_fd(fd), m_block(std::make_unique_for_overwrite<char[]>(kBlockSize))
{
}

bool BlockWriter::Finish()
{
    WriteBlock();
    errno = m_error;
    return m_error == 0;
}

void BlockWriter::WriteBlock()
{
    if (m_error == 0 && !WriteAll(m_fd, {m_block.get(), m_used})) {
        m_error = errno;
    }
    m_used = 0;
}

} // namespace standin
