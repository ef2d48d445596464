// What an item is called inside: a number.

#pragma once

#include <cstdint>

namespace korassoc {

// Any number is a good item, negative ones included. Labels say what an item is called by people.
using Item = std::int32_t;

}  // namespace korassoc
