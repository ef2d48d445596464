#include "korassoc/engine/PhaseIStep.h"

#include <algorithm>
#include <functional>
#include <limits>

#include "korassoc/itemsets/ItemCode.h"

namespace korassoc::detail {

namespace {

constexpr std::size_t kAhead = 24;  // look-ups whose memory is on its way

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
  heldOfUse_ = 0;
  Run run{dictionary, Sets(dictionary), bounds, records, dictionary.isClosed(), items.data() + items.size()};
  return std::all_of(items.begin(), items.end(), [&](const int& item) { return handleItem(run, item); });
}

// item: an element of the transaction. False when the dictionary refused a new set.
template <typename Sets>
bool PhaseIStep<Sets>::handleItem(Run& run, const int& item) {
  const ItemSetView single(&item, 1);
  const Set found = run.sets.increment(1, single.code, [&single] { return single; });
  if (Sets::isNone(found)) return add(run, single, 0);
  const int count = run.sets.count(found, 1);
  if (count < run.bounds.extendFrom || maxLengthSet_ < 2) return true;
  const std::size_t parents = work_.size();
  work_.push_back({found, 1, -1, false, single.code});
  if (&item + 1 != run.end) {
    const std::uint64_t nextCode = itemCode(*(&item + 1));
    for (std::size_t i = 0; i < std::min(parents + 1, kAhead); ++i) prefetch(run, work_[i], nextCode);
  }
  return extendAll(run, parents, single, count);
}

// Extends the first so many sets of the work list. False when the dictionary refused a candidate.
template <typename Sets>
bool PhaseIStep<Sets>::extendAll(Run& run, std::size_t parents, const ItemSetView& item, int singleCount) {
  extended_.assign(parents, 0);
  for (std::size_t i = 0; i < parents; ++i) {
    if (i + kAhead < parents) prefetch(run, work_[i + kAhead], item.code);
    const Found& parent = work_[i];
    if (run.closed && parent.parent >= 0 &&
        (parent.barren || extended_[static_cast<std::size_t>(parent.parent)] == 0)) {
      run.records.longestCandidate = std::max(run.records.longestCandidate, parent.length + 1);
    } else if (!extend(run, i, item, singleCount)) {
      return false;
    }
  }
  return true;
}

// Starts to fetch what looking for the parent with an item added needs first.
template <typename Sets>
void PhaseIStep<Sets>::prefetch(const Run& run, const Found& parent, std::uint64_t itemCode) {
  if (!parent.barren) run.sets.prefetch(parent.length + 1, parent.code + itemCode);
}

// Counts the set at a place of the work list with item added, or makes it a candidate. False when the
// dictionary refused it.
template <typename Sets>
bool PhaseIStep<Sets>::extend(Run& run, std::size_t place, const ItemSetView& item, int singleCount) {
  const Found parent = work_[place];  // the list may move
  const int length = parent.length + 1;
  const std::uint64_t code = parent.code + item.code;
  run.records.longestCandidate = std::max(run.records.longestCandidate, length);
  const Set found = run.sets.increment(length, code, [&] { return candidate(run, parent, item); });
  if (!Sets::isNone(found)) {
    const bool barren = isBarren(run, found, length);
    extended_[place] = barren ? 0 : 1;
    if (length < maxLengthSet_) work_.push_back({found, length, static_cast<int>(place), barren, code});
    return true;
  }
  const StepBounds& bounds = run.bounds;
  const long long parentBound = upperBound(run, parent.set, parent.length) - 1;  // before this transaction
  if (parentBound + 1 < bounds.supportBound) return true;
  if (length == 2) {
    const long long missed = std::min({singleCount - 1LL, parentBound, bounds.missedBefore + 1LL});
    if (missed + 1 < bounds.supportBound) return true;
    return add(run, candidate(run, parent, item), missed);
  }
  long long missed = 0;
  const ItemSetView set = candidate(run, parent, item);
  if (!checkSubsets(run, set, parentBound, missed)) return true;
  run.sets.noteExtended(parent.set, parent.length);
  for (const Set& subset : subsets_) run.sets.noteExtended(subset, parent.length);
  return add(run, set, missed);
}

template <typename Sets>
bool PhaseIStep<Sets>::isBarren(const Run& run, const Set& set, int length) const {
  if (run.sets.isExtended(set, length)) return false;
  const long long bound = upperBound(run, set, length);
  return bound < run.bounds.supportBound &&
         run.bounds.averageSupport > static_cast<double>(bound) / run.bounds.transaction;
}

// The parent's set with item added; it lasts until the next is asked for.
template <typename Sets>
ItemSetView PhaseIStep<Sets>::candidate(const Run& run, const Found& parent, const ItemSetView& item) {
  const auto last = static_cast<std::size_t>(parent.length);
  if (candidate_.size() <= last) candidate_.resize(last + 1);
  int* const items = candidate_.data();
  const int* const parentItems = run.sets.items(parent.set, parent.length);
  for (std::size_t i = 0; i < last; ++i) items[i] = parentItems[i];
  items[last] = item.items[0];
  return ItemSetView(items, parent.length + 1, parent.code + item.code);
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
    for (const Found& found : work_) used_.push_back(found.set.descriptor);
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
    if (Sets::isNone(subset) || run.sets.transaction(subset, length - 1) >= bounds.transaction) return false;
    const long long bound = upperBound(run, subset, length - 1);
    if (bounds.averageSupport > static_cast<double>(bound) / bounds.transaction) return false;
    missed = std::min(missed, bound - 1);
    subsets_.push_back(subset);
  }
  return true;
}

template class PhaseIStep<EntrySets>;
template class PhaseIStep<PackedSets>;

}  // namespace korassoc::detail
