// From item numbers to what people call them, and back.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/input/LabelTable.h"

namespace korassoc::cli {

// ItemNames knows the items of one input. Either the items are numbers of their own and called by their
// digits, or they are labels and numbered 0, 1, 2, ... in the order of the labels' bytes, so that what is
// listed in item order is in alphabetical order.
class ItemNames {
 public:
  ItemNames() = default;

  // Items that are numbers: 17 is called "17". items are ascending, without repeats, none negative.
  static ItemNames numbers(std::vector<int> items);
  // Items that are labels, numbered by the table, which is sorted.
  static ItemNames labels(LabelTable table);

  bool areNumbers() const { return numbers_; }
  std::size_t size() const { return numbers_ ? items_.size() : table_.size(); }

  // The item's label as it stands in the input. Requires an item of the input.
  std::string name(int item) const;
  // The item of that label, if the input has it.
  std::optional<int> find(std::string_view label) const;

  // The labels most like the given one, best first: by edit distance (insertions, deletions, replacements,
  // counted in bytes, upper and lower case of ASCII letters alike), ties in item order. O(size * length^2).
  std::vector<std::string> nearest(std::string_view label, std::size_t atMost) const;

 private:
  bool numbers_ = true;
  std::vector<int> items_;
  LabelTable table_;
};

// How many insertions, deletions and replacements of bytes turn a into b, ASCII case ignored; atMost + 1 when
// it takes more than atMost.
std::size_t editDistance(std::string_view a, std::string_view b, std::size_t atMost);

}  // namespace korassoc::cli
