// Which slots of the spill file hold a set.

#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace korassoc::detail {

// UsedSlots is a set of slot numbers, a bit for each, that is walked in ascending order. next() looks at 64
// slots at a time, so a walk over a few sets in a large file does not cost what the file does.
class UsedSlots {
 public:
  // For slots [0, slots).
  explicit UsedSlots(std::uint32_t slots) : slots_(slots), words_((slots + kBits - 1) / kBits, 0U) {}

  void add(std::uint32_t slot) { words_[slot / kBits] |= bitOf(slot); }
  void remove(std::uint32_t slot) { words_[slot / kBits] &= ~bitOf(slot); }

  // The first slot in use that is not below from; the number of slots when there is none.
  std::uint32_t next(std::uint32_t from) const {
    if (from >= slots_) return slots_;
    std::size_t word = from / kBits;
    std::uint64_t bits = words_[word] & ~(bitOf(from) - 1);
    while (bits == 0) {
      if (++word == words_.size()) return slots_;
      bits = words_[word];
    }
    return static_cast<std::uint32_t>(word) * kBits + static_cast<std::uint32_t>(std::countr_zero(bits));
  }

 private:
  static constexpr std::uint32_t kBits = 64;
  static std::uint64_t bitOf(std::uint32_t slot) { return std::uint64_t{1} << (slot % kBits); }

  std::uint32_t slots_;
  std::vector<std::uint64_t> words_;
};

}  // namespace korassoc::detail
