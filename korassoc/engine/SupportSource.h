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
  virtual double GetSupport(int transaction) = 0;

  virtual ~SupportSource();
};
