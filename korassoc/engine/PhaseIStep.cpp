#include "korassoc/engine/PhaseIStep.h"

#include <algorithm>
#include <functional>
#include <limits>

#include "korassoc/itemsets/ItemCode.h"

namespace korassoc::detail {

namespace {

constexpr std::size_t kAhead = 12;  // look-ups whose memory is on its way

int toCount(long long occurrences) {
  constexpr long long kLowest = std::numeric_limits<int>::min();
  constexpr long long kHighest = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(occurrences, kLowest, kHighest));
}

// While it lives, sets that the dictionary evicts stay usable.
class EvictionHold {
 public:
  explicit EvictionHold(SetDictionary& dictionary) : dictionary_(dictionary) { dictionary_.holdEvicted(); }
  EvictionHold(const EvictionHold&) = delete;
  EvictionHold& operator=(const EvictionHold&) = delete;
  ~EvictionHold() { dictionary_.releaseEvicted(); }

 private:
  SetDictionary& dictionary_;
};

}  // namespace

template <typename Sets>
bool PhaseIStep<Sets>::run(SetDictionary& dictionary, const std::vector<int>& items, const StepBounds& bounds,
                           StepRecords& records) {
  const EvictionHold hold(dictionary);
  work_.clear();
  parents_.clear();
  heldOfUse_ = 0;
  Run run{dictionary, Sets(dictionary), bounds, records, dictionary.isClosed(), items.data() + items.size()};
  return std::all_of(items.begin(), items.end(), [&](const int& item) { return handleItem(run, item); });
}

// item: an element of the transaction. False when the dictionary refused a new set.
template <typename Sets>
bool PhaseIStep<Sets>::handleItem(Run& run, const int& item) {
  const CodedItem coded(item);
  const Set met = run.sets.meet(item, coded.code);
  if (!met.isStored()) return add(run, ItemSetView(&item, 1, coded.code), 0);
  if (met.count() < run.bounds.extendFrom || maxLengthSet_ < 2) return true;
  const std::size_t parents = parents_.size();
  const std::size_t places = work_.size();
  const int longest = run.longest;
  push(run, {met, 1, -1, coded.code}, false);
  if (&item + 1 != run.end) {
    const CodedItem next(*(&item + 1));
    for (std::size_t i = 0; i < std::min(parents + 1, kAhead); ++i) prefetch(run, i, next);
  }
  extended_.assign(places, 0);
  if (!extendAll(run, parents, coded, met.count())) return false;
  if (places > 0) run.records.longestCandidate = std::max(run.records.longestCandidate, longest + 1);
  return true;
}

// Extends the first so many parents. False when the dictionary refused a candidate.
template <typename Sets>
bool PhaseIStep<Sets>::extendAll(Run& run, std::size_t parents, const CodedItem& item, int singleCount) {
  std::size_t place = 0;
  try {
    for (std::size_t i = 0; i < parents; ++i) {
      if (i + kAhead < parents) prefetch(run, i + kAhead, item);
      place = parents_[i];
      const int parent = work_[place].parent;
      if (run.closed && parent >= 0 && extended_[static_cast<std::size_t>(parent)] == 0) continue;
      if (extend(run, place, item, singleCount)) continue;
      noteTried(run, place);
      return false;
    }
  } catch (...) {
    noteTried(run, place);
    throw;
  }
  return true;
}

// The candidates of a step that ends early: of the sets on the work list up to this place.
template <typename Sets>
void PhaseIStep<Sets>::noteTried(Run& run, std::size_t place) const {
  for (std::size_t tried = 0; tried <= place; ++tried)
    run.records.longestCandidate = std::max(run.records.longestCandidate, work_[tried].length + 1);
}

// Counts the set at a place of the work list with item added, or makes it a candidate. False when the
// dictionary refused it.
template <typename Sets>
bool PhaseIStep<Sets>::extend(Run& run, std::size_t place, const CodedItem& item, int singleCount) {
  Found parent = work_[place];  // the list may move
  const std::uint64_t code = parent.code + item.code;
  const Set met = run.sets.meet(parent.set, parent.length, item, code, candidate_);
  const int length = parent.length + 1;
  if (met.isStored()) {
    const bool barren = run.closed && isBarren(run, met);
    extended_[place] = barren ? 0 : 1;
    if (length < maxLengthSet_) push(run, {met, length, static_cast<int>(place), code}, barren);
    return true;
  }
  const StepBounds& bounds = run.bounds;
  const long long parentBound = parent.set.upperBound() - 1;  // before this transaction
  if (parentBound + 1 < bounds.supportBound) return true;
  if (length == 2) {
    const long long missed = std::min({singleCount - 1LL, parentBound, bounds.missedBefore + 1LL});
    if (missed + 1 < bounds.supportBound) return true;
    return add(run, candidate(parent, item), missed);
  }
  long long missed = 0;
  const ItemSetView set = candidate(parent, item);
  if (!checkSubsets(run, set, parentBound, missed)) return true;
  parent.set.noteExtended();
  for (Set& subset : subsets_) subset.noteExtended();
  return add(run, set, missed);
}

template <typename Sets>
void PhaseIStep<Sets>::push(Run& run, const Found& found, bool barren) {
  if (!barren) parents_.push_back(static_cast<std::uint32_t>(work_.size()));
  work_.push_back(found);
  run.longest = std::max(run.longest, found.length);
}

// Starts to fetch what looking for a parent with an item added needs first.
template <typename Sets>
void PhaseIStep<Sets>::prefetch(const Run& run, std::size_t parent, const CodedItem& item) const {
  const Found& found = work_[parents_[parent]];
  run.sets.prefetch(found.length + 1, found.code + item.code);
}

// Whether no superset of a set is stored and none may be added by this transaction: it is too rare to be a
// candidate's parent, as extend() sees it, and to be another of its subsets, as checkSubsets() does. In a
// closed dictionary a superset is stored only while the set is, and add() was told of it then. So nothing is
// to be looked for under such a set, nor under what else it is a subset of; it stays on the work list, which
// shows in its length.
template <typename Sets>
bool PhaseIStep<Sets>::isBarren(const Run& run, const Set& set) const {
  return !set.isExtended() && set.upperBound() < run.bounds.supportBound &&
         run.bounds.averageSupport > static_cast<double>(set.upperBound()) / run.bounds.transaction;
}

// The parent's set with item added; it lasts until the next is asked for.
template <typename Sets>
ItemSetView PhaseIStep<Sets>::candidate(const Found& parent, const CodedItem& item) {
  const int* const items = parent.set.items();
  candidate_.assign(items, items + parent.length);
  candidate_.push_back(item.item);
  return ItemSetView(candidate_.data(), parent.length + 1, parent.code + item.code);
}

// Stores a set that was met for the first time, and may have been missed so often. False when the dictionary
// refused it.
template <typename Sets>
bool PhaseIStep<Sets>::add(Run& run, const ItemSetView& set, long long missed) {
  const CarmaSetDescriptor descriptor(1, run.bounds.transaction, toCount(missed));
  const bool stored = run.dictionary.add(set, descriptor) == 0;
  run.records.longAdded = std::max(run.records.longAdded, set.length);
  releaseUnused(run.dictionary);
  return stored;
}

// Of the sets that this transaction drove out, only those on the work list are still of use. The others go
// from time to time: a long transaction can drive out many times what the memory may hold.
template <typename Sets>
void PhaseIStep<Sets>::releaseUnused([[maybe_unused]] SetDictionary& dictionary) {
  if constexpr (Sets::kMayLeave) {
    const std::size_t enough = 64 + 2 * static_cast<std::size_t>(heldOfUse_) + work_.size() / 8;
    if (static_cast<std::size_t>(dictionary.heldEvicted()) < enough) return;
    used_.clear();
    used_.reserve(work_.size());
    for (const Found& found : work_) used_.push_back(found.set.descriptor());
    std::sort(used_.begin(), used_.end(), std::less<>());
    dictionary.releaseEvictedBut(used_);
    heldOfUse_ = dictionary.heldEvicted();
  }
}

// The candidate's subsets without one of the parent's items each: stored before this transaction and able to
// reach the support, all of them.  (Hidber, SIGMOD 1999, section 3.2)
template <typename Sets>
bool PhaseIStep<Sets>::checkSubsets(Run& run, const ItemSetView& candidate, long long parentBound,
                                    long long& missed) {
  const StepBounds& bounds = run.bounds;
  const int length = candidate.length;
  const int* const items = candidate.items;
  missed = std::min({bounds.transaction - 1LL, parentBound, length - 1LL + bounds.missedBefore});
  subset_.assign(items + 1, items + length);
  subsets_.clear();
  for (int left = 0; left < length - 1; ++left) {
    if (left > 0) subset_[static_cast<std::size_t>(left - 1)] = items[left - 1];
    const std::uint64_t code = candidate.code - itemCode(items[left]);
    const Set subset = run.sets.find({subset_.data(), length - 1, code});
    if (!subset.isStored() || subset.transaction() >= bounds.transaction) return false;
    if (bounds.averageSupport > static_cast<double>(subset.upperBound()) / bounds.transaction) return false;
    missed = std::min(missed, subset.upperBound() - 1);
    subsets_.push_back(subset);
  }
  return true;
}

template class PhaseIStep<EntrySets>;
template class PhaseIStep<PackedSets>;

}  // namespace korassoc::detail
