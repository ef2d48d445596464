// The data sets that the benchmarks run on, and a host that gives them to the engine.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "korassoc/engine/MultiPassTransIter.h"
#include "korassoc/engine/SupportSource.h"
#include "korassoc/engine/Transaction.h"

namespace bench {

using Transactions = std::vector<std::vector<int>>;

// A file of baskets, an item a number or a word; words are numbered in order of arrival. Items are separated
// by blanks or commas. Empty when the file cannot be read.
Transactions readBaskets(const std::string& path);

// The path of a data set of the optional folder of verified data, which is named by the environment variable
// KORASSOC_DATA or lies beside the source folder; empty when it is not there.
std::string optionalData(const std::string& name);
// The baskets that come with the source.
std::string exampleData();

// Seconds of processor time that this process has taken: other load on the machine hardly shows in it.
double processorSeconds();

class MemoryTransactions final : public MultiPassTransIter {
 public:
  explicit MemoryTransactions(const Transactions& transactions) : transactions_(transactions) {}
  bool HasNext() override { return next_ < transactions_.size(); }
  Transaction* Next() override {
    current_.items = &transactions_[next_++];
    return &current_;
  }
  int Rewind() override { return Restart(); }
  int Restart() override {
    next_ = 0;
    return 0;
  }

 private:
  class Current final : public Transaction {
   public:
    int GetItem(int position) const override { return (*items)[static_cast<std::size_t>(position)]; }
    int GetTransactionID() const override { return 0; }
    int GetLength() const override { return static_cast<int>(items->size()); }
    const std::vector<int>* items = nullptr;
  };

  const Transactions& transactions_;
  std::size_t next_ = 0;
  Current current_;
};

class ConstantSupport final : public SupportSource {
 public:
  explicit ConstantSupport(double support) : support_(support) {}
  double GetSupport(int) override { return support_; }

 private:
  double support_;
};

}  // namespace bench
