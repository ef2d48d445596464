#include "tests/oracle/PlainTable.h"

namespace oracle {

namespace {

int thresholdFor(std::size_t buckets) { return static_cast<int>(static_cast<float>(buckets) * 0.75f); }

}  // namespace

PlainTable::PlainTable(int buckets)
    : buckets_(static_cast<std::size_t>(buckets)), threshold_(thresholdFor(buckets_.size())) {}

PlainTable::Chain& PlainTable::chainOf(const Items& key) { return buckets_[hashCode(key) % buckets_.size()]; }

bool PlainTable::put(const Items& key, const Counter& counter) {
  if (contains(key)) return false;
  if (count_ + 1 > threshold_) rehash();
  chainOf(key).push_front(Entry{key, counter});
  ++count_;
  return true;
}

Counter* PlainTable::find(const Items& key) {
  for (Entry& entry : chainOf(key)) {
    if (entry.key == key) return &entry.counter;
  }
  return nullptr;
}

bool PlainTable::remove(const Items& key) {
  Chain& chain = chainOf(key);
  for (auto entry = chain.begin(); entry != chain.end(); ++entry) {
    if (entry->key == key) {
      chain.erase(entry);
      --count_;
      return true;
    }
  }
  return false;
}

void PlainTable::clear() {
  for (Chain& chain : buckets_) chain.clear();
  count_ = 0;
}

std::vector<PlainTable::Entry*> PlainTable::entries() {
  std::vector<Entry*> all;
  for (Chain& chain : buckets_) {
    for (Entry& entry : chain) all.push_back(&entry);
  }
  return all;
}

void PlainTable::rehash() {
  std::vector<Chain> old = std::move(buckets_);
  buckets_ = std::vector<Chain>(2 * old.size() + 1);
  threshold_ = thresholdFor(buckets_.size());
  for (Chain& chain : old) {
    while (!chain.empty()) {
      Chain& target = chainOf(chain.front().key);
      target.splice(target.begin(), chain, chain.begin());
    }
  }
}

}  // namespace oracle
