#include "korassoc/engine/CarmaCore.h"

#include <algorithm>
#include <functional>
#include <limits>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/engine/Exceptions.h"
#include "korassoc/itemsets/CountBound.h"
#include "korassoc/itemsets/ItemCode.h"

using KorAssoc::KorStatus;

namespace {

constexpr bool kError = false;

int toCount(long long occurrences) {
  constexpr long long kLowest = std::numeric_limits<int>::min();
  constexpr long long kHighest = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(occurrences, kLowest, kHighest));
}

// The most transactions that can hold the set, by what is known of it.
long long upperBound(const SetCounter& descriptor) {
  return static_cast<long long>(descriptor.count) + descriptor.getMaxMissed();
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

CarmaCore::CarmaCore(int maxLengthSet, int maxTranLength) : maxLengthSet_(maxLengthSet) {
  constexpr int kReserveAtMost = 1 << 16;  // a limit set out of reach costs no memory
  items_.reserve(static_cast<std::size_t>(std::clamp(maxTranLength, 0, kReserveAtMost)));
}

void CarmaCore::fetch(const Transaction& transaction) {
  const int length = std::max(transaction.GetLength(), 0);
  items_.clear();
  for (int i = 0; i < length; ++i) items_.push_back(transaction.GetItem(i));
  if (!std::is_sorted(items_.begin(), items_.end())) std::sort(items_.begin(), items_.end());
}

KorStatus CarmaCore::step(SetDictionary& dictionary, const Transaction& transaction, double sigmaPrev,
                          double sigma, double supportCount) {
  const int length = std::max(transaction.GetLength(), 0);
  if (nTrans_ < std::numeric_limits<int>::max()) ++nTrans_;
  meanLength_ = (nTrans_ * meanLength_ + length) / nTrans_;
  maxLength_ = std::max(maxLength_, length);
  sigma_ = sigma;
  fetch(transaction);
  if (dictionary.isLatticeBuilt()) return KorStatus();  // a callback of the transaction has ended phase I

  using korassoc::detail::countBound;
  using korassoc::detail::raisedCountBound;
  const Bounds bounds{raisedCountBound(supportCount), raisedCountBound(nTrans_ * sigma),
                      countBound((nTrans_ - 1) * sigmaPrev), sigma};
  bool stored = true;
  try {
    const EvictionHold hold(dictionary);
    dictionary.increment(ItemSetView(nullptr, 0));
    work_.clear();
    heldOfUse_ = 0;
    if (std::adjacent_find(items_.begin(), items_.end()) != items_.end()) dictionary.setOpen();
    closed_ = dictionary.isClosed();
    for (std::size_t i = 0; stored && i < items_.size(); ++i)
      stored = handleItem(dictionary, items_[i], bounds);
  } catch (...) {
    korassoc::detail::discardCurrentException();
    return KorStatus(40001, kError);
  }
  const auto extension = static_cast<int>(work_.size());
  maxExt_ = std::max(maxExt_, extension);
  aveExt_ = (extension + (nTrans_ - 1) * aveExt_) / nTrans_;
  return stored ? KorStatus() : KorStatus(3, kError);
}

// item: an element of items_. False when the dictionary refused a new set.
bool CarmaCore::handleItem(SetDictionary& dictionary, const int& item, const Bounds& bounds) {
  const ItemSetView single(&item, 1);
  const SetDictionary::Counted counted = dictionary.increment(single);
  if (counted.descriptor == nullptr) {
    return add(dictionary, single, 0);
  }
  if (counted.descriptor->count < bounds.extendFrom || maxLengthSet_ < 2) return true;
  const std::size_t parents = work_.size();
  work_.push_back({counted.items, 1, -1, single.code, counted.descriptor});
  return extendAll(dictionary, parents, single, *counted.descriptor, bounds);
}

// Extends the first so many sets of the work list. False when the dictionary refused a candidate.
bool CarmaCore::extendAll(SetDictionary& dictionary, std::size_t parents, const ItemSetView& item,
                          const SetCounter& single, const Bounds& bounds) {
  constexpr std::size_t kAhead = 12;  // look-ups whose memory is on its way
  extended_.assign(parents, 0);
  for (std::size_t i = 0; i < parents; ++i) {
    if (i + kAhead < parents) {
      const Found& later = work_[i + kAhead];
      dictionary.prefetch(later.length + 1, later.code + item.code);
    }
    const Found& parent = work_[i];
    if (closed_ && parent.parent >= 0 && extended_[static_cast<std::size_t>(parent.parent)] == 0) {
      longestCandidate_ = std::max(longestCandidate_, parent.length + 1);
    } else if (!extend(dictionary, i, item, single, bounds)) {
      return false;
    }
  }
  return true;
}

// Counts the set at a place of the work list with item added, or makes it a candidate. False when the
// dictionary refused it.
bool CarmaCore::extend(SetDictionary& dictionary, std::size_t place, const ItemSetView& item,
                       const SetCounter& single, const Bounds& bounds) {
  const Found parent = work_[place];  // the list may move
  const int length = parent.length + 1;
  const std::uint64_t code = parent.code + item.code;
  longestCandidate_ = std::max(longestCandidate_, length);
  if (dictionary.mayHold(length, code)) {
    const SetDictionary::Counted counted = dictionary.increment(candidate(parent, item));
    if (counted.descriptor != nullptr) {
      extended_[place] = 1;
      if (length < maxLengthSet_) {
        work_.push_back({counted.items, length, static_cast<int>(place), code, counted.descriptor});
      }
      return true;
    }
  }
  const long long parentBound = upperBound(*parent.descriptor) - 1;  // before this transaction
  if (parentBound + 1 < bounds.supportBound) return true;
  long long missed = 0;
  if (length == 2) {
    missed = missedPair(single, bounds, parentBound);
    if (missed + 1 < bounds.supportBound) return true;
  }
  const ItemSetView set = candidate(parent, item);
  if (length > 2 && !checkSubsets(dictionary, set, bounds, parentBound, missed)) return true;
  return add(dictionary, set, toCount(missed));
}

// The parent's set with item added; it lasts until the next is asked for.
ItemSetView CarmaCore::candidate(const Found& parent, const ItemSetView& item) {
  const auto last = static_cast<std::size_t>(parent.length);
  if (candidate_.size() <= last) candidate_.resize(last + 1);
  int* const items = candidate_.data();
  for (std::size_t i = 0; i < last; ++i) items[i] = parent.items[i];
  items[last] = item.items[0];
  return ItemSetView(items, parent.length + 1, parent.code + item.code);
}

// Stores a set that was met for the first time. False when the dictionary refused it.
bool CarmaCore::add(SetDictionary& dictionary, const ItemSetView& set, int missed) {
  const bool stored = dictionary.add(set, CarmaSetDescriptor(1, nTrans_, missed)) == 0;
  longAdded_ = std::max(longAdded_, set.length);
  releaseUnused(dictionary);
  return stored;
}

// Of the sets that this transaction drove out, only those on the work list are still of use. The others go
// from time to time: a long transaction can drive out many times what the memory may hold.
void CarmaCore::releaseUnused(SetDictionary& dictionary) {
  const std::size_t enough = 64 + 2 * static_cast<std::size_t>(heldOfUse_) + work_.size() / 8;
  if (static_cast<std::size_t>(dictionary.heldEvicted()) < enough) return;
  used_.clear();
  used_.reserve(work_.size());
  for (const Found& found : work_) used_.push_back(found.descriptor);
  std::sort(used_.begin(), used_.end(), std::less<>());
  dictionary.releaseEvictedBut(used_);
  heldOfUse_ = dictionary.heldEvicted();
}

// How many occurrences a pair can have missed, at most.
long long CarmaCore::missedPair(const SetCounter& single, const Bounds& bounds, long long parentBound) {
  return std::min({single.count - 1LL, parentBound, bounds.missedBefore + 1LL});
}

// The candidate's subsets without one of the parent's items each: stored before this transaction and able to
// reach the support, all of them.  (Hidber, SIGMOD 1999, section 3.2)
bool CarmaCore::checkSubsets(SetDictionary& dictionary, const ItemSetView& candidate, const Bounds& bounds,
                             long long parentBound, long long& missed) {
  const int length = candidate.length;
  const int* const items = candidate.items;
  missed = std::min({nTrans_ - 1LL, parentBound, length - 1LL + bounds.missedBefore});
  subset_.assign(items + 1, items + length);
  for (int left = 0; left < length - 1; ++left) {
    if (left > 0) subset_[static_cast<std::size_t>(left - 1)] = items[left - 1];
    const std::uint64_t code = candidate.code - korassoc::detail::itemCode(items[left]);
    const SetCounter* subset = dictionary.find({subset_.data(), length - 1, code});
    if (subset == nullptr || subset->getTID() >= nTrans_) return false;
    const long long bound = upperBound(*subset);
    if (bounds.averageSupport > static_cast<double>(bound) / nTrans_) return false;
    missed = std::min(missed, bound - 1);
  }
  return true;
}

void CarmaCore::preparePhaseII(SetDictionary& dictionary, int fromLevel) {
  nTransII_ = 0;
  dictionary.prepareExactCounting(fromLevel);
  exact_.prepare(dictionary, fromLevel);
}

void CarmaCore::stepPhaseII(const SetDictionary& dictionary, const Transaction& transaction) {
  if (nTransII_ < std::numeric_limits<int>::max()) ++nTransII_;
  fetch(transaction);
  std::erase_if(items_, [&dictionary](int item) { return !dictionary.isMarked(item); });
  dictionary.noteCounting();
  exact_.count(items_);
}

void CarmaCore::endPhaseII() { exact_.clear(); }

void CarmaCore::restoreTransactions(int transactions, double averageSupport) {
  nTrans_ = transactions;
  sigma_ = averageSupport;
}

void CarmaCore::restoreStatistics(double averageExtension, int maxExtension, int longestCandidate,
                                  int longAdded) {
  aveExt_ = averageExtension;
  maxExt_ = maxExtension;
  longestCandidate_ = longestCandidate;
  longAdded_ = longAdded;
}
