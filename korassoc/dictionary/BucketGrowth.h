// How many buckets a table of sets has, and which of them a set belongs to.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace korassoc::detail {

// The bucket of a set is its hash code, unsigned, modulo the number of buckets. An insertion that would bring
// the sets above the threshold, 0.75 times the buckets, makes them 2 n + 1 first, once; where int does not
// hold that many, the chains grow instead.
class BucketGrowth {
 public:
  // bucketCount below 1 counts as 1. modCount: how often the table has grown to it.
  explicit BucketGrowth(int bucketCount, int modCount = 0)
      : bucketCount_(std::max(bucketCount, 1)),
        threshold_(static_cast<int>(static_cast<float>(bucketCount_) * kLoadFactor)),
        modCount_(modCount) {}

  int bucketCount() const { return bucketCount_; }
  // The most sets that fit before the table grows.
  int threshold() const { return threshold_; }
  // How often the table grew.
  int modCount() const { return modCount_; }

  std::size_t bucketOf(int hash) const {
    return static_cast<std::size_t>(static_cast<std::uint32_t>(hash) %
                                    static_cast<std::uint32_t>(bucketCount_));
  }

  // Whether a set more, beside so many others, calls for more buckets.
  bool isDue(int others) const { return others >= threshold_ && bucketCount_ <= kMostThatGrow; }
  // What is in use after that.
  BucketGrowth grown() const { return BucketGrowth(2 * bucketCount_ + 1, modCount_ + 1); }

 private:
  static constexpr float kLoadFactor = 0.75F;
  static constexpr int kMostThatGrow = (std::numeric_limits<int>::max() - 1) / 2;

  int bucketCount_;
  int threshold_;
  int modCount_;
};

}  // namespace korassoc::detail
