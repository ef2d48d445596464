// Helpers to hold the public interface against the signatures that hosts compile with.

#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <vector>

// Compiles only for an operation that can be had under this very signature, links only when the library
// exports it.
template <typename Signature>
void has(Signature operation) {
  const volatile bool there = operation != nullptr;
  EXPECT_TRUE(there);
}

// Where a virtual operation stands in its class's table. Known for the compilers that follow the Itanium
// interface on x86-64, where a pointer to a virtual member holds one more than the offset of its slot.
#if defined(__GNUC__) && defined(__x86_64__) && !defined(_WIN32)
inline constexpr bool kKnowsSlots = true;
#else
inline constexpr bool kKnowsSlots = false;
#endif

template <typename Operation>
int slotOf(Operation operation) {
  std::ptrdiff_t offset = 0;
  static_assert(sizeof operation >= sizeof offset);
  std::memcpy(&offset, &operation, sizeof offset);
  return static_cast<int>((offset - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

// Fails unless the operations stand in the slots that follow the given one. A destructor takes two slots.
template <typename... Operations>
void inConsecutiveSlots(int first, Operations... operations) {
  if (!kKnowsSlots) return;
  const std::vector<int> slots = {slotOf(operations)...};
  std::vector<int> expected;
  for (std::size_t i = 0; i < slots.size(); ++i) expected.push_back(first + static_cast<int>(i));
  EXPECT_EQ(slots, expected);
}
