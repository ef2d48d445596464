// Finds the entries of a table by what their sets hold.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "korassoc/base/Prefetch.h"

namespace korassoc::detail {

// EntryIndex maps codes of sets to the numbers of their entries, open addressing with linear probing:
//
//   slots_   [ hash, number | -- | hash, number | ... ]     at most three quarters full; a power of two
//   home of a hash = its lower bits
//
// The hash, the mixed bits of the code, tells in all but one of a great many cases that a slot is another
// set's, so that looking for an absent set, which the first pass does most of the time, reads one line of
// memory. The code is a sum that whoever writes a state could aim at one slot, hence the mixing. Memory: 11
// to 21 bytes an entry.
template <typename Entry>
class EntryIndex {
 public:
  // The entry with this code, entryAt(number), for which matches(entry) answers true; or null.
  template <typename EntryAt, typename Matches>
  Entry* find(std::uint64_t code, EntryAt&& entryAt, Matches&& matches) const {
    if (slots_.empty()) return nullptr;
    const std::uint32_t hash = mix(code);
    for (std::size_t place = hash & mask(); slots_[place].number != kEmpty; place = next(place)) {
      if (slots_[place].hash != hash) continue;
      Entry* entry = entryAt(slots_[place].number);
      if (matches(*entry)) return entry;
    }
    return nullptr;
  }

  // False when find() finds nothing for this code, whatever matches.
  bool mayHold(std::uint64_t code) const {
    if (slots_.empty()) return false;
    const std::uint32_t hash = mix(code);
    std::size_t place = hash & mask();
    while (slots_[place].number != kEmpty && slots_[place].hash != hash) place = next(place);
    return slots_[place].number != kEmpty;
  }

  // Makes room for one entry more; add() does not fail then.
  void makeRoom() {
    if (4 * (count_ + 1) > 3 * slots_.size()) resize(slots_.empty() ? kFirstSlots : 2 * slots_.size());
  }
  // Makes room for this many entries in all.
  void makeRoomFor(std::size_t entries) {
    std::size_t slots = kFirstSlots;
    while (4 * entries > 3 * slots) slots *= 2;
    if (slots > slots_.size()) resize(slots);
  }
  // Starts to fetch what find() and add() look at first.
  void prefetchHome(std::uint64_t code) const {
    if (!slots_.empty()) prefetch(&slots_[mix(code) & mask()]);
  }
  // number: below kEmpty.
  void add(std::uint64_t code, std::uint32_t number) { put({mix(code), number}); }

  // Takes out an entry that is there. What stands behind it moves up, so that no search ends too early.
  void remove(std::uint64_t code, std::uint32_t number) {
    std::size_t hole = mix(code) & mask();
    while (slots_[hole].number != number) hole = next(hole);
    for (std::size_t place = next(hole); slots_[place].number != kEmpty; place = next(place)) {
      const std::size_t distance = (place - slots_[place].hash) & mask();
      if (distance < ((place - hole) & mask())) continue;  // its home lies behind the hole
      slots_[hole] = slots_[place];
      hole = place;
    }
    slots_[hole].number = kEmpty;
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

  static constexpr std::uint32_t kEmpty = 0xFFFFFFFFU;

 private:
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t number = kEmpty;
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
    while (slots_[place].number != kEmpty) place = next(place);
    slots_[place] = slot;
    ++count_;
  }
  void resize(std::size_t slots) {
    std::vector<Slot> former(slots);
    former.swap(slots_);
    count_ = 0;
    for (const Slot& slot : former) {
      if (slot.number != kEmpty) put(slot);
    }
  }

  std::vector<Slot> slots_;
  std::size_t count_ = 0;
};

}  // namespace korassoc::detail
