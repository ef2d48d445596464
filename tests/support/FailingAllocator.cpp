#include "tests/support/FailingAllocator.h"

#include <cstdlib>
#include <new>

namespace {

constexpr int kFar = 2147483647;

int failsFrom = kFar;  // allocations asked for, beyond which they fail
int failsUpTo = kFar;
int askedFor = 0;
int failures = 0;
long long living = 0;

void* take(std::size_t bytes) noexcept {
  if (askedFor < kFar) ++askedFor;
  if (askedFor > failsFrom && askedFor <= failsUpTo) {
    ++failures;
    return nullptr;
  }
  void* const block = std::malloc(bytes > 0 ? bytes : 1);
  if (block != nullptr) ++living;
  return block;
}

void* takeOrThrow(std::size_t bytes) {
  void* const block = take(bytes);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void give(void* block) noexcept {
  if (block != nullptr) --living;
  std::free(block);
}

}  // namespace

void* operator new(std::size_t bytes) { return takeOrThrow(bytes); }
void* operator new[](std::size_t bytes) { return takeOrThrow(bytes); }
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return take(bytes); }
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept { return take(bytes); }
void operator delete(void* memory) noexcept { give(memory); }
void operator delete[](void* memory) noexcept { give(memory); }
void operator delete(void* memory, std::size_t) noexcept { give(memory); }
void operator delete[](void* memory, std::size_t) noexcept { give(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { give(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { give(memory); }

FailingAllocator::FailingAllocator(int allocations, Failing failing) {
  askedFor = 0;
  failures = 0;
  if (allocations == kNever) return;
  failsFrom = allocations;
  failsUpTo = failing == Failing::kOnce ? allocations + 1 : kFar;
}

FailingAllocator::~FailingAllocator() { failsFrom = failsUpTo = kFar; }

int FailingAllocator::asked() const { return askedFor; }

int FailingAllocator::failed() const { return failures; }

long long FailingAllocator::livingBlocks() { return living; }
