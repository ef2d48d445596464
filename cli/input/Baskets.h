// The transactions of an input, compact in memory, and how they are put together.

#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace korassoc::cli {

// Baskets keeps every transaction's items in one array:
//
//   items_     [ 3 7 9 | 1 7 | 2 ]
//   offsets_   [ 0       3     5   6 ]       basket i is items_[offsets_[i] .. offsets_[i+1])
//
// Items of a basket are ascending and without repeats. Memory: 4 bytes an item, 8 bytes a basket.
class Baskets {
 public:
  std::size_t size() const { return offsets_.size() - 1; }
  std::span<const int> operator[](std::size_t basket) const {
    return {items_.get() + offsets_[basket], items_.get() + offsets_[basket + 1]};
  }
  // Items of all baskets together.
  std::size_t occurrences() const { return offsets_.back(); }
  std::size_t longest() const;
  std::vector<int> distinctItems() const;  // ascending

 private:
  friend class BasketBuilder;

  // A plain array and no vector: growing leaves the new room as it is instead of clearing it first.
  std::unique_ptr<int[]> items_;
  std::vector<std::size_t> offsets_ = {0};
  int itemBits_ = 0;  // all items or-ed together: none is larger
};

// BasketBuilder takes items as they come, line by line, through its one Lines at a time.
class BasketBuilder {
 public:
  // How many items are expected, to allocate once. Before the first item. A wish: a file may claim any size, so
  // none is fulfilled that is beyond reason, or beyond the memory there is.
  void reserve(double items);

  std::size_t emptyLines() const { return emptyLines_; }
  std::size_t basketsWithRepeats() const { return basketsWithRepeats_; }

  // Gives item i the number newNumber[i] everywhere, which must be a permutation or another injection.
  void renumber(const std::vector<int>& newNumber);

  // The baskets ended so far; leaves the builder empty.
  Baskets take();

  // Where items are put in. It holds what changes with every item, so that a scanner's inner loop keeps it in
  // registers; what it took reaches the builder when it is destroyed.
  class Lines {
   public:
    explicit Lines(BasketBuilder& builder)
        : builder_(builder),
          end_(builder.items() + builder.used()),
          limit_(builder.items() + builder.capacity_),
          bits_(builder.baskets_.itemBits_) {}
    Lines(const Lines&) = delete;
    Lines& operator=(const Lines&) = delete;
    ~Lines() { builder_.baskets_.itemBits_ = bits_; }

    // Adds an item (not negative) to the open basket.
    void add(int item) {
      if (end_ == limit_) makeRoom();
      ascending_ = ascending_ && item > last_;
      last_ = item;
      bits_ |= item;
      *end_++ = item;
    }

    // Ends the line: sorts the basket and drops repeats. A line without items makes no basket; it is counted.
    void endLine() {
      if (last_ < 0) {
        ++builder_.emptyLines_;
        return;
      }
      auto used = static_cast<std::size_t>(end_ - builder_.items());
      if (!ascending_) {
        used = builder_.sortLastBasket(used);
        end_ = builder_.items() + used;
      }
      builder_.baskets_.offsets_.push_back(used);
      ascending_ = true;
      last_ = -1;
    }

   private:
    BasketBuilder& builder_;
    int* end_;
    int* limit_;
    int bits_;
    int last_ = -1;          // the open basket's last item; -1 while it is empty
    bool ascending_ = true;  // the open basket is strictly ascending so far

    void makeRoom() {
      const auto used = static_cast<std::size_t>(end_ - builder_.items());
      builder_.grow(used, used * 2);
      end_ = builder_.items() + used;
      limit_ = builder_.items() + builder_.capacity_;
    }
  };

 private:
  Baskets baskets_;
  std::size_t capacity_ = 0;  // of items_
  std::size_t emptyLines_ = 0;
  std::size_t basketsWithRepeats_ = 0;

  int* items() { return baskets_.items_.get(); }
  std::size_t used() const { return baskets_.offsets_.back(); }

  // Makes room for at least capacity items, keeping the first used ones.
  void grow(std::size_t used, std::size_t capacity);
  // Sorts the items from the last ended basket to used and drops repeats; returns how many items are left.
  std::size_t sortLastBasket(std::size_t used);
};

}  // namespace korassoc::cli
