// Finds the entries of a table by what their sets hold.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "korassoc/base/Prefetch.h"

namespace korassoc::detail {

// EntryIndex maps codes of sets to entries of a table, open addressing with linear probing:
//
//   slots_   [ code, entry | -- | code, entry | ... ]     at most three quarters full; a power of two
//   home of a code = its mixed bits, modulo the number of slots
//
// A slot tells by its code alone that it holds another set, so that looking for an absent set, which the
// first pass does most of the time, reads one line of memory. The code is a sum that whoever writes a state
// could aim at one slot, hence the mixing. Ownership: none; the entries are the table's. Memory: 21 to 43
// bytes an entry.
template <typename Entry>
class EntryIndex {
 public:
  // The entry with this code for which matches(entry) answers true, or null.
  template <typename Matches>
  Entry* find(std::uint64_t code, Matches&& matches) const {
    if (slots_.empty()) return nullptr;
    for (std::size_t place = home(code); slots_[place].entry != nullptr; place = next(place)) {
      if (slots_[place].code == code && matches(*slots_[place].entry)) return slots_[place].entry;
    }
    return nullptr;
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
    if (!slots_.empty()) prefetch(&slots_[home(code)]);
  }
  void add(std::uint64_t code, Entry* entry) {
    std::size_t place = home(code);
    while (slots_[place].entry != nullptr) place = next(place);
    slots_[place] = {code, entry};
    ++count_;
  }

  // Takes out an entry that is there. What stands behind it moves up, so that no search ends too early.
  void remove(std::uint64_t code, const Entry* entry) {
    std::size_t hole = home(code);
    while (slots_[hole].entry != entry) hole = next(hole);
    for (std::size_t place = next(hole); slots_[place].entry != nullptr; place = next(place)) {
      const std::size_t distance = (place - home(slots_[place].code)) & mask();
      if (distance < ((place - hole) & mask())) continue;  // its home lies behind the hole
      slots_[hole] = slots_[place];
      hole = place;
    }
    slots_[hole].entry = nullptr;
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
    std::uint64_t code = 0;
    Entry* entry = nullptr;  // null: empty
  };
  static constexpr std::size_t kFirstSlots = 16;

  std::size_t mask() const { return slots_.size() - 1; }
  std::size_t next(std::size_t place) const { return (place + 1) & mask(); }
  std::size_t home(std::uint64_t code) const {
    code ^= code >> 32U;
    code *= 0xD6E8FEB86659FD93U;
    return static_cast<std::size_t>(code ^ (code >> 32U)) & mask();
  }
  void resize(std::size_t slots) {
    std::vector<Slot> former(slots);
    former.swap(slots_);
    count_ = 0;
    for (const Slot& slot : former) {
      if (slot.entry != nullptr) add(slot.code, slot.entry);
    }
  }

  std::vector<Slot> slots_;
  std::size_t count_ = 0;
};

}  // namespace korassoc::detail
