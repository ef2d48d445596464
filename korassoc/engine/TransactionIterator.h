// A walk over the host's transactions.

#pragma once

#include "korassoc/base/Export.h"
#include "korassoc/engine/Transaction.h"

// Implemented by the host, which keeps ownership of the iterator and of the transactions it gives out.
class KORASSOC_EXPORT TransactionIterator {
 public:
  // Whether Next() has a transaction to give.
  virtual bool HasNext() = 0;

  // The next transaction, or null when there is none. It must stay valid until the following call of Next().
  virtual Transaction* Next() = 0;

  // The host's own way back to the start. The engine never calls it.
  virtual int Rewind() = 0;

  virtual ~TransactionIterator();
};
