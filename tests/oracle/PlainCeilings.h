// The plain engine's support ceilings: chunks of consecutive transactions, each under one ceiling.

#pragma once

#include <vector>

namespace oracle {

class PlainCeilings {
 public:
  struct Chunk {
    double ceiling;
    int count;  // transactions
  };

  // Takes in the support of the next transaction. A fall opens a chunk; a rise lifts every lower ceiling.
  void add(double support);

  double average() const { return average_; }  // 0 before the first transaction
  const std::vector<Chunk>& chunks() const { return chunks_; }

 private:
  std::vector<Chunk> chunks_;
  double average_ = 0;
  int total_ = 0;
};

}  // namespace oracle
