// Itemsets of the plain engine: bare vectors of ascending item ids, and what can be asked of them.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace oracle {

// Item ids in ascending order. Repeats are kept where a transaction brings them.
using Items = std::vector<int>;

// XOR over the positions i of prime[i mod 47] * items[i], products wrapping at 32 bits. Empty: 0.
std::uint32_t hashCode(const Items& items);

// items with one more item, standing before the first element that is not smaller.
Items with(const Items& items, int item);

// items without the element at position.
Items without(const Items& items, std::size_t position);

// The items of a, in a's order, that do not occur in b.
Items difference(const Items& a, const Items& b);

// The order of itemsets: fewer items first, then item by item, the first smaller item first.
bool comesBefore(const Items& a, const Items& b);

// How many choices of positions in the sorted transaction spell set. Without repeated items that is 1 when
// the transaction contains the set and 0 when not; {a, b} occurs twice in a a b. The empty set occurs once.
long long occurrences(const Items& set, const Items& transaction);

}  // namespace oracle
