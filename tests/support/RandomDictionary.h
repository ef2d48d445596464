// Dictionaries with random sets, for the tests and benchmarks of their records.

#pragma once

#include <memory>
#include <set>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "tests/support/Dice.h"

// Stores the set unless it is stored.
inline void store(SetDictionary& dictionary, const std::vector<int>& items,
                  std::unique_ptr<SetCounter> descriptor) {
  const ItemSet set(items.data(), static_cast<int>(items.size()));
  if (dictionary.containsSet(&set)) return;
  const bool stored = items.empty() ? dictionary.addEmptySet(descriptor.get())
                                    : dictionary.addSet(items.data(), set.length(), descriptor.get()) == 0;
  if (stored) static_cast<void>(descriptor.release());
}

// What a dictionary holds in its descriptors: A, C or L as its record's reader has it.
inline std::unique_ptr<SetCounter> randomDescriptor(Dice& dice, char type) {
  if (type == 'A') return std::make_unique<SetCounter>(dice.anyInt(), dice.anyInt());
  if (type == 'C') return std::make_unique<CarmaSetDescriptor>(dice.anyInt(), dice.anyInt(), dice.anyInt());
  auto descriptor = std::make_unique<LatticeSetDescriptor>(dice.anyInt(), dice.anyInt(), dice.anyInt());
  for (int links = dice.below(6); links > 0; --links) descriptor->adjacent.Add(dice.anyInt());
  return descriptor;
}

// Adds the empty set and up to `sets` sets of random sizes.
inline void fill(SetDictionary& dictionary, Dice& dice, int sets, char type) {
  store(dictionary, {}, randomDescriptor(dice, type));
  const bool dense = dice.chance(50);  // few items, so that many sets share a bucket
  for (; sets > 0; --sets) {
    std::set<int> items;
    for (int n = dice.between(1, dictionary.maxLevel()); n > 0; --n) {
      items.insert(dense ? dice.below(40) : dice.anyInt());
    }
    store(dictionary, {items.begin(), items.end()}, randomDescriptor(dice, type));
  }
}
