#include "korassoc/dictionary/PackedLevel.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <typeinfo>

#include "korassoc/itemsets/ItemHash.h"

namespace korassoc::detail {

PackedLevel::PackedLevel(int length, int initialBuckets)
    : length_(length),
      stride_(PackedRecord::kCells + static_cast<std::size_t>(length)),
      chunkBits_(static_cast<int>(std::bit_width(std::max<std::size_t>(kChunkCells / stride_, 1))) - 1),
      buckets_(initialBuckets) {}

bool PackedLevel::canHold(const ItemSet& set, const SetCounter& descriptor) const {
  return set.length() == length_ && typeid(descriptor) == typeid(CarmaSetDescriptor) && descriptor.TID >= 0;
}

PackedRecord PackedLevel::find(const ItemSetView& set) {
  return find(set.code, [&set](const int* items) { return sameItems(items, set.items, set.length); });
}

// Makes room for one set more, so that adding it does not fail.
void PackedLevel::makeRoom() {
  index_.makeRoom();
  if (count_ == chunks_.size() << chunkBits_)
    chunks_.push_back(std::make_unique_for_overwrite<int[]>(stride_ << chunkBits_));
  if (growths_.size() == growths_.capacity()) growths_.reserve(growths_.size() + 8);
}

void PackedLevel::add(const ItemSetView& set, const CarmaSetDescriptor& descriptor) {
  makeRoom();
  const auto number = static_cast<Number>(count_);
  if (buckets_.isDue(count())) {
    growths_.push_back({number, buckets_});
    buckets_ = buckets_.grown();
  }
  append(set.items, descriptor);
  index_.add(set.code, number);
}

void PackedLevel::append(const int* items, const CarmaSetDescriptor& descriptor) {
  int* const to = cells(static_cast<Number>(count_));
  PackedRecord(to).assign(descriptor);
  std::copy(items, items + length_, to + PackedRecord::kCells);
  ++count_;
}

int PackedLevel::removeBelow(int bound) {
  auto growth = growths_.begin();
  Number kept = 0;
  for (Number number = 0; number < count_; ++number) {
    for (; growth != growths_.end() && growth->sets == number; ++growth) growth->sets = kept;
    if (PackedRecord(cells(number)).count() < bound) continue;
    closeGap(number, kept++);
  }
  for (; growth != growths_.end(); ++growth) growth->sets = kept;
  const auto removed = static_cast<int>(count_ - kept);
  if (removed == 0) return 0;
  count_ = kept;
  index_.empty();
  for (Number number = 0; number < kept; ++number) enroll(number);
  return removed;
}

void PackedLevel::closeGap(Number from, Number to) {
  if (from == to) return;
  const int* source = cells(from);
  std::copy(source, source + stride_, cells(to));
}

// The first so many of the order, by rising bucket, each chain from its head.
void PackedLevel::sortByBuckets(const BucketGrowth& buckets, std::vector<Number>& order,
                                std::size_t end) const {
  struct Place {
    std::uint64_t key;  // the bucket and, from the head down, the place in its chain
    Number number;
    bool operator<(const Place& other) const { return key < other.key; }
  };
  std::vector<Place> places;
  places.reserve(end);
  for (std::size_t i = 0; i < end; ++i) {
    const std::uint64_t bucket = buckets.bucketOf(hashItems(items(order[i]), length_));
    places.push_back({bucket << 32U | (end - i), order[i]});
  }
  std::sort(places.begin(), places.end());
  std::transform(places.begin(), places.end(), order.begin(),
                 [](const Place& place) { return place.number; });
}

// The sets in an order in which each chain goes from its end to its head.
std::vector<PackedLevel::Number> PackedLevel::chainOrder() const {
  std::vector<Number> order(count_);
  std::iota(order.begin(), order.end(), Number{0});
  for (const Growth& growth : growths_) sortByBuckets(growth.former, order, growth.sets);
  return order;
}

std::vector<PackedLevel::Number> PackedLevel::tableOrder() const {
  std::vector<Number> order = chainOrder();
  sortByBuckets(buckets_, order, order.size());
  return order;
}

void PackedLevel::fill(HashTable& table) const {
  table.resetBuckets(buckets_.bucketCount(), buckets_.modCount());
  for (const Number number : chainOrder())
    table.emplace(ItemSetView(items(number), length_), descriptor(number));
}

}  // namespace korassoc::detail
