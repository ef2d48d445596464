// The store of all itemsets that the engine counts.

#pragma once

#include <atomic>
#include <bitset>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "korassoc/base/Export.h"
#include "korassoc/dictionary/HashTable.h"
#include "korassoc/dictionary/SemiLattice.h"
#include "korassoc/dictionary/SetCounter.h"
#include "korassoc/dictionary/SmallQueue.h"
#include "korassoc/engine/KorStatus.h"
#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/itemsets/ItemSetView.h"
#include "korassoc/itemsets/OrderedArray.h"

class CarmaSetDescriptor;
class DictionarySettings;
class SpillStore;

namespace korassoc {
struct ItemsetColumns;
}

namespace korassoc::detail {
struct CompleteItemsets;
class LatticeGraph;
class PackedLevel;
class SubsetIndex;
}  // namespace korassoc::detail

// SetDictionary keeps every candidate itemset with its descriptor, one hash table for each set size:
//
//   levels_[0]  the empty set, whose count is the number of transactions
//   levels_[k]  the sets of k items
//
// As long as nothing but phase I without a limit has been at work, the sets of one and more items are packed:
// they stand in packed_ instead of levels_, in a third of the memory. The first call that hands out a set or
// its descriptor, or stores one of the caller's, unpacks all of them for good; what can be asked shows no
// difference.
//
// While transactions are read, sets are added and counted under a limit of sets in memory: at the limit the
// head of the small queue makes room, moving to the spill file (one-item sets, when spilling is on) or being
// given up. removeSmallSets() prunes what cannot reach a support; buildLattice() turns the survivors into a
// lattice, on which the queries work.
//
// Invariants: a set stands in the table of its own length, and either in memory or on disk; a set stands in
//   the small queue only while it is in memory; inStoreCount() counts the sets in memory.
// Ownership: owns all stored sets and descriptors; whoever hands in a descriptor gives it up when the answer
//   is that the set was stored.
// Errors: operations that answer a status let no exception out (SemiLattice). All others let std::bad_alloc out
// when memory runs out, also those that only look, for they may have to unpack the sets; where nothing else
// is said, nothing has changed then.
// A set argument comes in five forms: ItemSet; ascending array with a length; single item; OrderedArray;
//   index selection (the items values.data[index.data[i]]).
class KORASSOC_EXPORT SetDictionary : public SemiLattice {
 public:
  // The most items that any dictionary stores in a set. Every length has a table in saved states, and no run
  // comes near: a set of so many items has 2 to that power subsets.
  static constexpr int kLongestSet = 1000;

  // The engine's constructor. maxLevel: most items of a stored set; below 0 counts as 0, above kLongestSet as
  // kLongestSet. settings stays the caller's and must
  // outlive the dictionary; its number of fixed sets is cut to maxLevel + 1. The last argument has no effect.
  SetDictionary(int maxLevel, DictionarySettings* settings, bool);
  // A lattice around tables made elsewhere (one a level, from 0), which the dictionary takes over, with
  // default settings of its own. maxLevel as above.
  SetDictionary(std::vector<std::unique_ptr<HashTable>> levelTables, int inStoreCount, int maxLevel,
                bool bitsetOff);
  SetDictionary(const SetDictionary&) = delete;
  SetDictionary& operator=(const SetDictionary&) = delete;

  // --- Virtual operations, in the order of the interface ---
  KorAssoc::KorStatus createRules(double minSupport, double minConfidence, std::vector<AssociationRule>& out,
                                  ProgressListener* listener, bool pruneRedundant) override;
  KorAssoc::KorStatus createFilteredRules(double minConfidence, double maxConfidence, double minSupport,
                                          double maxSupport, double minLift, char sortBy,
                                          ItemSet* antecedentRequired, ItemSet* antecedentAllowed,
                                          int minAntecedentLength, int maxAntecedentLength,
                                          ItemSet* consequentRequired, ItemSet* consequentAllowed,
                                          int minConsequentLength, int maxConsequentLength, int maxRules,
                                          bool minimalAntecedentsOnly, std::vector<AssociationRule>& out,
                                          ProgressListener* listener) override;
  KorAssoc::KorStatus createFilteredConsequents(double minConfidence, double maxConfidence, double minSupport,
                                                double maxSupport, double minLift, char sortBy,
                                                ItemSet* antecedentRequired, ItemSet* antecedentAllowed,
                                                int minAntecedentLength, int maxAntecedentLength,
                                                ItemSet* consequentAllowed, int maxItems,
                                                std::vector<ConsequentDescriptor>& out,
                                                ProgressListener* listener) override;
  KorAssoc::KorStatus createConsequents(ItemSet* antecedent, int maxItems,
                                        std::vector<ConsequentDescriptor>& out) override;
  double findSupport(const ItemSet& base, int k) override;
  KorAssoc::KorStatus superSets(const ItemSet& base, std::set<ItemSet>& out) override;
  KorAssoc::KorStatus findItemSets(const ItemSet& base, int minCount, int minLength, int maxLength,
                                   std::set<ItemSet>& out) override;
  int getTotalSetCount() const override;
  int getHighestLevel() const override;
  int getLevelSize(int level) const override;
  int getSizeAboveLevel(int level) const override;
  void display() const override;
  KorAssoc::KorStatus exportRulesXML(std::ostream& out, double minSupport, double minConfidence,
                                     ProgressListener* listener, bool nonRedundant) override;
  KorAssoc::KorStatus exportLatticeXML(std::ostream& out, double minSupport) override;
  SemiLattice* filteredCopy(double minFraction) override;
  SemiLattice* filteredCopy(double minFraction, const ItemSet& leaveOut) override;
  void setRestartFailed() override;
  ~SetDictionary() override;

  // The record in a binary state: "SD", the sizes and limits, and the record of every level's table. What
  // lies on disk is not part of it, nor are the lattice's links. Both return the bytes written or read;
  // writing flushes the stream. Throw an IOException as a pointer, after a line on a diagnostic stream, for a
  // bad stream and, reading, for anything but the record of a dictionary with the same maxLevel(): what was
  // stored is then given up, in whole or in part.
  virtual std::uint64_t writeObject(std::fstream& stream) const;
  virtual std::uint64_t readObject(std::fstream& stream);
  // The record in an XML state: an object "SetDictionary" with the same content, the lattice's links
  // included. Both return its lines.
  virtual std::uint64_t writeObjectXML(std::ostream& out) const;
  virtual std::uint64_t readObjectXML(std::ifstream& in);

  // Stores the empty set and makes the number of sets in memory 1. False, and nothing taken over, when it is
  // stored already.
  virtual bool addEmptySet(SetCounter* descriptor);

  // Whether the set is stored; false above maxLevel(). level is the set's length. One-item sets are looked
  // for on disk too, which may throw an IOException as a pointer when the file cannot be read.
  virtual bool containsSet(const ItemSet* set, int level);
  virtual bool containsSet(const ItemSet* set);
  virtual bool containsSet(const OrderedArray& values, const OrderedArray& index);
  virtual bool containsSet(const OrderedArray& set);

  // Adds one to the set's count when it was stored after this transaction (a number, from 1) and sets are not
  // spilled to disk. False when it is not stored.
  virtual bool incrementIfBeforeTID(const OrderedArray& values, const OrderedArray& index, int transaction);

  // The descriptor of a stored set, or null; it stays the dictionary's, and is valid until the set leaves
  // memory or its descriptor is replaced. Of a set on disk: a counter valid until the next call. Queries
  // work on copies of the counts: who changes one after a query asks for the descriptor anew.
  virtual SetCounter* getDescriptor(const int* items, int n);
  virtual SetCounter* getDescriptor(int item);
  virtual SetCounter* getDescriptor(const OrderedArray& set);
  virtual SetCounter* getDescriptor(const ItemSet* set);

  // The count of a stored set (transactions), 0 when it is not stored or null.
  virtual int getCount(int item);
  virtual int getCount(const ItemSet* set);
  // The number of transactions.
  virtual int getEmptySetCount();

  // Stores a set that is not stored yet (the caller has made sure). Answers 0 when it was stored, with the
  // descriptor taken over; 3 when memory is full; kHeld while a Hold lives; another value when the spill
  // store refused it. A refused descriptor stays the caller's. Throws DictionaryFailure* when the spill store
  // breaks, std::bad_alloc when memory runs out: the descriptor stays the caller's then too, and the
  // dictionary as it was.
  virtual int addSet(const int* values, int valueCount, const int* index, int n, SetCounter* descriptor);
  virtual int addSet(const int* items, int n, SetCounter* descriptor);
  virtual int addSet(ItemSet* set, SetCounter* descriptor);  // takes over set, whatever the answer
  virtual int addSet(const OrderedArray& values, const OrderedArray& index, SetCounter* descriptor);
  virtual int addSet(const OrderedArray& set, SetCounter* descriptor);

  // Adds one to the count of a stored set and returns its descriptor, null when it is not stored. Of a set on
  // disk: a counter with the new count, valid until the next call. Throws DictionaryFailure* when the spill
  // store breaks.
  virtual SetCounter* incrementSet(const OrderedArray& values, const OrderedArray& index);
  virtual SetCounter* incrementSet(const ItemSet* set);
  virtual SetCounter* incrementSet(const int* items, int n);
  virtual SetCounter* incrementSet(int item);
  virtual SetCounter* incrementSet(const OrderedArray& set);

  // Insert the stored sets within the bounds (inclusive; transactions, numbers of items): the supersets of
  // base that add only allowed items; the supersets of base; the sets that hold at least one of the items.
  // What out holds already is not extended.
  virtual KorAssoc::KorStatus findItemSets3(const ItemSet& base, const ItemSet& allowed, int minCount,
                                            int maxCount, int minLength, int maxLength,
                                            std::set<ItemSet>& out);
  virtual KorAssoc::KorStatus findItemSets2(const ItemSet& base, int minCount, int maxCount, int minLength,
                                            int maxLength, std::set<ItemSet>& out);
  virtual KorAssoc::KorStatus findItemSetsWithin(const ItemSet& items, int minCount, int maxCount,
                                                 int minLength, int maxLength, std::set<ItemSet>& out);
  // Inserts the stored sets of at least minCount transactions none of whose stored supersets has as many.
  virtual KorAssoc::KorStatus findMaximalItemSets(int minCount, std::set<ItemSet>& out);

  // --- Pruning ---
  // Removes, level by level up to the first empty one, the sets counted in fewer than minCount transactions
  // (minCount raised to the next integer unless it is one up to rounding); rebuilds the links of a built
  // lattice. Returns how many were removed.
  int removeSmallSets(double minCount);
  // Prunes one level alone; none below 1. Ends the spill store whatever the level: its sets come back, or are
  // removed, at level 1, and are given up at any other. Both throw DictionaryFailure* when the sets on disk
  // do not fit into memory or cannot be read; the store and what is still in it stay then.
  int removeSmall(int level, double minCount);

  // --- Item bits: which items occur in stored sets ---
  // Items share a bit with those that are equal to them modulo 368639.
  void markItems(const ItemSet* set);
  // The items of all sets in memory of one level, 0 <= level.
  void clearLevelBits(int level);
  void markLevelBits(int level);
  bool isMarked(int item) const { return itemBits_->test(itemBit(item)); }

  // --- Lattice ---
  // Gives every set of the consecutive levels a lattice descriptor with its links; without an empty set one
  // is made with the largest count. A subset that is not stored is reported on the standard output and its
  // link left out. Cost: O(sets times their length).
  void buildLattice();
  // Takes out of a set's links those to sets that are not stored any more. A set without lattice descriptor
  // is reported on the standard output.
  void pruneAdjacent(const ItemSet* set);
  // pruneAdjacent() for every set of the consecutive levels.
  void rebuildLinks();
  // Sets every count and max missed in the consecutive levels to 0 and leaves the links. Returns the number
  // of sets reset; one without descriptor is reported on the standard output.
  int resetAllCounts();

  // Holds exactly these sets from then on, as a built lattice: what was stored before is given up. The sets
  // enter their tables in the order given. When memory runs out (std::bad_alloc) the dictionary stays as it
  // was.
  void adopt(const korassoc::detail::CompleteItemsets& itemsets);
  // To be called when something is left half-way that changes counts or links: there is no lattice then, and
  // queries throw a std::logic_error or answer 40001, error, until buildLattice() or adopt() has come to its
  // end.
  // buildLattice() and removeSmallSets() see to it themselves when they throw.
  void breakOff();
  bool isBrokenOff() const { return brokenOff_; }

  // --- Phase II ---
  // Makes ready for an exact count of all sets of at least fromLevel items: their max missed and, unless they
  // are kept, their counts become 0, and exactly the items that occur in them are marked.
  void prepareExactCounting(int fromLevel, bool keepCounts);
  // The number of transactions becomes n without a second pass.
  KorAssoc::KorStatus takeTransactionCount(int n);

  // --- Memory limit ---
  // Makes the spill store on the settings' file, in place of one that there may be.
  void createSpillStore();
  // The queue of sets that may leave: to its end; the first of it, out of it, or null; out of it, if in it.
  void queuePush(ItemSet* set);
  ItemSet* queuePop();
  void queueUnlink(ItemSet* set);
  // Sets in memory and the most there may be; a lower limit than what is stored gives nothing up at once.
  int inStoreCount() const { return inStoreCount_; }
  int maxInStoreSets() const { return maxInStoreSets_; }
  void setMaxInStoreSets(int sets) { maxInStoreSets_ = sets; }
  // Takes back a set from the spill store, owner of both from then on. False, taking over neither, when
  // memory is full.
  bool takeBack(std::unique_ptr<ItemSet>& set, std::unique_ptr<SetCounter>& descriptor);
  // Sets that made room, since the dictionary was made: given up with their counts, and moved to disk.
  int setsGivenUp() const { return setsGivenUp_; }
  int setsSpilled() const { return setsSpilled_; }

  // --- While it is walked ---
  // While one lives, the dictionary is at work for somebody and must not be deleted.
  class Use {
   public:
    explicit Use(const SetDictionary& dictionary) : dictionary_(dictionary) { ++dictionary_.uses_; }
    ~Use() { --dictionary_.uses_; }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

   private:
    const SetDictionary& dictionary_;
  };
  // While one lives, the sets, their counts and their links also stay as they are: every operation above that
  // would change one refuses. Exports, records and the second passes hold the dictionary as long as they
  // walk it or count by its descriptors, for a stream or a listener of the host may call it meanwhile.
  //
  // A refusal is false, null or 0; of addSet() and add() kHeld; of takeTransactionCount() 6, error; where
  // there is no answer, nothing is done. What an operation does besides (an ItemSet taken over) it still
  // does. Counts can still be changed by who has a descriptor, and with increment().
  class KORASSOC_EXPORT Hold {
   public:
    explicit Hold(const SetDictionary& dictionary) : dictionary_(dictionary), use_(dictionary) {
      ++dictionary_.holds_;
    }
    ~Hold();
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

   private:
    const SetDictionary& dictionary_;
    Use use_;
  };
  static constexpr int kHeld = 6;
  bool isInUse() const { return uses_ > 0; }
  bool isHeld() const { return holds_ > 0; }

  // --- For the phase steps ---
  // A counted set: its items and hash code as stored, and its descriptor.
  struct Counted {
    const int* items = nullptr;
    SetCounter* descriptor = nullptr;  // null: the set is not stored
  };
  // incrementSet() that also tells where the stored items are (those of the argument for a set on disk).
  Counted increment(const ItemSetView& set);
  SetCounter* find(const ItemSetView& set);
  // Whether the sets are packed, and, when they are, those of one length, 1 or more (null: never held one).
  bool isPacked() const { return packed_ != nullptr; }
  korassoc::detail::PackedLevel* packedLevel(int length) const {
    const auto index = static_cast<std::size_t>(length);
    return index < packed_->size() ? (*packed_)[index].get() : nullptr;
  }
  // False when no set of this length and code is stored, in memory or on disk.
  bool mayHold(int length, std::uint64_t code) const {
    if (spillStore_ != nullptr) return true;
    const HashTable* table = tableOrNull(length);
    return table != nullptr && table->mayHold(code);
  }
  // Starts to fetch what looking for a set of this length and code needs first.
  void prefetch(int length, std::uint64_t code) const {
    if (const HashTable* table = tableOrNull(length)) table->prefetch(code);
  }
  // Whether every subset of a stored set is known to be stored. It is as long as sets are added by the phase
  // I step alone, which adds them after their subsets and counts the subsets whenever it counts the set, and
  // nothing but the pruning takes them out.
  bool isClosed() const { return closed_ && leaveInMainStoreCount_ < 1 && !diskSpill_; }
  // What is stored from now on need not be so.
  void setOpen() { closed_ = false; }
  // addSet() of a copy of the set with a copy of the descriptor, without an allocation of its own where there
  // is room. For the phase I step alone, which takes note of the packed sets that the new one extends.
  int add(const ItemSetView& set, const CarmaSetDescriptor& descriptor);
  // Between the two calls evicted sets stay usable, with their last values.
  void holdEvicted() { holdsEvicted_ = true; }
  void releaseEvicted();
  // How many are held so, and letting go of those whose descriptor is not among the used ones (ascending).
  int heldEvicted() const { return static_cast<int>(evicted_.size()); }
  void releaseEvictedBut(const std::vector<const SetCounter*>& used);

  // --- Queries ---
  // The stored sets with their links both ways, made at the first call after a change of sets or links; valid
  // until the next one. Holds the counts of this moment. Throws a std::logic_error when isBrokenOff().
  const korassoc::detail::LatticeGraph& graph() const;
  // The same for those who call a listener: it stays while it is held, and is worth nothing once it is not
  // the current one any more, because the listener has had sets or links changed.
  std::shared_ptr<const korassoc::detail::LatticeGraph> heldGraph() const {
    graph();
    return graph_;
  }
  bool isCurrent(const korassoc::detail::LatticeGraph& graph) const { return graph_.get() == &graph; }
  // For those who change counts through descriptors: the next call of graph() reads all counts again.
  void noteCounting() const { countsChanged_ = true; }

  // --- Reading ---
  // The sets in memory of one and more items with their counts: level by level in the order of the tables,
  // unpacking nothing. The number of transactions is left 0.
  korassoc::ItemsetColumns columns() const;
  // Most items of a stored set.
  int maxLevel() const { return maxLevel_; }
  // The highest level that ever held a set; unlike getHighestLevel() it looks past empty levels.
  int storedLevels() const {
    return static_cast<int>(packed_ != nullptr ? std::max(packed_->size(), levels_.size()) : levels_.size()) -
           1;
  }
  // The table of one level, 0 <= level; an empty one for a level that never held a set.
  const HashTable& levelTable(int level) const;
  bool isLatticeBuilt() const { return latticeBuilt_; }
  bool isBitsetOff() const { return bitsetOff_; }
  // Switches the upkeep of item bits and queue by the pruning; off at construction by the engine.
  void setBitsetOff(bool off) { bitsetOff_ = off; }
  bool isRestartFailed() const { return restartFailed_; }
  bool rulesFlag() const { return rulesFlag_; }
  void setRulesFlag() { rulesFlag_ = true; }
  const DictionarySettings& settings() const { return *settings_; }
  // What queries answer when nothing went wrong.
  const KorAssoc::KorStatus& currentStatus() const { return status_; }
  const SpillStore* spillStore() const { return spillStore_.get(); }
  const korassoc::detail::SmallQueue& smallQueue() const { return smallQueue_; }
  int queueTopCount() const { return queueTopCount_; }
  const ItemSet& emptySet() const { return emptySet_; }

 private:
  static constexpr std::size_t kItemBits = 368639;
  static constexpr int kSpillLevel = 1;
  static std::size_t itemBit(int item) { return static_cast<std::uint32_t>(item) % kItemBits; }

  struct RecordHead;
  RecordHead recordHead() const;
  bool accepts(const RecordHead& head) const;
  void restart(const RecordHead& head);
  template <typename Read>
  void readTables(Read&& read);

  int initialBuckets(int level) const;
  HashTable& table(int level);
  HashTable* tableOrNull(int level) const {
    if (isLevelPacked(level)) unpackAll();
    const auto index = static_cast<std::size_t>(level);  // one below 0 is beyond all
    return index < levels_.size() ? levels_[index].get() : nullptr;
  }
  void unpack() const {
    if (packed_ != nullptr) unpackAll();
  }
  void unpackAll() const;
  void setItemBits(const ItemSet* set);
  void setLevelBits(int level);
  void resetLevelBits(int level);
  bool mayBePacked() const;
  bool isLevelPacked(int level) const { return packed_ != nullptr && level != 0; }
  void keepPacked(int level, std::unique_ptr<korassoc::detail::PackedLevel> sets);
  void keepTable(int level, std::unique_ptr<HashTable> table);
  int addPacked(const ItemSetView& set, const CarmaSetDescriptor& descriptor);
  int countInMemory(int level) const;
  template <typename Writer, typename Stream, typename... Tabs>
  std::uint64_t writePacked(int level, Stream& stream, Tabs... tabs) const;
  bool spillsLevel(int level) const { return diskSpill_ && spillStore_ != nullptr && level == kSpillLevel; }
  ItemSetView selection(const int* values, const int* index, int n);
  template <typename Report>
  Counted incrementOr(const ItemSetView& set, Report&& reportFailure);
  void countQueued(HashTable::Entry& entry);

  template <typename Report>
  int addOwned(std::unique_ptr<ItemSet> set, SetCounter* descriptor, Report&& reportFailure);
  void prepareToStore(const ItemSet& set, const HashTable* leaving);
  void store(std::unique_ptr<ItemSet>& set, SetCounter* descriptor, bool queued);
  int addBySpilling(std::unique_ptr<ItemSet> set, SetCounter* descriptor);
  bool makeWay(const ItemSet& set);
  int addByGivingUp(std::unique_ptr<ItemSet> set, SetCounter* descriptor);
  void discard(HashTable::Entry* entry, HashTable& table);

  void requireWhole() const;
  static void replaceDescriptor(HashTable::Entry& entry);
  void replaceDescriptors();
  void linkLevels();
  static void linkSubsets(const ItemSet& set, const korassoc::detail::SubsetIndex& subsets, int level);

  std::shared_ptr<HashTable::Pool> pool_ =
      std::make_shared<HashTable::Pool>();  // of the levels' entries, but for tables that were read
  using PackedLevels = std::vector<std::unique_ptr<korassoc::detail::PackedLevel>>;
  mutable std::vector<std::unique_ptr<HashTable>> levels_;  // made when first needed; null: never held a set
  mutable std::unique_ptr<PackedLevels> packed_;            // null: the sets are unpacked
  mutable std::unique_ptr<PackedLevels> walkedPacked_;      // unpacked while somebody walked them
  HashTable noSets_{1};                                     // what levelTable() answers for those
  std::unique_ptr<std::bitset<kItemBits>> itemBits_;
  ItemSet emptySet_;
  int maxLevel_;
  int inStoreCount_ = 0;
  int maxInStoreSets_;
  bool diskSpill_ = false;
  std::unique_ptr<SpillStore> spillStore_;  // null until the first eviction to disk
  std::unique_ptr<SetCounter> fromDisk_;    // the answer of the last look-up that went to disk
  std::unique_ptr<DictionarySettings> ownSettings_;
  DictionarySettings* settings_;
  korassoc::detail::SmallQueue smallQueue_;
  bool closed_ = true;
  int queueTopCount_ = 0;  // an incremented queued set with a higher count moves to the tail
  int leaveInMainStoreCount_;
  std::atomic<bool> restartFailed_ = false;  // a cancel may come from another thread
  bool rulesFlag_ = false;
  bool bitsetOff_ = true;
  bool latticeBuilt_ = false;
  bool brokenOff_ = false;
  int fixedSetCount_;
  int recordedSpillLevel_ = kSpillLevel;  // of a saved state; the store serves kSpillLevel all the same
  std::vector<int> selected_;             // the items of an index selection during one call
  int setsGivenUp_ = 0;
  int setsSpilled_ = 0;
  mutable int uses_ = 0;
  mutable int holds_ = 0;  // of the uses
  bool holdsEvicted_ = false;
  std::vector<std::pair<HashTable*, HashTable::Entry*>> evicted_;  // out of their tables, not yet released
  std::vector<std::unique_ptr<ItemSet>>
      refusedCopies_;  // duplicates that stand in the small queue all the same
  KorAssoc::KorStatus status_;
  mutable std::shared_ptr<korassoc::detail::LatticeGraph> graph_;  // null: none made since the last change
  mutable bool countsChanged_ = false;                             // since the graph read them
};
