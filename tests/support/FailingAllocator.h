// Memory that runs out when a test says so. The program is linked with FailingAllocator.cpp.

#pragma once

// While one lives, the given number of allocations with new still succeed, and all later ones throw
// std::bad_alloc.
class FailingAllocator {
 public:
  explicit FailingAllocator(int allocations);
  FailingAllocator(const FailingAllocator&) = delete;
  FailingAllocator& operator=(const FailingAllocator&) = delete;
  ~FailingAllocator();
};
