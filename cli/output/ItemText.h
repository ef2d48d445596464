// How items and sets of them are written for people.

#pragma once

#include <span>
#include <string>
#include <string_view>

#include "cli/input/ItemNames.h"

namespace korassoc::cli {

// The label made printable, and quoted as in the input when it would not be told apart in a list otherwise
// (it holds a comma, a quote or a brace, or begins or ends with a blank).
std::string labelText(std::string_view label);

// "{bread, milk}"; "{}" for the empty set.
std::string setText(std::span<const int> items, const ItemNames& names);

}  // namespace korassoc::cli
