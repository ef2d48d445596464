// The fast path of LineReader: lines of plain integers.

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "cli/input/Baskets.h"
#include "cli/input/Input.h"
#include "cli/input/Separator.h"

namespace korassoc::cli {

// IntegerScanner reads lines of plain non-negative integers (no sign, no leading zero, at most 2147483647) into
// baskets. Without a wanted separator, it takes the first kind it meets.
//
// It refuses, and leaves the baskets in any state, as soon as it meets anything but digits, that separator,
// spaces and line ends: such texts are for LabelScanner, whose result for the texts accepted here would be the
// same. Never throws but for memory.
class IntegerScanner {
 public:
  // The baskets must outlive it.
  IntegerScanner(std::optional<Separator> wanted, BasketBuilder& baskets)
      : wanted_(wanted), baskets_(baskets) {}

  // Scans the next lines, each of which ends in a line feed. Returns false where it refuses. textBytes: about
  // how long the whole text is, by which room is made.
  bool scan(std::string_view lines, std::uint64_t textBytes);

  // What stands between the integers scanned; nothing before the first line.
  std::optional<Separator> separator() const;

 private:
  std::optional<Separator> wanted_;
  BasketBuilder& baskets_;
  std::optional<Separator> separator_;  // kBlanks for tabs, too
  bool tabs_ = false;                   // with kBlanks: whether there is any
  bool spaces_ = false;

  // Looks at the beginning of the text for a separator, and makes room.
  void begin(std::string_view sample, std::uint64_t textBytes);
};

// Scans a whole text, whose last line need not have an end. Returns its separator; nothing where the scanner
// refuses, and for an empty text.
std::optional<Separator> scanIntegers(std::string_view text, std::optional<Separator> wanted,
                                      BasketBuilder& baskets);

// The same for an input, which it reads block by block, keeping none; it may hold a byte order mark. Leaves lines
// of more than 256 KiB to others, too. Throws what the input throws.
std::optional<Separator> scanIntegers(Input& input, std::optional<Separator> wanted, BasketBuilder& baskets);

}  // namespace korassoc::cli
