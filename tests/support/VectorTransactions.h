// A host's transaction source over a list in memory, with a script of misbehaviours for the tests.

#pragma once

#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

#include "korassoc/engine/MultiPassTransIter.h"
#include "korassoc/engine/Transaction.h"

class VectorTransaction final : public Transaction {
 public:
  explicit VectorTransaction(std::vector<int> items) : items_(std::move(items)) {}

  int GetItem(int position) const override {
    if (throwing) throw std::runtime_error("GetItem");
    return items_.at(static_cast<std::size_t>(position));
  }
  int GetTransactionID() const override { throw std::logic_error("the engine asked for a transaction's id"); }
  int GetLength() const override { return length != 0 ? length : static_cast<int>(items_.size()); }

  bool throwing = false;  // GetItem throws
  int length = 0;         // answered by GetLength when not 0

 private:
  std::vector<int> items_;
};

using Transactions = std::vector<std::vector<int>>;

// Gives its transactions in order, over and over after each Restart. The public fields are the script:
// positions count transactions from 0 within a pass, -1 is never.
class VectorTransactions : public MultiPassTransIter {
 public:
  VectorTransactions() = default;
  explicit VectorTransactions(const Transactions& transactions) {
    for (const auto& items : transactions) add(items);
  }

  void add(std::vector<int> items) { transactions_.emplace_back(std::move(items)); }
  VectorTransaction& at(std::size_t position) { return transactions_.at(position); }
  int size() const { return static_cast<int>(transactions_.size()); }
  int position() const { return position_; }  // of the transaction that comes next

  bool HasNext() override {
    ++hasNextCalls;
    if (position_ == throwInHasNextAt) throw std::runtime_error("HasNext");
    return position_ < size();
  }
  Transaction* Next() override {
    ++nextCalls;
    if (position_ == throwInNextAt) throw std::runtime_error("Next");
    if (position_ == nullAt || position_ >= size()) return nullptr;
    return &transactions_[static_cast<std::size_t>(position_++)];
  }
  int Rewind() override { throw std::logic_error("the engine rewound the iterator"); }
  int Restart() override {
    ++restarts;
    if (throwInRestart) throw std::runtime_error("Restart");
    if (restartResult == 0) position_ = 0;
    return restartResult;
  }

  int throwInHasNextAt = -1;
  int throwInNextAt = -1;
  int nullAt = -1;  // Next answers null there and does not move on
  bool throwInRestart = false;
  int restartResult = 0;

  int restarts = 0;
  int hasNextCalls = 0;
  int nextCalls = 0;

 private:
  std::vector<VectorTransaction> transactions_;
  int position_ = 0;
};
