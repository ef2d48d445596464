#include "tests/oracle/PlainStep.h"

#include <algorithm>

#include "tests/oracle/Rounding.h"

namespace oracle {

PlainStep::PlainStep(int maxLengthSet, PlainDictionary& dictionary)
    : maxLengthSet_(maxLengthSet), dictionary_(dictionary) {}

void PlainStep::run(const Items& transaction, double sigmaPrev, double sigma, double supportCount) {
  sigmaPrev_ = sigmaPrev;
  sigma_ = sigma;
  ++nTrans;
  const int length = static_cast<int>(transaction.size());
  meanLength = (nTrans * meanLength + length) / nTrans;
  maxLength = std::max(maxLength, length);

  Items items = transaction;
  std::sort(items.begin(), items.end());
  dictionary_.increment({});
  workList_.clear();

  for (int item : items) {
    Counter* single = dictionary_.increment({item});
    if (single == nullptr) {
      dictionary_.add({item}, Counter{1, nTrans, 0, {}});
      longAdded = std::max(longAdded, 1);
      continue;
    }
    if (single->count < roundedUp(supportCount) || maxLengthSet_ < 2) continue;

    // Only what earlier items put on the list is extended by this one.
    const std::size_t earlier = workList_.size();
    workList_.push_back({{item}, single});
    for (std::size_t j = 0; j < earlier; ++j) {
      const Found base = workList_[j];
      extend(base, item, *single);
    }
  }

  const int size = static_cast<int>(workList_.size());
  maxExt = std::max(maxExt, size);
  aveExt = (size + (nTrans - 1) * aveExt) / nTrans;
}

void PlainStep::extend(const Found& base, int item, const Counter& single) {
  Items candidate = base.set;
  candidate.push_back(item);  // items come in ascending order, so the new one is the last
  const int size = static_cast<int>(candidate.size());
  longestCandidate = std::max(longestCandidate, size);

  Counter* stored = dictionary_.increment(candidate);
  if (stored != nullptr) {
    if (size < maxLengthSet_) workList_.push_back({candidate, stored});
    return;
  }

  const int bound = base.counter->count + base.counter->maxMissed - 1;  // before this transaction
  if (bound + 1 < roundedUp(nTrans * sigma_)) return;
  int maxMissed = 0;
  if (size == 2 ? !boundOfPair(single, bound, maxMissed) : !boundOfLonger(candidate, bound, maxMissed))
    return;
  dictionary_.add(candidate, Counter{1, nTrans, maxMissed, {}});
  longAdded = std::max(longAdded, size);
}

bool PlainStep::boundOfPair(const Counter& single, int bound, int& maxMissed) const {
  maxMissed = std::min(single.count - 1, bound);
  const long long q = roundedDown((nTrans - 1) * sigmaPrev_);
  maxMissed = static_cast<int>(std::min<long long>(maxMissed, q + 1));
  return maxMissed + 1 >= roundedUp(nTrans * sigma_);
}

bool PlainStep::boundOfLonger(const Items& candidate, int bound, int& maxMissed) {
  const long long q = roundedDown((nTrans - 1) * sigmaPrev_);
  const int size = static_cast<int>(candidate.size());
  maxMissed = static_cast<int>(std::min<long long>(std::min(nTrans - 1, bound), size - 1 + q));
  for (std::size_t position = 0; position + 1 < candidate.size(); ++position) {
    const Counter* subset = dictionary_.find(without(candidate, position));
    if (subset == nullptr) return false;
    if (subset->tid >= nTrans) return false;
    const int upper = subset->count + subset->maxMissed;
    if (sigma_ > static_cast<double>(upper) / nTrans) return false;
    maxMissed = std::min(maxMissed, upper - 1);
  }
  return true;
}

}  // namespace oracle
