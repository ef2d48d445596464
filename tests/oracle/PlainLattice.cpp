#include "tests/oracle/PlainLattice.h"

#include <algorithm>

#include "tests/oracle/PlainDictionary.h"

namespace oracle {

int buildLattice(PlainDictionary& dictionary) {
  int missing = 0;
  for (int size = 0; size <= dictionary.highestLevel(); ++size) {
    for (PlainTable::Entry* entry : dictionary.level(size).entries()) {
      entry->counter.adjacent.clear();
      for (std::size_t position = 0; position < entry->key.size(); ++position) {
        Counter* subset = dictionary.find(without(entry->key, position));
        if (subset == nullptr) {
          ++missing;
        } else {
          subset->adjacent.push_back(entry->key[position]);
          std::sort(subset->adjacent.begin(), subset->adjacent.end());
        }
      }
    }
  }
  dictionary.latticeBuilt = true;
  return missing;
}

void rebuildLinks(PlainDictionary& dictionary) {
  for (int size = 0; size <= dictionary.highestLevel(); ++size) {
    for (PlainTable::Entry* entry : dictionary.level(size).entries()) {
      std::vector<int> kept;
      for (int item : entry->counter.adjacent) {
        if (dictionary.find(with(entry->key, item)) != nullptr) kept.push_back(item);
      }
      entry->counter.adjacent = kept;
    }
  }
}

}  // namespace oracle
