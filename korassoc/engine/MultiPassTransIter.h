// A walk over the host's transactions that can be made again, as the second phase needs.

#pragma once

#include "korassoc/base/Export.h"
#include "korassoc/engine/TransactionIterator.h"

class KORASSOC_EXPORT MultiPassTransIter : public TransactionIterator {
 public:
  // Goes back to the first transaction, as often as it is called for. Returns 0 when HasNext() and Next()
  // start over from there; any other value says that they cannot.
  virtual int Restart() = 0;
};
