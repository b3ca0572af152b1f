/// @file Memory for large documents, by the GNU C library and Linux.
#include "platform/standin/heap.h"

#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>

namespace standin {

namespace {

constexpr std::size_t kPageSize = 4096; ///< where pages are larger, the kernel refuses
constexpr std::size_t kSmallest = std::size_t{64} * 1024; ///< below, the calls cost what they spare
constexpr std::size_t kLargest = std::size_t{16} * 1024 * 1024; ///< what a wrong guess may waste

} // namespace

void PrepareHeap(std::size_t size)
{
    if (size < kSmallest) {
        return;
    }
    size = std::min(size, kLargest) / kPageSize * kPageSize;
    // The block must come from the heap, large as it is, and stay there when it is free.
    ::mallopt(M_MMAP_MAX, 0);
    ::mallopt(M_TRIM_THRESHOLD, -1);
    void* const block = std::aligned_alloc(kPageSize, size);
    if (block != nullptr) { // since Linux 5.14; an older kernel refuses, and nothing is lost
        ::madvise(block, size, MADV_POPULATE_WRITE);
    }
    std::free(block);
}

} // namespace standin
