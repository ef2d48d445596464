// From item numbers to what people call them, and back.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "korassoc/base/Export.h"
#include "korassoc/mining/Item.h"

namespace korassoc {

namespace detail {
class LabelTable;
}

// Labels is a value that is cheap to copy: copies share what they know, which never changes. Items are of one
// of two kinds:
//
//   with labels      item 0, 1, 2, ... is called by the first, second, third, ... label; there are no others
//   without          an item is called by its digits: 17 is "17"
//
// Threads: any number of readers.
class KORASSOC_EXPORT Labels {
 public:
  // Items without labels; any number is one.
  Labels() = default;
  // Items without labels, of which only these exist: find() knows no others.
  static Labels numbers(std::vector<Item> items);
  // Item i is called labels[i]. Throws Error (kInput) when two labels are equal.
  explicit Labels(const std::vector<std::string>& labels);

  bool areNumbers() const { return table_ == nullptr; }
  // How many items there are; 0 when any number is one.
  std::size_t size() const;

  // What the item is called. Throws Error (kInput) for an item without a label among items with labels.
  std::string text(Item item) const;
  // The item that is called so, if there is one.
  std::optional<Item> find(std::string_view text) const;
  // "{bread, milk}", "{}": the labels as they are, in the order of the items given.
  std::string describe(std::span<const Item> items) const;

  // The labels as they lie in memory, which is the layout of an Arrow column of large strings: label i is
  // bytes()[offsets()[i] .. offsets()[i + 1]). Both empty for items without labels. Valid as long as this or
  // a copy lives.
  std::span<const std::int64_t> offsets() const;
  std::string_view bytes() const;

  // Whether both call every item the same.
  friend KORASSOC_EXPORT bool operator==(const Labels& a, const Labels& b);

 private:
  friend class LabelBuilder;

  std::shared_ptr<const detail::LabelTable> table_;   // null: numbers
  std::shared_ptr<const std::vector<Item>> numbers_;  // ascending; null: any number
};

// LabelBuilder gives labels their numbers while baskets are read: 0, 1, 2, ... in the order in which they are
// first met.
class KORASSOC_EXPORT LabelBuilder {
 public:
  LabelBuilder();
  LabelBuilder(LabelBuilder&&) noexcept;
  LabelBuilder& operator=(LabelBuilder&&) noexcept;
  ~LabelBuilder();

  // The label's number, a new one when the label is new. Throws Error (kLimit) beyond 2,147,483,647 labels.
  // Cost: O(1) expected, beside hashing the text.
  Item intern(std::string_view label);
  std::optional<Item> find(std::string_view label) const;
  std::size_t size() const;

  // Numbers the labels anew, in the order of their bytes, so that items in ascending order are in
  // alphabetical order too. Returns the new number of each old one: whoever has kept numbers replaces them.
  std::vector<Item> sort();

  // The labels so far. The builder is empty afterwards.
  Labels take();

 private:
  std::unique_ptr<detail::LabelTable> table_;
};

}  // namespace korassoc
