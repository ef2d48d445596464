// Holds a dictionary of the library against one of the plain engine, down to the order of every chain.

#pragma once

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/dictionary/HashTable.h"
#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "tests/oracle/PlainDictionary.h"
#include "tests/oracle/StateText.h"

// "{1 2 3}"
inline std::string braces(const oracle::Items& items) {
  std::string text = "{";
  for (std::size_t i = 0; i < items.size(); ++i) text += (i == 0 ? "" : " ") + std::to_string(items[i]);
  return text + "}";
}

inline oracle::Items itemsOf(const ItemSet& set) {
  return set.length() == 0 ? oracle::Items()
                           : oracle::Items(set.getTheArray(), set.getTheArray() + set.length());
}

inline std::string entryText(const oracle::Items& set, int count, int tid, int maxMissed,
                             const oracle::Items& adjacent) {
  std::ostringstream text;
  text << braces(set) << " count " << count << " TID " << tid << " max missed " << maxMissed << " adjacent "
       << braces(adjacent);
  return text.str();
}

inline std::string entryText(const HashTable::Entry& entry) {
  const auto* lattice = dynamic_cast<const LatticeSetDescriptor*>(entry.descriptor);
  oracle::Items adjacent;
  if (lattice != nullptr)
    adjacent.assign(lattice->adjacent.data, lattice->adjacent.data + lattice->adjacent.count);
  return entryText(itemsOf(*entry.key), entry.descriptor->count, entry.descriptor->getTID(),
                   entry.descriptor->getMaxMissed(), adjacent);
}

inline std::string entryText(const oracle::PlainTable::Entry& entry) {
  return entryText(entry.key, entry.counter.count, entry.counter.tid, entry.counter.maxMissed,
                   entry.counter.adjacent);
}

inline bool isSame(const HashTable::Entry& entry, const oracle::PlainTable::Entry& plain) {
  const SetCounter& counter = *entry.descriptor;
  if (entry.key->length() != static_cast<int>(plain.key.size()) || counter.count != plain.counter.count ||
      counter.getTID() != plain.counter.tid || counter.getMaxMissed() != plain.counter.maxMissed ||
      !std::equal(plain.key.begin(), plain.key.end(), entry.key->getTheArray())) {
    return false;
  }
  const auto* lattice = dynamic_cast<const LatticeSetDescriptor*>(&counter);
  if (lattice == nullptr) return plain.counter.adjacent.empty();
  return lattice->adjacent.count == static_cast<int>(plain.counter.adjacent.size()) &&
         std::equal(plain.counter.adjacent.begin(), plain.counter.adjacent.end(), lattice->adjacent.data);
}

// The first difference of two tables, "" when there is none. Number of buckets, order of the chains, all
// counters.
inline std::string firstDifference(const HashTable& table, const oracle::PlainTable& plain) {
  std::ostringstream text;
  if (table.count() != plain.count()) {
    text << table.count() << " sets instead of " << plain.count();
    return text.str();
  }
  if (plain.count() == 0) return "";
  if (table.bucketCount() != plain.bucketCount()) {
    text << table.bucketCount() << " buckets instead of " << plain.bucketCount();
    return text.str();
  }
  for (int bucket = 0; bucket < plain.bucketCount(); ++bucket) {
    const HashTable::Entry* entry = table.bucket(bucket);
    for (const oracle::PlainTable::Entry& expected : plain.chain(bucket)) {
      if (entry == nullptr || !isSame(*entry, expected)) {
        text << "bucket " << bucket << ": " << (entry == nullptr ? "chain ends" : entryText(*entry))
             << " instead of " << entryText(expected);
        return text.str();
      }
      entry = entry->next;
    }
    if (entry != nullptr) {
      text << "bucket " << bucket << ": " << entryText(*entry) << " instead of the end of the chain";
      return text.str();
    }
  }
  return "";
}

inline std::string firstDifference(const SetDictionary& dictionary, const oracle::PlainDictionary& plain) {
  for (int level = 0; level <= plain.maxLevel(); ++level) {
    const std::string difference = firstDifference(dictionary.levelTable(level), plain.level(level));
    if (!difference.empty()) return "level " + std::to_string(level) + ": " + difference;
  }
  if (dictionary.getTotalSetCount() != plain.totalSetCount()) return "total set count";
  if (dictionary.getHighestLevel() != plain.highestLevel()) return "highest level";
  if (dictionary.isLatticeBuilt() != plain.latticeBuilt) return "lattice built";
  return "";
}

// The state as oracle::stateText gives it, without the empty set.
inline std::string stateText(const SetDictionary& dictionary) {
  std::vector<oracle::StateEntry> entries;
  for (int level = 1; level <= dictionary.maxLevel(); ++level) {
    dictionary.levelTable(level).forEach([&](const HashTable::Entry& entry) {
      entries.push_back({itemsOf(*entry.key), entry.descriptor->count, entry.descriptor->getTID(),
                         entry.descriptor->getMaxMissed()});
    });
  }
  return oracle::stateText(entries);
}
