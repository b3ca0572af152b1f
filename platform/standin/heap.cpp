/// @file Memory for large documents, by the GNU C library and Linux.
#include "platform/standin/heap.h"

#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace standin {

namespace {

constexpr std::uintptr_t kPageSize = 4096; ///< or a multiple of it, which does no harm
constexpr std::size_t kSmallest = std::size_t{64} * 1024; ///< below, the calls cost what they spare
constexpr std::size_t kLargest = std::size_t{16} * 1024 * 1024; ///< what a wrong guess may waste

} // namespace

void PrepareHeap(std::size_t size)
{
    if (size < kSmallest) {
        return;
    }
    size = std::min(size, kLargest);
    // The block must come from the heap, large as it is, and stay there when it is free.
    ::mallopt(M_MMAP_MAX, 0);
    ::mallopt(M_TRIM_THRESHOLD, -1);
    void* const block = std::malloc(size);
    auto const begin = reinterpret_cast<std::uintptr_t>(block);
    std::uintptr_t const first = (begin + kPageSize - 1) / kPageSize * kPageSize;
    std::uintptr_t const last = (begin + size) / kPageSize * kPageSize;
    if (block != nullptr) { // since Linux 5.14; an older kernel refuses, and nothing is lost
        ::madvise(reinterpret_cast<void*>(first), last - first, MADV_POPULATE_WRITE);
    }
    std::free(block);
}

} // namespace standin
