// Hands on the itemsets that hold one which was not expected.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "korassoc/engine/ItemsetEnumerator.h"
#include "korassoc/engine/PassedSets.h"

namespace korassoc::detail {

// Lets those sets through that hold a passed set. Passed sets and sink are lent.
class PassedFilter final : public ItemsetSink {
 public:
  PassedFilter(const PassedSets& passed, ItemsetSink& sink) : passed_(passed), sink_(sink) {}

  bool take(const std::uint32_t* ranks, std::size_t n, int count) override;
  bool goesOn() override { return sink_.goesOn(); }

 private:
  const PassedSets& passed_;
  ItemsetSink& sink_;
  std::vector<std::uint32_t> sorted_;
};

}  // namespace korassoc::detail
