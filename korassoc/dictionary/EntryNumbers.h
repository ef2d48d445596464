// Numbers for entries that were made one by one.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace korassoc::detail {

// EntryNumbers gives numbers to entries that lie anywhere, and finds them by their numbers; those of entries
// that are gone are given again. Ownership: none. Memory: 12 to 24 bytes an entry.
template <typename Entry>
class EntryNumbers {
 public:
  Entry* at(std::uint32_t number) const { return entries_[number]; }

  // Makes room for one entry more; add() and remove() do not fail then.
  void makeRoom() {
    if (!free_.empty() || entries_.size() < entries_.capacity()) return;
    const std::size_t room = std::max<std::size_t>(16, 2 * entries_.size());
    free_.reserve(room);
    entries_.reserve(room);
  }
  std::uint32_t add(Entry* entry) {
    if (free_.empty()) {
      entries_.push_back(entry);
      return static_cast<std::uint32_t>(entries_.size() - 1);
    }
    const std::uint32_t number = free_.back();
    free_.pop_back();
    entries_[number] = entry;
    return number;
  }
  void remove(std::uint32_t number) { free_.push_back(number); }
  void clear() {
    entries_.clear();
    free_.clear();
  }

 private:
  std::vector<Entry*> entries_;
  std::vector<std::uint32_t> free_;
};

}  // namespace korassoc::detail
