// Memory that runs out when a test says so. The program is linked with FailingAllocator.cpp.

#pragma once

#include <cstddef>

// While one lives, the given number of allocations with new still succeed; then the next one throws
// std::bad_alloc, and so do all later ones unless it is told to fail once. One at a time.
class FailingAllocator {
 public:
  enum class Failing { kFromThenOn, kOnce };
  static constexpr int kNever = -1;  // no allocation fails: they are counted

  explicit FailingAllocator(int allocations, Failing failing = Failing::kFromThenOn);
  FailingAllocator(const FailingAllocator&) = delete;
  FailingAllocator& operator=(const FailingAllocator&) = delete;
  ~FailingAllocator();

  // Allocations asked for since it was made, and how many of them failed.
  int asked() const;
  int failed() const;

  // Blocks that were allocated with new and not deleted yet.
  static long long livingBlocks();
};
