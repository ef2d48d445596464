// A growable array of 32-bit integers that keeps its elements ascending.

#pragma once

#include "korassoc/base/Export.h"
#include "korassoc/itemsets/SimpleArray.h"

// An OrderedArray is a SimpleArray whose elements ascend; equal elements stand in order of arrival.
// The fields, the ownership and the errors are those of SimpleArray.
class KORASSOC_EXPORT OrderedArray : public SimpleArray {
 public:
  OrderedArray(int capacity, int increment);
  OrderedArray(const OrderedArray& other);
  OrderedArray& operator=(const OrderedArray& other);
  ~OrderedArray() override;

  // Puts value behind every element that is not greater, and returns it. O(1) when no element is greater.
  int Add(const int& value) override;

  // Removes the element at index, in [0, count), and returns it; the later elements move one place left.
  int RemoveAt(int index) override;

  // Removes the first element equal to value; the later elements move one place left. False when there is
  // none.
  bool Remove(const int& value) override;
};
