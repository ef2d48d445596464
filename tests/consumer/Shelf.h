// A small class of a project that builds on korassoc.

#pragma once

#include <vector>

#include "korassoc/korassoc.h"

// A shelf of baskets, whose rules are asked for.
class Shelf : public MultiPassTransIter, public Transaction {
 public:
  explicit Shelf(std::vector<std::vector<int>> baskets) : baskets_(std::move(baskets)) {}

  // The number of rules within these bounds (fractions); -1 when the run failed.
  int countRules(double minSupport, double minConfidence);

  bool HasNext() override { return next_ < baskets_.size(); }
  Transaction* Next() override { return ++next_, this; }
  int Restart() override { return next_ = 0, 0; }
  int Rewind() override { return Restart(); }
  int GetItem(int position) const override { return baskets_[next_ - 1][static_cast<std::size_t>(position)]; }
  int GetLength() const override { return static_cast<int>(baskets_[next_ - 1].size()); }
  int GetTransactionID() const override { return static_cast<int>(next_); }

 private:
  std::vector<std::vector<int>> baskets_;
  std::size_t next_ = 0;
};
