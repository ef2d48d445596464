// A dictionary with a full memory, seen from outside: its queue, its tables and its spill file.

#pragma once

#include <gtest/gtest.h>

#include <iostream>
#include <map>
#include <memory>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/dictionary/SpillStore.h"
#include "korassoc/engine/DictionarySettings.h"
#include "tests/support/SpillFileReader.h"
#include "tests/support/TemporaryFile.h"

using Items = std::vector<int>;

// The empty set counts as one of the sets in memory. A one-item set {i} stands at slot 7 i of the spill file.
class Eviction : public ::testing::Test {
 protected:
  // A dictionary that keeps at most this many sets (with the empty one) and lets go of those counted up to
  // `leave` times.
  void make(int mostSets, int leave, bool spill) {
    dictionary_.reset();
    settings_.SetMaxInStoreSets(mostSets);
    settings_.SetLeaveInMainStoreCount(leave);
    settings_.SetDiskSpill(spill);
    settings_.SetSpillFileName(file_.name().c_str());
    dictionary_ = std::make_unique<SetDictionary>(4, &settings_, true);
    dictionary_->addEmptySet(new CarmaSetDescriptor(0, 0, 0));
  }
  // addSet()'s answer, for a set with count 1, or that of add() when asPhaseI_ is set. A refused descriptor
  // stays ours.
  int add(const Items& items) {
    if (asPhaseI_) {
      const ItemSetView view(items.data(), static_cast<int>(items.size()));
      return dictionary_->add(view, CarmaSetDescriptor(1, 9, 0));
    }
    std::unique_ptr<SetCounter> descriptor = std::make_unique<CarmaSetDescriptor>(1, 9, 0);
    const int answer = dictionary_->addSet(items.data(), static_cast<int>(items.size()), descriptor.get());
    if (answer == 0) static_cast<void>(descriptor.release());
    return answer;
  }
  // The new count, 0 when the set is not stored.
  int increment(const Items& items) {
    const SetCounter* counter = dictionary_->incrementSet(items.data(), static_cast<int>(items.size()));
    return counter != nullptr ? counter->count : 0;
  }
  bool contains(const Items& items) {
    const ItemSet set(items.data(), static_cast<int>(items.size()));
    return dictionary_->containsSet(&set);
  }
  std::vector<Items> queue() const {
    std::vector<Items> sets;
    const ItemSet* head = dictionary_->smallQueue().head();
    for (const ItemSet* set = head; set != nullptr; set = set->getNext() == head ? nullptr : set->getNext()) {
      sets.emplace_back(set->getTheArray(), set->getTheArray() + set->length());
    }
    return sets;
  }
  // What is in memory beside the empty set, and its counts.
  std::map<Items, int> memory() const {
    std::map<Items, int> sets;
    for (int level = 1; level <= 4; ++level) {
      dictionary_->levelTable(level).forEach([&sets](const HashTable::Entry& entry) {
        const int* items = entry.key->getTheArray();
        sets[Items(items, items + entry.key->length())] = entry.descriptor->count;
      });
    }
    return sets;
  }
  // What is on the disk, and its counts; checked for being where it belongs.
  std::map<Items, int> disk() const {
    std::map<Items, int> sets;
    for (const DiskSlot& slot : readSpillFile(file_.name(), 1).slots) {
      EXPECT_EQ(slot.position, 7 * slot.items[0]);
      EXPECT_EQ(slot.hash, 7 * slot.items[0]);
      if (slot.state == 1) sets[slot.items] = slot.count;
    }
    return sets;
  }
  int pushedLessUnlinked() const { return dictionary_->smallQueue().count(); }

  bool asPhaseI_ = false;
  DictionarySettings settings_;
  TemporaryFile file_;
  std::unique_ptr<SetDictionary> dictionary_;
};
