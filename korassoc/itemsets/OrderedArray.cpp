#include "korassoc/itemsets/OrderedArray.h"

#include <algorithm>
#include <cassert>

OrderedArray::OrderedArray(int initialCapacity, int growth) : SimpleArray(initialCapacity, growth) {}

OrderedArray::OrderedArray(const OrderedArray& other) = default;

OrderedArray& OrderedArray::operator=(const OrderedArray& other) = default;

OrderedArray::~OrderedArray() = default;

int OrderedArray::Add(const int& value) {
  const int added = SimpleArray::Add(value);
  int place = count - 1;
  while (place > 0 && data[place - 1] > added) {
    data[place] = data[place - 1];
    --place;
  }
  data[place] = added;
  return added;
}

int OrderedArray::RemoveAt(int index) {
  assert(index >= 0 && index < count);
  const int removed = data[index];
  std::copy(data + index + 1, data + count, data + index);
  --count;
  return removed;
}

bool OrderedArray::Remove(const int& value) {
  int* const end = data + count;
  int* const found = std::find(data, end, value);
  if (found == end) {
    return false;
  }
  std::copy(found + 1, end, found);
  --count;
  return true;
}
