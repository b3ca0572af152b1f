/// @file Memory for large documents.
#pragma once

#include <cstddef>

namespace standin {

/// Has the kernel fill in the pages of the next `size` bytes of the heap at once. It would else
/// come for each page when that is first touched: of a list of 1,000 schedules an eighth of the
/// time. A hint: the memory is free when this returns; a small size is passed over, a large one
/// cut. From then on all memory comes from the heap, and none of it goes back.
void PrepareHeap(std::size_t size);

} // namespace standin
