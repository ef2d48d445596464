// The fast path of LineReader: lines of plain integers.

#pragma once

#include <optional>
#include <string_view>

#include "cli/input/Baskets.h"
#include "cli/input/Separator.h"

namespace korassoc::cli {

// Reads lines of plain non-negative integers (no sign, no leading zero, at most 2147483647) into baskets and
// returns the separator that stands between them. Without a wanted separator, takes the first kind it meets.
//
// Returns nothing, and leaves the baskets in any state, as soon as it meets anything but digits, that
// separator, spaces and line ends: such texts are for LabelScanner, whose result for the texts accepted here
// would be the same. Never throws but for memory.
std::optional<Separator> scanIntegers(std::string_view text, std::optional<Separator> wanted,
                                      BasketBuilder& baskets);

}  // namespace korassoc::cli
