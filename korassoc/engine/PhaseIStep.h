// The phase I step: one transaction's stored sets are counted, and candidates are added.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/EntrySets.h"
#include "korassoc/engine/PackedSets.h"
#include "korassoc/itemsets/ItemCode.h"
#include "korassoc/itemsets/ItemSetView.h"

namespace korassoc::detail {

// What the step decides by, computed once for a transaction.
struct StepBounds {
  int transaction;        // its number, from 1
  int extendFrom;         // count of a one-item set from which on it is extended
  int supportBound;       // a set whose upper bound stays below it is no candidate
  int missedBefore;       // transactions that a set may have missed by the thresholds so far
  double averageSupport;  // fraction
};

// Items of the longest candidate formed, and of the longest set added.
struct StepRecords {
  int longestCandidate = 0;
  int longAdded = 0;
};

// The step keeps a work list of the stored sets that the transaction holds, in the order in which they are
// found; each further item of the transaction extends every set on it by one item:
//
//   items    1  3  8                                 the transaction, ascending
//   work_    {1}  {3} {1 3}  {8} {1 8} {3 8} ...     only stored sets whose one-item sets reach the threshold
//
// Sets is how the dictionary keeps them, EntrySets or PackedSets. Both have:
//
//   Set                  what a look-up finds: whether the set isStored(), and then its values as they are
//                        now; it lasts as long as the step
//   meet(item, code)     counts the set of one item
//   meet(parent, ...)    counts the parent, of so many items, with a larger item added; candidate is room
//                        in which that set can be put together
//   find(set)            the set without counting it
//   prefetch             starts to fetch what meet() looks at first
//   kMayLeave            whether sets may make room for others while the step runs
//
// Ownership: owns its buffers, which are kept from step to step.
// Cost: one look-up for each pair of a work list entry and a later item. Where the dictionary is closed under
// taking subsets, the pair {1 3}, 8 is passed over when {1 8} is not stored, and so is what isBarren().
template <typename Sets>
class PhaseIStep {
 public:
  // maxLengthSet: most items of a stored set.
  explicit PhaseIStep(int maxLengthSet) : maxLengthSet_(maxLengthSet) {}

  // items: ascending, repeats kept. False when the dictionary refused a new set; what was counted so far
  // stays counted. Throws what the dictionary throws.
  bool run(SetDictionary& dictionary, const std::vector<int>& items, const StepBounds& bounds,
           StepRecords& records);
  // Sets on the work list of the step that ran last.
  std::size_t workSize() const { return work_.size(); }

 private:
  using Set = typename Sets::Set;
  struct Found {
    Set set;
    int length;
    int parent;  // the place of this set without its last item; -1: of a set of one item
    std::uint64_t code;
  };
  // One transaction's step.
  struct Run {
    SetDictionary& dictionary;
    Sets sets;
    const StepBounds& bounds;
    StepRecords& records;
    bool closed;      // see SetDictionary::isClosed()
    const int* end;   // of the transaction's items
    int longest = 0;  // items of the longest set on the work list
  };

  bool handleItem(Run& run, const int& item);
  bool extendAll(Run& run, std::size_t parents, const CodedItem& item, int singleCount);
  bool extend(Run& run, std::size_t place, const CodedItem& item, int singleCount);
  void push(Run& run, const Found& found, bool barren);
  void prefetch(const Run& run, std::size_t parent, const CodedItem& item) const;
  void noteTried(Run& run, std::size_t place) const;
  bool isBarren(const Run& run, const Set& set) const;
  bool checkSubsets(Run& run, const ItemSetView& candidate, long long parentBound, long long& missed);
  bool add(Run& run, const ItemSetView& set, long long missed);
  void releaseUnused(SetDictionary& dictionary);
  ItemSetView candidate(const Found& parent, const CodedItem& item);

  int maxLengthSet_;
  std::vector<int> candidate_;  // a stored set and one more item
  std::vector<int> subset_;     // the candidate without one of its items
  std::vector<Set> subsets_;    // those of the candidate that were looked up
  std::vector<Found> work_;
  std::vector<std::uint32_t> parents_;   // the places of those that may have supersets, stored or to be added
  std::vector<char> extended_;           // by place: whether the set with the item at hand may have supersets
  std::vector<const SetCounter*> used_;  // the descriptors on the work list, ascending, to look one up
  int heldOfUse_ = 0;                    // evicted sets that were on the work list when last looked
};

extern template class PhaseIStep<EntrySets>;
extern template class PhaseIStep<PackedSets>;

}  // namespace korassoc::detail
