// One transaction of the host's data, as the engine reads it.

#pragma once

#include "korassoc/base/Export.h"

// Implemented by the host, which keeps every transaction: the engine never deletes one (the destructor is not
// virtual for that reason) and does not look at it any more once it has asked the iterator for the next.
class KORASSOC_EXPORT Transaction {
 public:
  // The item at a position from 0 to GetLength() - 1. Any order, repeats allowed.
  virtual int GetItem(int position) const = 0;

  // The host's own number for the transaction. The engine never calls it.
  virtual int GetTransactionID() const = 0;

  // Number of items. A transaction of zero or negative length is empty.
  virtual int GetLength() const = 0;

 protected:
  ~Transaction() = default;
};
