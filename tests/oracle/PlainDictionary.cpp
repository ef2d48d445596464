#include "tests/oracle/PlainDictionary.h"

#include "tests/oracle/PlainLattice.h"
#include "tests/oracle/Rounding.h"

namespace oracle {

namespace {

int initialBuckets(int level, const PlainSettings& settings) {
  switch (level) {
    case 0:
      return 2;
    case 1:
      return settings.initialBoundarySearchSize;
    case 2:
    case 3:
      return settings.initialHashtableSet23Size;
    case 4:
    case 5:
      return settings.initialBoundarySearchSize;
    case 6:
    case 7:
      return (settings.initialBoundarySearchSize - 1) / 2;
    case 8:
      return (settings.initialBoundarySearchSize - 1) / 4;
    default:
      return settings.initialSetSize;
  }
}

}  // namespace

PlainDictionary::PlainDictionary(const PlainSettings& settings) {
  for (int level = 0; level <= settings.maxLengthSet; ++level) {
    tables_.emplace_back(initialBuckets(level, settings));
  }
}

void PlainDictionary::addEmptySet() { level(0).put({}, Counter{}); }

Counter* PlainDictionary::find(const Items& set) {
  const int size = static_cast<int>(set.size());
  return size > maxLevel() ? nullptr : level(size).find(set);
}

void PlainDictionary::add(const Items& set, const Counter& counter) {
  level(static_cast<int>(set.size())).put(set, counter);
}

Counter* PlainDictionary::increment(const Items& set) {
  Counter* counter = find(set);
  if (counter != nullptr) ++counter->count;
  return counter;
}

int PlainDictionary::removeSmall(int size, double minCount) {
  if (size < 1) return 0;
  const int minimum = pruningMinimum(minCount);
  std::vector<Items> rare;
  for (const PlainTable::Entry* entry : level(size).entries()) {
    if (entry->counter.count < minimum) rare.push_back(entry->key);
  }
  for (const Items& set : rare) level(size).remove(set);
  return static_cast<int>(rare.size());
}

int PlainDictionary::removeSmallSets(double minCount) {
  int removed = 0;
  for (int size = 1; size <= maxLevel() && levelSize(size) >= 1; ++size)
    removed += removeSmall(size, minCount);
  if (latticeBuilt) rebuildLinks(*this);
  return removed;
}

int PlainDictionary::totalSetCount() const {
  int total = 1;
  for (int size = 1; size <= maxLevel(); ++size) total += levelSize(size);
  return total;
}

int PlainDictionary::highestLevel() const {
  int highest = 0;
  while (highest < maxLevel() && levelSize(highest + 1) >= 1) ++highest;
  return highest;
}

int PlainDictionary::emptySetCount() {
  const Counter* counter = find({});
  return counter == nullptr ? 0 : counter->count;
}

}  // namespace oracle
