// The plain engine's store: one table for each set size, memory without limit.

#pragma once

#include <vector>

#include "tests/oracle/PlainSettings.h"
#include "tests/oracle/PlainTable.h"

namespace oracle {

class PlainDictionary {
 public:
  explicit PlainDictionary(const PlainSettings& settings);

  // The empty set enters with its counter, count 0.
  void addEmptySet();
  // Null when the set is absent, a set longer than the longest kept included.
  Counter* find(const Items& set);
  // Stores set. The caller has made sure that it is absent and not too long.
  void add(const Items& set, const Counter& counter);
  // One more occurrence of a stored set; null when it is absent.
  Counter* increment(const Items& set);

  // Removes every set of the level, or of all levels up to the first empty one, that is too rare for the
  // threshold; the empty set is never removed. Returns the number removed. A built lattice drops the links to
  // them.
  int removeSmall(int level, double minCount);
  int removeSmallSets(double minCount);

  int levelSize(int level) const { return tables_[static_cast<std::size_t>(level)].count(); }
  // The empty set counts as one, whether it is there or not.
  int totalSetCount() const;
  // How many levels from 1 upward hold at least one set, up to the first that holds none.
  int highestLevel() const;
  int maxLevel() const { return static_cast<int>(tables_.size()) - 1; }
  // The number of transactions.
  int emptySetCount();

  PlainTable& level(int level) { return tables_[static_cast<std::size_t>(level)]; }
  const PlainTable& level(int level) const { return tables_[static_cast<std::size_t>(level)]; }

  bool latticeBuilt = false;

 private:
  std::vector<PlainTable> tables_;  // by set size
};

}  // namespace oracle
