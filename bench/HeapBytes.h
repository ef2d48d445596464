// What a benchmark's program has on the heap, by the bytes that operator new was asked for.

#pragma once

#include <cstddef>

namespace bench {

// Bytes held now.
std::size_t heapBytes();
// The most bytes held since the last call of resetHeapPeak().
std::size_t heapPeak();
void resetHeapPeak();

}  // namespace bench
