// The one interface of all input formats.

#pragma once

#include <cstddef>
#include <string>

#include "cli/input/Baskets.h"
#include "cli/input/Input.h"
#include "cli/input/ItemNames.h"

namespace korassoc::cli {

// What an input held and what was noticed while it was read.
struct BasketInput {
  Baskets baskets;  // never empty
  ItemNames names;
  std::string format;                  // for people: "comma-separated labels (recognised)"
  std::size_t emptyLines = 0;          // lines without an item; they are no baskets
  std::size_t basketsWithRepeats = 0;  // baskets that named an item more than once; it counts once
  std::size_t emptyItems = 0;          // places between two separators with nothing in them; passed over
};

class BasketReader {
 public:
  virtual ~BasketReader() = default;

  // Reads the whole input. Throws CliError (kInput) with the place of the first thing that cannot be understood,
  // when the input holds no basket at all, and what Input throws.
  virtual BasketInput read(Input input) const = 0;
};

}  // namespace korassoc::cli
