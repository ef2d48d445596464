// A growable array of 32-bit integers in no particular order: a bag with removal in constant time.

#pragma once

#include "korassoc/base/Export.h"

// A SimpleArray keeps its elements in data[0 .. count). Its fields are open to readers; who writes them keeps
// 0 <= count <= capacity, and data allocated with new[] for capacity elements (null for none).
//
// Ownership: owns data. A copy owns its own array, of the same capacity and increment.
// Errors: an allocation that fails propagates, and so does growth past 2147483647 elements
//   (std::bad_array_new_length); the array is then unchanged. Positions are not checked.
class KORASSOC_EXPORT SimpleArray {
 public:
  // Room for capacity elements, none in use. increment is how many elements are added when the room runs out;
  // it is stored as given, and an increment below 1 makes the array grow by one element.
  SimpleArray(int capacity, int increment);
  SimpleArray(const SimpleArray& other);
  SimpleArray& operator=(const SimpleArray& other);
  virtual ~SimpleArray();

  // Puts value behind the last element and returns it. value may be an element of this array.
  virtual int Add(const int& value);

  // Removes the element at index, in [0, count): the last element takes its place and is returned. O(1).
  virtual int RemoveAt(int index);

  // Removes the first element equal to value, the last element taking its place. False when there is none.
  virtual bool Remove(const int& value);

  // Gives back the room behind the last element. Returns count.
  virtual int Compact();

  // Makes room for exactly n elements, or for count when n is smaller.
  virtual void SetCapacity(int n);

  // Removes all elements and keeps the room.
  virtual void Clear();

  // Writes to standard output each element followed by a blank, then a line end.
  void Display() const;

  int* data;      // owned
  int count;      // elements in use
  int capacity;   // elements allocated
  int increment;  // elements added when the room runs out

 private:
  void reallocate(int newCapacity);
};
