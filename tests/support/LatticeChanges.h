// Everything by which a host can change the sets of a dictionary, their counts or their links.

#pragma once

#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <string>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/CompleteItemsets.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/itemsets/ItemSet.h"
#include "tests/support/Hosts.h"
#include "tests/support/RecordStream.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFile.h"

struct LatticeChange {
  const char* name;
  // Makes the change and gives the answer as a text, "" for an operation that has none. The sets of one item
  // 1 to 3 and those made of them are taken to be stored, what holds the item 99 not.
  std::function<std::string(SetDictionary&)> run;
  const char* refusal;  // the answer of a dictionary that must not change
};

namespace lattice_changes {

// Hands a descriptor over and, when it was refused, deletes it, as callers do.
template <typename Add>
std::string answerOf(Add&& add) {
  auto descriptor = std::make_unique<CarmaSetDescriptor>(1, 1, 0);
  const int answer = add(descriptor.get());
  if (answer == 0) static_cast<void>(descriptor.release());
  return std::to_string(answer);
}

inline std::string textOf(const SetCounter* counter) { return counter == nullptr ? "null" : "counter"; }

inline OrderedArray arrayOf(const std::vector<int>& elements) {
  OrderedArray array(0, 10);
  for (const int element : elements) array.Add(element);
  return array;
}

}  // namespace lattice_changes

inline const std::vector<LatticeChange>& latticeChanges() {
  using namespace lattice_changes;
  static const std::vector<int> pair = {1, 99};
  static const std::vector<int> both = {0, 1};
  static const std::vector<LatticeChange> changes = {
      {"readObject",  // of what is no record; throws where it is not refused
       [](SetDictionary& sets) {
         RecordStream record("SD");
         const StreamCapture output(std::cout);
         return std::to_string(sets.readObject(record.stream()));
       },
       "0"},
      {"readObjectXML",
       [](SetDictionary& sets) {
         const TemporaryFile file("<Obj>");
         std::ifstream in(file.name());
         const StreamCapture output(std::cout);
         return std::to_string(sets.readObjectXML(in));
       },
       "0"},
      {"addEmptySet",
       [](SetDictionary& sets) {
         auto descriptor = std::make_unique<CarmaSetDescriptor>(1, 1, 0);
         const bool added = sets.addEmptySet(descriptor.get());
         if (added) static_cast<void>(descriptor.release());
         return std::string(added ? "true" : "false");
       },
       "false"},
      {"incrementIfBeforeTID",
       [](SetDictionary& sets) {
         return std::string(sets.incrementIfBeforeTID(arrayOf({1, 2}), arrayOf(both), 0) ? "true" : "false");
       },
       "false"},
      {"addSet of selected ints",
       [](SetDictionary& sets) {
         return answerOf([&](SetCounter* d) { return sets.addSet(pair.data(), 2, both.data(), 2, d); });
       },
       "6"},
      {"addSet of ints",
       [](SetDictionary& sets) {
         return answerOf([&](SetCounter* d) { return sets.addSet(pair.data(), 2, d); });
       },
       "6"},
      {"addSet of an ItemSet",
       [](SetDictionary& sets) {
         return answerOf([&](SetCounter* d) { return sets.addSet(new ItemSet(pair.data(), 2), d); });
       },
       "6"},
      {"addSet of a selection",
       [](SetDictionary& sets) {
         return answerOf([&](SetCounter* d) { return sets.addSet(arrayOf(pair), arrayOf(both), d); });
       },
       "6"},
      {"addSet of an array",
       [](SetDictionary& sets) {
         return answerOf([&](SetCounter* d) { return sets.addSet(arrayOf(pair), d); });
       },
       "6"},
      {"incrementSet of a selection",
       [](SetDictionary& sets) {
         return textOf(sets.incrementSet(arrayOf({1, 2}), arrayOf(both)));
       },
       "null"},
      {"incrementSet of an ItemSet",
       [](SetDictionary& sets) {
         const ItemSet set(1);
         return textOf(sets.incrementSet(&set));
       },
       "null"},
      {"incrementSet of ints", [](SetDictionary& sets) { return textOf(sets.incrementSet(pair.data(), 1)); },
       "null"},
      {"incrementSet of an item", [](SetDictionary& sets) { return textOf(sets.incrementSet(1)); }, "null"},
      {"incrementSet of an array",
       [](SetDictionary& sets) { return textOf(sets.incrementSet(arrayOf({1}))); }, "null"},
      {"removeSmallSets", [](SetDictionary& sets) { return std::to_string(sets.removeSmallSets(1e6)); }, "0"},
      {"removeSmall", [](SetDictionary& sets) { return std::to_string(sets.removeSmall(2, 1e6)); }, "0"},
      {"markItems",
       [](SetDictionary& sets) {
         const ItemSet set(99);
         sets.markItems(&set);
         return std::string(sets.isMarked(99) ? "marked" : "");
       },
       ""},
      {"clearLevelBits",
       [](SetDictionary& sets) {
         const bool before = sets.isMarked(1);
         sets.clearLevelBits(1);
         return std::string(sets.isMarked(1) == before ? "" : "cleared");
       },
       ""},
      {"markLevelBits",
       [](SetDictionary& sets) {
         const bool before = sets.isMarked(1);
         sets.markLevelBits(1);
         return std::string(sets.isMarked(1) == before ? "" : "marked");
       },
       ""},
      {"buildLattice",
       [](SetDictionary& sets) {
         const SetCounter* before = sets.getDescriptor(1);
         sets.buildLattice();
         return std::string(sets.getDescriptor(1) == before ? "" : "built");
       },
       ""},
      {"pruneAdjacent",
       [](SetDictionary& sets) {
         const ItemSet set(1);
         const std::shared_ptr<const korassoc::detail::LatticeGraph> before = sets.heldGraph();
         sets.pruneAdjacent(&set);
         return std::string(sets.isCurrent(*before) ? "" : "pruned");
       },
       ""},
      {"rebuildLinks",
       [](SetDictionary& sets) {
         const std::shared_ptr<const korassoc::detail::LatticeGraph> before = sets.heldGraph();
         sets.rebuildLinks();
         return std::string(sets.isCurrent(*before) ? "" : "rebuilt");
       },
       ""},
      {"resetAllCounts", [](SetDictionary& sets) { return std::to_string(sets.resetAllCounts()); }, "0"},
      {"adopt",
       [](SetDictionary& sets) {
         const int before = sets.getTotalSetCount();
         sets.adopt({});
         return std::string(sets.getTotalSetCount() == before ? "" : "adopted");
       },
       ""},
      {"breakOff",
       [](SetDictionary& sets) {
         sets.breakOff();
         return std::string(sets.isBrokenOff() ? "broken off" : "");
       },
       ""},
      {"prepareExactCounting",
       [](SetDictionary& sets) {
         const int before = sets.getCount(1);
         sets.prepareExactCounting(1, false);
         return std::string(sets.getCount(1) == before ? "" : "prepared");
       },
       ""},
      {"takeTransactionCount", [](SetDictionary& sets) { return shortForm(sets.takeTransactionCount(1000)); },
       "E6"},
      {"createSpillStore",
       [](SetDictionary& sets) {
         const SpillStore* before = sets.spillStore();
         sets.createSpillStore();
         return std::string(sets.spillStore() == before ? "" : "created");
       },
       ""},
      {"queuePush",
       [](SetDictionary& sets) {
         static ItemSet queued(99);
         sets.queuePush(&queued);
         const bool taken = sets.queuePop() == &queued;
         return std::string(taken ? "pushed" : "");
       },
       ""},
      {"takeBack",
       [](SetDictionary& sets) {
         auto set = std::make_unique<ItemSet>(99);
         std::unique_ptr<SetCounter> descriptor = std::make_unique<CarmaSetDescriptor>(1, 1, 0);
         return std::string(sets.takeBack(set, descriptor) ? "true" : "false");
       },
       "false"},
      {"add",
       [](SetDictionary& sets) {
         const CarmaSetDescriptor descriptor(1, 1, 0);
         if (sets.find(ItemSetView(pair.data(), 2)) != nullptr) return std::string("stored");
         return std::to_string(sets.add(ItemSetView(pair.data(), 2), descriptor));
       },
       "6"},
  };
  return changes;
}
