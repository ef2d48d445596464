// A chained hash table from itemsets to counters, with the bucket and chain order of the library's tables.

#pragma once

#include <list>
#include <vector>

#include "tests/oracle/Items.h"

namespace oracle {

// What is known of a stored set.
struct Counter {
  int count = 0;              // occurrences counted
  int tid = 0;                // number of the transaction at which the set was inserted
  int maxMissed = 0;          // the most occurrences it can have had before that
  std::vector<int> adjacent;  // lattice: the items that extend it to a stored set, ascending
};

// Sets go to bucket hash mod buckets, at the head of its chain. Before a set would make the table fuller than
// three quarters, the buckets become 2 n + 1 and every entry moves, bucket by bucket and in chain order, to
// the head of its new chain. Entries keep their address until they are removed.
class PlainTable {
 public:
  struct Entry {
    Items key;
    Counter counter;
  };
  using Chain = std::list<Entry>;  // the head of the chain first

  // buckets is at least 1.
  explicit PlainTable(int buckets);

  // False, changing nothing, when the set is there already.
  bool put(const Items& key, const Counter& counter);
  // Null when absent. The pointer dies when the entry is removed.
  Counter* find(const Items& key);
  // False when absent.
  bool remove(const Items& key);
  void clear();

  bool contains(const Items& key) { return find(key) != nullptr; }
  int count() const { return count_; }
  int bucketCount() const { return static_cast<int>(buckets_.size()); }
  const Chain& chain(int bucket) const { return buckets_[static_cast<std::size_t>(bucket)]; }

  // All entries, bucket by bucket and in chain order.
  std::vector<Entry*> entries();

 private:
  Chain& chainOf(const Items& key);
  void rehash();

  std::vector<Chain> buckets_;
  int count_ = 0;
  int threshold_;
};

}  // namespace oracle
