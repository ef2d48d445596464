// Finds the numbers of stored sets by what the sets hold.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "korassoc/base/Prefetch.h"

namespace korassoc::detail {

// CodeIndex maps codes of sets to the numbers under which they are stored, open addressing with linear
// probing:
//
//   slots_   [ hash, number | -- | hash, number | ... ]     at most three quarters full; a power of two
//   home of a hash = its lower bits
//
// The hash, the mixed bits of the code, tells in all but one of a great many cases that a slot is another
// set's, so that looking for an absent set, which the first pass does most of the time, reads one line of
// memory. The code is a sum that whoever writes a state could aim at one slot, hence the mixing. Memory: 11
// to 21 bytes a set.
class CodeIndex {
 public:
  // What stands for no set. Numbers are smaller.
  static constexpr std::uint32_t kNone = 0xFFFFFFFFU;

  // The number with this code for which matches(number) answers true, or kNone.
  template <typename Matches>
  std::uint32_t find(std::uint64_t code, Matches&& matches) const {
    if (slots_.empty()) return kNone;
    const std::uint32_t hash = mix(code);
    for (std::size_t place = hash & mask(); slots_[place].number != kNone; place = next(place)) {
      if (slots_[place].hash == hash && matches(slots_[place].number)) return slots_[place].number;
    }
    return kNone;
  }

  // The first number that find() asks about, kNone when it asks about none and so finds nothing.
  std::uint32_t likely(std::uint64_t code) const {
    return find(code, [](std::uint32_t) { return true; });
  }

  // Makes room for one number more; add() does not fail then.
  void makeRoom() {
    if (4 * (count_ + 1) > 3 * slots_.size()) resize(slots_.empty() ? kFirstSlots : 2 * slots_.size());
  }
  // Makes room for this many numbers in all.
  void makeRoomFor(std::size_t numbers) {
    std::size_t slots = kFirstSlots;
    while (4 * numbers > 3 * slots) slots *= 2;
    if (slots > slots_.size()) resize(slots);
  }
  // Starts to fetch what find() and add() look at first.
  void prefetchHome(std::uint64_t code) const {
    if (!slots_.empty()) prefetch(&slots_[mix(code) & mask()]);
  }
  void add(std::uint64_t code, std::uint32_t number) { put({mix(code), number}); }

  // Takes out a number that is there. What stands behind it moves up, so that no search ends too early.
  void remove(std::uint64_t code, std::uint32_t number) {
    std::size_t hole = mix(code) & mask();
    while (slots_[hole].number != number) hole = next(hole);
    for (std::size_t place = next(hole); slots_[place].number != kNone; place = next(place)) {
      const std::size_t distance = (place - slots_[place].hash) & mask();
      if (distance < ((place - hole) & mask())) continue;  // its home lies behind the hole
      slots_[hole] = slots_[place];
      hole = place;
    }
    slots_[hole].number = kNone;
    --count_;
  }

  void clear() {
    slots_ = {};
    count_ = 0;
  }
  // Takes out everything and keeps the room.
  void empty() {
    std::fill(slots_.begin(), slots_.end(), Slot());
    count_ = 0;
  }

 private:
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t number = kNone;
  };
  static constexpr std::size_t kFirstSlots = 16;

  static std::uint32_t mix(std::uint64_t code) {
    code ^= code >> 32U;
    code *= 0xD6E8FEB86659FD93U;
    return static_cast<std::uint32_t>(code ^ (code >> 32U));
  }
  std::size_t mask() const { return slots_.size() - 1; }
  std::size_t next(std::size_t place) const { return (place + 1) & mask(); }
  void put(const Slot& slot) {
    std::size_t place = slot.hash & mask();
    while (slots_[place].number != kNone) place = next(place);
    slots_[place] = slot;
    ++count_;
  }
  void resize(std::size_t slots) {
    std::vector<Slot> former(slots);
    former.swap(slots_);
    count_ = 0;
    for (const Slot& slot : former) {
      if (slot.number != kNone) put(slot);
    }
  }

  std::vector<Slot> slots_;
  std::size_t count_ = 0;
};

}  // namespace korassoc::detail
