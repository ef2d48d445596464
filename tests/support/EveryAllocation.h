// An operation tried again and again, each time with another allocation that fails.

#pragma once

#include <functional>
#include <memory>
#include <string>

#include "korassoc/engine/KorStatus.h"

// One try of an operation on something of its own.
class Attempt {
 public:
  virtual ~Attempt() = default;
  // The operation, while memory runs out. What it answers, and keeps for answer(), must not need more.
  virtual KorAssoc::KorStatus run() = 0;
  // What it gave and left behind; the same whenever the status is OK.
  virtual std::string answer() = 0;
  // Whether memory that ran out may end in this status.
  virtual bool mayRefuseWith(const KorAssoc::KorStatus& status) const;
  // After a refusal, with memory again: checks that what it left is whole or says that it is not.
  virtual void checkAfterRefusal() {}
  // Whether the operation can be done again after a refusal, and then gives what it would have given.
  virtual bool canBeRepeated() const { return true; }
};

// Makes one attempt with all the memory it wants, to learn how often it asks for some; then one for each of
// these allocations to fail alone, and one for it and all later ones. In a normal run every tenth is tried;
// where KORASSOC_EVERY_ALLOCATION is set, all are. Expects of each: no exception; a refusal, or the
// same answer as with memory, at the latest when it is repeated; and no block that is left when the attempt
// has gone. Standard output and the error stream go nowhere meanwhile. Needs FailingAllocator.cpp.
void failAllocations(const std::function<std::unique_ptr<Attempt>()>& make);
