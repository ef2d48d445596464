// A hint to the processor.

#pragma once

namespace korassoc::detail {

// Starts to fetch the memory at address, which need not be valid, for reading soon. Worth it where many
// scattered places are visited in an order that is known ahead; does nothing where the compiler offers no
// such hint.
inline void prefetch([[maybe_unused]] const void* address) {
#if defined(__GNUC__)
  __builtin_prefetch(address);
  asm volatile("" : : "r"(address));  // GCC drops calls of functions that do nothing but prefetch
#endif
}

}  // namespace korassoc::detail
