// Where the engine learns the support threshold, which may change from transaction to transaction.

#pragma once

#include "korassoc/base/Export.h"

// Implemented by the host; owned by the CarmaSettings once installed there.
class KORASSOC_EXPORT SupportSource {
 public:
  // The support threshold, a fraction from 0 to 1, that holds at a transaction. Transactions are counted from
  // 1 over all phase I calls of an engine.
  //
  // A threshold that falls finds little that is new: what was pruned under the higher one has lost its
  // counts. Give the lowest threshold from the start, or prune at the end alone (SetRemoveSmallFreq(0)), or
  // find what is missing with RunPhaseIIcomplete.
  //
  // No other number is refused. It enters the average (CarmaAssociationAlgorithm::AverageSupport()) as it is,
  // and what the average comes to decides:
  //
  //   above 1     no set reaches it: there are no candidates, and a pruning leaves the empty set alone
  //   below 0     asks for nothing, as 0 does: every set that a transaction holds becomes a candidate, 2^n
  //               of n items, and none is pruned. What a set may have missed comes out too low
  //   NaN         as 0
  //
  // A NaN makes the average NaN for the rest of the run, whatever comes after it. Plus infinity makes it
  // infinite, and NaN from the next transaction on; wherever the threshold rises after that, the average is
  // infinite again for one transaction. Minus infinity counts as any number below 0, until a higher threshold
  // raises it. A state with such an average can be saved in both formats, but restored in binary alone.
  virtual double GetSupport(int transaction) = 0;

  virtual ~SupportSource();
};
