// A set of item identifiers: what the dictionary counts, rules are made of and hosts ask with.

#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <utility>

#include "korassoc/base/Export.h"
#include "korassoc/itemsets/ItemStorage.h"

class OrderedArray;

// An ItemSet is an ascending array of 32-bit items with its hash code and two links for the chains of whoever
// stores it.
//
// Invariant: the constructors that insert and addItem() keep the items ascending. Nothing removes repeats and
//   nothing sorts: who feeds an array, or writes through getTheArray() or updateItemSet(), feeds it sorted
//   and free of repeats. The searches and comparisons rely on it.
// Hash code: kept up to date by everything but RemoveItem() and writes through getTheArray(). Sets that were
//   changed so compare and look up by a stale hash code.
// Links: next and prev are not owned. A new set starts with null links; assignment leaves the target's alone.
// Ownership: owns its items. What setUnion(), intersect() and omit() return is new; the caller deletes it.
// Errors: an allocation that fails propagates; positions and lengths are not checked.
// Cost, for n items: the searches O(log n), everything else O(n).
class KORASSOC_EXPORT ItemSet {
 public:
  ItemSet() = default;           // the empty set
  ItemSet(int item);             // {item}
  ItemSet(const ItemSet& s);     // the items and the hash code of s
  ItemSet(ItemSet&& s) noexcept  // the same; s becomes empty and keeps its links
      : items_(std::move(s.items_)), hashCode_(std::exchange(s.hashCode_, 0)) {}
  ItemSet(const ItemSet& s, int item);  // s with item inserted before the first element that is not smaller
  ItemSet(const OrderedArray& a);       // the elements of a
  ItemSet(const OrderedArray& values, const OrderedArray& index);    // values[index[i]] for each i
  ItemSet(const int* values, int nValues, const int* index, int n);  // the same; nValues is not used
  ItemSet(const int* items, int n);                                  // the n items as they stand
  ItemSet(const ItemSet& a, const ItemSet& b);  // the items of a that are not in b, in a's order
  ~ItemSet() = default;

  void operator=(const ItemSet& s);
  void operator=(ItemSet&& s) noexcept {  // s becomes empty and keeps its links
    if (this == &s) return;
    items_ = std::move(s.items_);
    hashCode_ = std::exchange(s.hashCode_, 0);
  }

  int length() const { return items_.length(); }
  int* getTheArray() { return items_.get(); }  // length() items; null when the set never held any
  const int* getTheArray() const { return items_.get(); }
  int getItemAt(int i) const { return items_[static_cast<std::size_t>(i)]; }
  int hashcode() const { return hashCode_; }
  ItemSet* getNext() const { return next_; }
  ItemSet* getPrev() const { return prev_; }
  void setNext(ItemSet* next) { next_ = next; }
  void setPrev(ItemSet* prev) { prev_ = prev; }

  // Inserts item before the first element that is not smaller. An item that the set holds is stored again.
  void addItem(int item);

  // Removes item; false when the set does not hold it. The hash code stays as it was.
  bool RemoveItem(int item);

  // Removes every item and keeps the memory.
  void clear();

  // The position of item, or -1.
  int getItemIndex(int item) const;
  bool hasItem(int item) const;

  // A new set without the item at position, in [0, length()).
  ItemSet* omit(int position) const;

  // A new set with the items of both. other must not be null.
  ItemSet* setUnion(const ItemSet* other) const;

  // A new set with the items that both hold. A null other stands for everything.
  ItemSet* intersect(const ItemSet* other) const;

  // Whether the two have an item in common. A null other answers true.
  bool hasOverlap(const ItemSet* other) const;
  bool hasOverlap(const OrderedArray& a) const;

  // Whether other holds every item of this set. A null other answers true.
  bool isSubsetOf(const ItemSet* other) const;

  // Equal hash codes, lengths and items.
  bool operator==(const ItemSet& s) const;

  // The forms of updateItemSet() write items in place, for one set object that runs through many sets of the
  // same length. The length stays, and where an array is given it holds at least length() elements; the
  // counts given beside the arrays are not used. values must not be this set's own array in the indexed
  // forms.
  void updateItemSet(int item);                  // the item at position 0
  void updateItemSet(int item, int position);    // the item at position
  void updateItemSet(const OrderedArray& a);     // the first length() elements of a
  void updateItemSet(const int* values, int n);  // the first length() values
  void updateItemSet(const OrderedArray& values, const OrderedArray& index);         // values[index[i]]
  void updateItemSet(const int* values, int nValues, const int* index, int nIndex);  // values[index[i]]

  // Writes " " and the item for each item, then " End of Set \n", and flushes; display() to standard output.
  void display() const;
  void Display(std::ostream& out) const;

  // Writes to standard output the hash code, the set and the two sets that it links to.
  void displayAll() const;

  // The record in a binary state: "IS:" with a zero byte, the length, the items. Both return the bytes
  // written or read. A stream that fails is given no further items. Reading writes a line to standard output
  // and returns 0, changing nothing, when there is another tag or fewer items than the length says; a
  // negative length leaves the items as they are. The links become null.
  std::uint64_t writeObject(std::fstream& stream) const;
  std::uint64_t readObject(std::fstream& stream);

  // The record in an XML state: an object "ItemSet" with the length and the items, indented by so many tabs.
  // Both return the lines: the length plus 3. Reading refuses as readObject() does.
  std::uint64_t writeObjectXML(std::ostream& out, int tabs) const;
  std::uint64_t readObjectXML(std::ifstream& in);

 private:
  void itemSetHash();  // brings the hash code up to date

  korassoc::detail::ItemStorage items_;
  int hashCode_ = 0;
  ItemSet* next_ = nullptr;  // not owned
  ItemSet* prev_ = nullptr;  // not owned
};

// The order of sorted containers: fewer items first, then item by item, the smaller first. The hash code has
// no part in it.
KORASSOC_EXPORT bool operator<(const ItemSet& a, const ItemSet& b);
