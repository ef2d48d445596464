// Reads baskets the obvious way, to compare LineReader with.

#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "cli/input/BasketReader.h"
#include "cli/input/Separator.h"

// What a text holds: either a place where it is refused, or baskets.
struct PlainBaskets {
  std::string refusedAt;  // "LINE:COLUMN", "" when it is not
  std::vector<std::set<std::string>> baskets;
  korassoc::cli::Separator separator = korassoc::cli::Separator::kBlanks;
  bool areNumbers = false;
  std::size_t emptyLines = 0;
  std::size_t emptyItems = 0;
  std::size_t basketsWithRepeats = 0;
};

// One way for labels and integers, line by line and character by character.
PlainBaskets readPlainly(std::string_view text, std::optional<korassoc::cli::Separator> wanted);

// LineReader on the same text, which comes in blocks of so many bytes, beside that: once from a file, once from a
// pipe. Returns the first difference in words, "" when there is none.
std::string differenceFromPlain(std::string_view text, std::optional<korassoc::cli::Separator> wanted,
                                std::size_t longestBlock);
