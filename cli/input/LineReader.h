// Reads the plain basket format: a transaction a line.

#pragma once

#include <optional>

#include "cli/input/BasketReader.h"
#include "cli/input/Separator.h"

namespace korassoc::cli {

// LineReader reads UTF-8 text with one transaction a line. A byte order mark at the start and carriage
// returns before line feeds are tolerated.
//
//   bread,"milk, whole","a ""large"" cake"      an item may be quoted; quotes in it are doubled
//   bread, milk                                 blanks around an item do not belong to it
//   17 4 23                                     integers: when all items are plain ones (digits, no leading
//                                               zeros, at most 2147483647), an item's number is the integer
//
// A line without items is no transaction. Nothing between two separators is no item. A quoted item ends on
// its line. A quote inside an item that does not begin with one is refused, and so is an item of more than
// 4096 bytes: the separator is surely another one.
//
// Plain integers are read by a scanner of their own (IntegerScanner), with the same result. It needs no more
// memory than the baskets where the input can be begun again; else, and for labels, the whole text is held while
// it is read.
class LineReader : public BasketReader {
 public:
  // Without a separator it is recognised from the content.
  explicit LineReader(std::optional<Separator> separator = std::nullopt) : separator_(separator) {}

  BasketInput read(Input input) const override;

 private:
  std::optional<Separator> separator_;
};

}  // namespace korassoc::cli
