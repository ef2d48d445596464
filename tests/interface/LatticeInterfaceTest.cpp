// The names and signatures of dictionary, lattice and descriptors that hosts compile against, and the order
// of the virtual operations.

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <memory>
#include <set>
#include <type_traits>
#include <vector>

#include "korassoc/korassoc.h"
#include "tests/interface/InterfaceTest.h"

namespace {

using KorAssoc::KorStatus;
using Lattice = SemiLattice;
using Dictionary = SetDictionary;
using Sets = std::set<ItemSet>;
using Rules = std::vector<AssociationRule>;
using Items = std::vector<ConsequentDescriptor>;

using CreateFilteredRules = KorStatus (Lattice::*)(double, double, double, double, double, char, ItemSet*,
                                                   ItemSet*, int, int, ItemSet*, ItemSet*, int, int, int,
                                                   bool, Rules&, ProgressListener*);
using CreateFilteredConsequents = KorStatus (Lattice::*)(double, double, double, double, double, char,
                                                         ItemSet*, ItemSet*, int, int, ItemSet*, int, Items&,
                                                         ProgressListener*);
using FilteredCopy = Lattice* (Lattice::*)(double);
using FilteredCopyWithout = Lattice* (Lattice::*)(double, const ItemSet&);

TEST(Interface, HasTheLattice) {
  static_assert(std::has_virtual_destructor_v<Lattice> && std::is_base_of_v<Lattice, Dictionary>);
  has<KorStatus (Lattice::*)(double, double, Rules&, ProgressListener*, bool)>(&Lattice::createRules);
  has<CreateFilteredRules>(&Lattice::createFilteredRules);
  has<CreateFilteredConsequents>(&Lattice::createFilteredConsequents);
  has<KorStatus (Lattice::*)(ItemSet*, int, Items&)>(&Lattice::createConsequents);
  has<double (Lattice::*)(const ItemSet&, int)>(&Lattice::findSupport);
  has<KorStatus (Lattice::*)(const ItemSet&, Sets&)>(&Lattice::superSets);
  has<KorStatus (Lattice::*)(const ItemSet&, int, int, int, Sets&)>(&Lattice::findItemSets);
  has<int (Lattice::*)() const>(&Lattice::getTotalSetCount);
  has<int (Lattice::*)() const>(&Lattice::getHighestLevel);
  has<int (Lattice::*)(int) const>(&Lattice::getLevelSize);
  has<int (Lattice::*)(int) const>(&Lattice::getSizeAboveLevel);
  has<void (Lattice::*)() const>(&Lattice::display);
  has<FilteredCopy>(&Lattice::filteredCopy);
  has<FilteredCopyWithout>(&Lattice::filteredCopy);
  has<void (Lattice::*)()>(&Lattice::setRestartFailed);
  inConsecutiveSlots(0, &Lattice::createRules, &Lattice::createFilteredRules,
                     &Lattice::createFilteredConsequents, &Lattice::createConsequents, &Lattice::findSupport,
                     &Lattice::superSets, &Lattice::findItemSets, &Lattice::getTotalSetCount,
                     &Lattice::getHighestLevel, &Lattice::getLevelSize, &Lattice::getSizeAboveLevel,
                     &Lattice::display, &Lattice::exportRulesXML, &Lattice::exportLatticeXML,
                     static_cast<FilteredCopy>(&Lattice::filteredCopy),
                     static_cast<FilteredCopyWithout>(&Lattice::filteredCopy), &Lattice::setRestartFailed);
}

TEST(Interface, HasTheDictionary) {
  static_assert(std::is_constructible_v<Dictionary, int, DictionarySettings*, bool>);
  static_assert(std::is_constructible_v<Dictionary, std::vector<std::unique_ptr<HashTable>>, int, int, bool>);
  using Array = const OrderedArray&;
  using Counter = SetCounter*;
  using ContainsAtLevel = bool (Dictionary::*)(const ItemSet*, int);
  using Contains = bool (Dictionary::*)(const ItemSet*);
  using ContainsSelection = bool (Dictionary::*)(Array, Array);
  using ContainsArray = bool (Dictionary::*)(Array);
  using OfInts = Counter (Dictionary::*)(const int*, int);
  using OfItem = Counter (Dictionary::*)(int);
  using OfArray = Counter (Dictionary::*)(Array);
  using OfSelection = Counter (Dictionary::*)(Array, Array);
  using OfSet = Counter (Dictionary::*)(const ItemSet*);
  using CountOfItem = int (Dictionary::*)(int);
  using CountOfSet = int (Dictionary::*)(const ItemSet*);
  using AddRawSelection = int (Dictionary::*)(const int*, int, const int*, int, Counter);
  using AddInts = int (Dictionary::*)(const int*, int, Counter);
  using AddItemSet = int (Dictionary::*)(ItemSet*, Counter);
  using AddSelection = int (Dictionary::*)(Array, Array, Counter);
  using AddArray = int (Dictionary::*)(Array, Counter);
  has<KorStatus (Dictionary::*)(const ItemSet&, const ItemSet&, int, int, int, int, Sets&)>(
      &Dictionary::findItemSets3);
  has<KorStatus (Dictionary::*)(const ItemSet&, int, int, int, int, Sets&)>(&Dictionary::findItemSets2);
  has<KorStatus (Dictionary::*)(const ItemSet&, int, int, int, int, Sets&)>(&Dictionary::findItemSetsWithin);
  has<KorStatus (Dictionary::*)(int, Sets&)>(&Dictionary::findMaximalItemSets);
  has<bool (Dictionary::*)(Array, Array, int)>(&Dictionary::incrementIfBeforeTID);
  has<bool (Dictionary::*)(Counter)>(&Dictionary::addEmptySet);
  // Behind the 17 operations of the lattice and its destructor.
  inConsecutiveSlots(
      19, &Dictionary::writeObject, &Dictionary::readObject, &Dictionary::writeObjectXML,
      &Dictionary::readObjectXML, &Dictionary::addEmptySet,
      static_cast<ContainsAtLevel>(&Dictionary::containsSet), static_cast<Contains>(&Dictionary::containsSet),
      static_cast<ContainsSelection>(&Dictionary::containsSet),
      static_cast<ContainsArray>(&Dictionary::containsSet), &Dictionary::incrementIfBeforeTID,
      static_cast<OfInts>(&Dictionary::getDescriptor), static_cast<OfItem>(&Dictionary::getDescriptor),
      static_cast<OfArray>(&Dictionary::getDescriptor), static_cast<OfSet>(&Dictionary::getDescriptor),
      static_cast<CountOfItem>(&Dictionary::getCount), static_cast<CountOfSet>(&Dictionary::getCount),
      &Dictionary::getEmptySetCount, static_cast<AddRawSelection>(&Dictionary::addSet),
      static_cast<AddInts>(&Dictionary::addSet), static_cast<AddItemSet>(&Dictionary::addSet),
      static_cast<AddSelection>(&Dictionary::addSet), static_cast<AddArray>(&Dictionary::addSet),
      static_cast<OfSelection>(&Dictionary::incrementSet), static_cast<OfSet>(&Dictionary::incrementSet),
      static_cast<OfInts>(&Dictionary::incrementSet), static_cast<OfItem>(&Dictionary::incrementSet),
      static_cast<OfArray>(&Dictionary::incrementSet), &Dictionary::findItemSets3, &Dictionary::findItemSets2,
      &Dictionary::findItemSetsWithin, &Dictionary::findMaximalItemSets);
}

TEST(Interface, HasTheOperationsOfTheDictionaryBesideTheTable) {
  has<int (Dictionary::*)(double)>(&Dictionary::removeSmallSets);
  has<int (Dictionary::*)(int, double)>(&Dictionary::removeSmall);
  has<void (Dictionary::*)(const ItemSet*)>(&Dictionary::markItems);
  has<void (Dictionary::*)(int)>(&Dictionary::clearLevelBits);
  has<void (Dictionary::*)(int)>(&Dictionary::markLevelBits);
  has<void (Dictionary::*)()>(&Dictionary::createSpillStore);
  has<void (Dictionary::*)(ItemSet*)>(&Dictionary::queuePush);
  has<ItemSet* (Dictionary::*)()>(&Dictionary::queuePop);
  has<void (Dictionary::*)(ItemSet*)>(&Dictionary::queueUnlink);
  has<void (Dictionary::*)()>(&Dictionary::buildLattice);
  has<void (Dictionary::*)(const ItemSet*)>(&Dictionary::pruneAdjacent);
  has<void (Dictionary::*)()>(&Dictionary::rebuildLinks);
  has<int (Dictionary::*)()>(&Dictionary::resetAllCounts);
}

TEST(Interface, HasTheTable) {
  static_assert(std::is_constructible_v<HashTable, int> && std::is_copy_constructible_v<HashTable>);
  static_assert(std::is_same_v<decltype(HashTable::Entry::key), ItemSet*>);
  static_assert(std::is_same_v<decltype(HashTable::Entry::descriptor), SetCounter*>);
  static_assert(std::is_same_v<decltype(HashTable::Entry::next), HashTable::Entry*>);
  has<bool (HashTable::*)(ItemSet*, SetCounter*)>(&HashTable::put);
  has<HashTable::Entry* (HashTable::*)(const ItemSet*) const>(&HashTable::find);
  has<HashTable::Entry* (HashTable::*)(const ItemSet*)>(&HashTable::remove);
  has<bool (HashTable::*)(const ItemSet*) const>(&HashTable::contains);
  has<std::uint64_t (HashTable::*)(std::fstream&) const>(&HashTable::writeObject);
  has<std::uint64_t (HashTable::*)(std::fstream&, char)>(&HashTable::readObject);
}

TEST(Interface, HasTheDescriptors) {
  static_assert(std::is_base_of_v<SetCounter, CarmaSetDescriptor>);
  static_assert(std::is_base_of_v<SetCounter, LatticeSetDescriptor>);
  static_assert(std::is_same_v<decltype(SetCounter::count), int>);
  static_assert(std::is_same_v<decltype(SetCounter::TID), int>);
  static_assert(std::is_same_v<decltype(CarmaSetDescriptor::maxMissed), int>);
  static_assert(std::is_same_v<decltype(LatticeSetDescriptor::maxMissed), int>);
  static_assert(std::is_same_v<decltype(LatticeSetDescriptor::adjacent), OrderedArray>);
  has<int (SetCounter::*)() const>(&SetCounter::getMaxMissed);
  inConsecutiveSlots(2, &SetCounter::getTID, &SetCounter::setTID, &SetCounter::display, &SetCounter::Display,
                     &SetCounter::getMaxMissed, &SetCounter::setMaxMissed, &SetCounter::decrementMaxMissed,
                     &SetCounter::writeObject, &SetCounter::readObject, &SetCounter::writeObjectXML,
                     &SetCounter::readObjectXML);
  inConsecutiveSlots(13, &CarmaSetDescriptor::getCreationTID);
  inConsecutiveSlots(13, &LatticeSetDescriptor::getCreationTID);
  has<int (CarmaSetDescriptor::*)() const>(&CarmaSetDescriptor::getCreationTID);
  has<int (LatticeSetDescriptor::*)() const>(&LatticeSetDescriptor::getCreationTID);
}

}  // namespace
