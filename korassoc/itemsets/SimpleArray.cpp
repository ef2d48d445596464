#include "korassoc/itemsets/SimpleArray.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "korassoc/itemsets/IntStorage.h"

static_assert(sizeof(int) == 4, "items and counts are stored as 32-bit integers");

namespace {

using korassoc::detail::newInts;

int grownCapacity(int capacity, int increment) {
  constexpr int kMost = std::numeric_limits<int>::max();
  if (capacity == kMost) {
    throw std::bad_array_new_length();
  }
  const int step = std::max(increment, 1);
  return capacity > kMost - step ? kMost : capacity + step;
}

}  // namespace

SimpleArray::SimpleArray(int initialCapacity, int growth)
    : data(newInts(initialCapacity).release()), count(0), capacity(initialCapacity), increment(growth) {}

SimpleArray::SimpleArray(const SimpleArray& other)
    : data(newInts(other.capacity).release()),
      count(other.count),
      capacity(other.capacity),
      increment(other.increment) {
  std::copy_n(other.data, other.count, data);
}

SimpleArray& SimpleArray::operator=(const SimpleArray& other) {
  SimpleArray copy(other);
  std::swap(data, copy.data);
  count = copy.count;
  capacity = copy.capacity;
  increment = copy.increment;
  return *this;
}

SimpleArray::~SimpleArray() { delete[] data; }

int SimpleArray::Add(const int& value) {
  const int added = value;  // value may lie in the array that growing frees
  if (count == capacity) {
    reallocate(grownCapacity(capacity, increment));
  }
  data[count] = added;
  ++count;
  return added;
}

int SimpleArray::RemoveAt(int index) {
  assert(index >= 0 && index < count);
  --count;
  data[index] = data[count];
  return data[index];
}

bool SimpleArray::Remove(const int& value) {
  int* const end = data + count;
  int* const found = std::find(data, end, value);
  if (found == end) {
    return false;
  }
  *found = *(end - 1);
  --count;
  return true;
}

int SimpleArray::Compact() {
  if (capacity > count) {
    reallocate(count);
  }
  return count;
}

void SimpleArray::SetCapacity(int n) {
  const int wanted = std::max(n, count);
  if (wanted != capacity) {
    reallocate(wanted);
  }
}

void SimpleArray::Clear() { count = 0; }

void SimpleArray::Display() const {
  std::string line;
  for (int i = 0; i < count; ++i) {
    line += std::to_string(data[i]);  // decimal, whatever the stream's flags and locale
    line += ' ';
  }
  std::cout << line << std::endl;
}

void SimpleArray::reallocate(int newCapacity) {
  std::unique_ptr<int[]> moved = newInts(newCapacity);
  std::copy_n(data, count, moved.get());
  delete[] data;
  data = moved.release();
  capacity = newCapacity;
}
