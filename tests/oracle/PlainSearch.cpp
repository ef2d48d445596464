#include "tests/oracle/PlainSearch.h"

#include <algorithm>

#include "tests/oracle/PlainQueue.h"

namespace oracle {

namespace {

bool isReported(const Items& set, const Counter& counter, const SearchBounds& bounds) {
  const int length = static_cast<int>(set.size());
  return counter.count >= bounds.minCount && counter.count <= bounds.maxCount && length >= bounds.minLength;
}

// Expands the sets of work, each by the items of its list; allowed null: by every item.
void walk(PlainDictionary& dictionary, ItemsSet& work, const Items* allowed, const SearchBounds& bounds,
          ItemsSet& out) {
  while (!work.empty()) {
    const Items set = *work.begin();
    const Counter* counter = dictionary.find(set);
    for (int item : counter->adjacent) {
      if (allowed != nullptr && !std::binary_search(allowed->begin(), allowed->end(), item)) continue;
      const Items larger = with(set, item);
      const int length = static_cast<int>(larger.size());
      const Counter* largerCounter = dictionary.find(larger);
      if (largerCounter == nullptr || largerCounter->count < bounds.minCount || length > bounds.maxLength)
        continue;
      if (out.count(larger) != 0) continue;
      if (isReported(larger, *largerCounter, bounds)) out.insert(larger);
      if (length < bounds.maxLength) work.insert(larger);
    }
    work.erase(set);
  }
}

ItemsSet searchUp(PlainDictionary& dictionary, const Items& base, const Items* allowed,
                  const SearchBounds& bounds) {
  ItemsSet out;
  const int length = static_cast<int>(base.size());
  const Counter* counter = dictionary.find(base);
  if (length > bounds.maxLength || counter == nullptr) return out;
  if (isReported(base, *counter, bounds)) out.insert(base);
  ItemsSet work;
  if (counter->count >= bounds.minCount && length < bounds.maxLength) work.insert(base);
  walk(dictionary, work, allowed, bounds, out);
  return out;
}

}  // namespace

ItemsSet findItemSets2(PlainDictionary& dictionary, const Items& base, const SearchBounds& bounds) {
  return searchUp(dictionary, base, nullptr, bounds);
}

ItemsSet findItemSets3(PlainDictionary& dictionary, const Items& base, const Items& allowed,
                       const SearchBounds& bounds) {
  return searchUp(dictionary, base, &allowed, bounds);
}

ItemsSet findItemSetsWithin(PlainDictionary& dictionary, const Items& items, const SearchBounds& bounds) {
  ItemsSet out;
  ItemsSet work;
  for (int item : items) {
    const Counter* counter = dictionary.find({item});
    if (counter == nullptr) continue;
    if (counter->count >= bounds.minCount && bounds.maxLength > 1) work.insert({item});
    if (bounds.minLength < 2 && counter->count >= bounds.minCount && counter->count <= bounds.maxCount) {
      out.insert({item});
    }
  }
  walk(dictionary, work, nullptr, bounds, out);
  return out;
}

double findSupport(PlainDictionary& dictionary, const Items& base, int k) {
  const Counter* counter = dictionary.find(base);
  if (counter == nullptr) return -1.0;
  PlainQueue queue;
  queue.push(base, counter);
  std::set<Items> takenSets;
  int taken = 0;
  int last = 0;
  while (!queue.empty() && taken < k) {
    const PlainQueue::Candidate top = queue.pop();
    takenSets.insert(top.set);
    ++taken;
    last = top.counter->count;
    for (int item : top.counter->adjacent) {
      const Items larger = with(top.set, item);
      const Counter* largerCounter = dictionary.find(larger);
      if (largerCounter != nullptr && takenSets.count(larger) == 0) queue.push(larger, largerCounter);
    }
  }
  return taken < k ? -1.0 : static_cast<double>(last) / dictionary.emptySetCount();
}

}  // namespace oracle
