#include "korassoc/itemsets/ItemSet.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <iostream>
#include <string>
#include <utility>

#include "korassoc/itemsets/IntStorage.h"
#include "korassoc/itemsets/ItemHash.h"
#include "korassoc/itemsets/OrderedArray.h"

namespace {

using korassoc::detail::ItemStorage;
using korassoc::detail::lengthSum;
using korassoc::detail::newInts;

ItemStorage copyOf(const int* items, int n) {
  ItemStorage copy(n);
  std::copy_n(items, n, copy.get());
  return copy;
}

ItemStorage selectionOf(const int* values, const int* index, int n) {
  ItemStorage selection(n);
  for (int i = 0; i < n; ++i) {
    selection[static_cast<std::size_t>(i)] = values[index[i]];
  }
  return selection;
}

// The n items with item before the first that is not smaller.
ItemStorage insertion(const int* items, int n, int item) {
  ItemStorage result(lengthSum(n, 1));
  const int* const end = items + n;
  const int* const place = std::find_if(items, end, [item](int other) { return other >= item; });
  int* out = std::copy(items, place, result.get());
  *out++ = item;
  std::copy(place, end, out);
  return result;
}

// The position of item among the n ascending items, or -1. Which of several equal items is found is fixed by
// the halving.
int positionOf(int item, const int* items, int n) {
  int low = 0;
  int high = n - 1;
  while (low <= high) {
    const int middle = low + (high - low) / 2;
    if (items[middle] == item) {
      return middle;
    }
    if (items[middle] < item) {
      low = middle + 1;
    } else {
      high = middle - 1;
    }
  }
  return -1;
}

bool overlap(const int* a, int na, const int* b, int nb) {
  int i = 0;
  int j = 0;
  while (i < na && j < nb) {
    if (a[i] == b[j]) {
      return true;
    }
    if (a[i] < b[j]) {
      ++i;
    } else {
      ++j;
    }
  }
  return false;
}

}  // namespace

ItemSet::ItemSet(int item) : ItemSet(&item, 1) {}

ItemSet::ItemSet(const ItemSet& s) : items_(copyOf(s.items_.get(), s.length())), hashCode_(s.hashCode_) {}

ItemSet::ItemSet(const ItemSet& s, int item) : items_(insertion(s.items_.get(), s.length(), item)) {
  itemSetHash();
}

ItemSet::ItemSet(const OrderedArray& a) : ItemSet(a.data, a.count) {}

ItemSet::ItemSet(const OrderedArray& values, const OrderedArray& index)
    : ItemSet(values.data, values.count, index.data, index.count) {}

ItemSet::ItemSet(const int* values, int /*nValues*/, const int* index, int n)
    : items_(selectionOf(values, index, n)) {
  itemSetHash();
}

ItemSet::ItemSet(const int* items, int n) : items_(copyOf(items, n)) { itemSetHash(); }

ItemSet::ItemSet(const ItemSet& a, const ItemSet& b) : items_(a.length()) {
  const int* const bItems = b.items_.get();
  const int* const bEnd = bItems + b.length();
  int n = 0;
  for (int i = 0; i < a.length(); ++i) {
    const int item = a.getItemAt(i);
    if (std::find(bItems, bEnd, item) == bEnd) items_[static_cast<std::size_t>(n++)] = item;
  }
  if (n < a.length() - 1) {  // one spare slot is not worth a second allocation
    items_ = copyOf(items_.get(), n);
  } else {
    items_.shorten(n);
  }
  itemSetHash();
}

void ItemSet::operator=(const ItemSet& s) {
  if (this == &s) {
    return;
  }
  if (length() != s.length()) {
    items_ = copyOf(s.items_.get(), s.length());
  } else {
    std::copy_n(s.items_.get(), length(), items_.get());
  }
  hashCode_ = s.hashCode_;
}

void ItemSet::addItem(int item) {
  items_ = insertion(items_.get(), length(), item);
  itemSetHash();
}

bool ItemSet::RemoveItem(int item) {
  const int position = getItemIndex(item);
  if (position < 0) {
    return false;
  }
  int* const place = items_.get() + position;
  std::copy(place + 1, items_.get() + length(), place);
  items_.shorten(length() - 1);
  return true;
}

void ItemSet::clear() {
  items_.shorten(0);
  hashCode_ = 0;
}

int ItemSet::getItemIndex(int item) const { return positionOf(item, items_.get(), length()); }

bool ItemSet::hasItem(int item) const { return getItemIndex(item) >= 0; }

ItemSet* ItemSet::omit(int position) const {
  assert(position >= 0 && position < length());
  auto result = std::make_unique<ItemSet>();
  result->items_ = ItemStorage(length() - 1);
  const int* const from = items_.get();
  int* const out = std::copy_n(from, position, result->items_.get());
  std::copy(from + position + 1, from + length(), out);
  result->itemSetHash();
  return result.release();
}

ItemSet* ItemSet::setUnion(const ItemSet* other) const {
  if (length() == 0) {
    return new ItemSet(*other);
  }
  if (other->length() == 0) {
    return new ItemSet(*this);
  }
  const std::unique_ptr<int[]> merged = newInts(lengthSum(length(), other->length()));
  int* out = merged.get();
  const int* a = items_.get();
  const int* b = other->items_.get();
  const int* const aEnd = a + length();
  const int* const bEnd = b + other->length();
  while (a != aEnd && b != bEnd) {
    if (*a < *b) {
      *out++ = *a++;
    } else {
      if (*a == *b) {
        ++a;
      }
      *out++ = *b++;
    }
  }
  out = std::copy(a, aEnd, out);
  out = std::copy(b, bEnd, out);
  return new ItemSet(merged.get(), static_cast<int>(out - merged.get()));
}

ItemSet* ItemSet::intersect(const ItemSet* other) const {
  if (other == nullptr) {
    return new ItemSet(*this);
  }
  if (length() == 0 || other->length() == 0) {
    return new ItemSet();
  }
  const std::unique_ptr<int[]> common = newInts(std::min(length(), other->length()));
  int n = 0;
  int i = 0;
  int j = 0;
  while (i < length() && j < other->length()) {
    const int a = getItemAt(i);
    const int b = other->getItemAt(j);
    if (a == b) {
      common[static_cast<std::size_t>(n)] = a;
      ++n;
    }
    i += a <= b ? 1 : 0;
    j += b <= a ? 1 : 0;
  }
  return new ItemSet(common.get(), n);
}

bool ItemSet::hasOverlap(const ItemSet* other) const {
  return other == nullptr || overlap(items_.get(), length(), other->items_.get(), other->length());
}

bool ItemSet::hasOverlap(const OrderedArray& a) const {
  return overlap(items_.get(), length(), a.data, a.count);
}

bool ItemSet::isSubsetOf(const ItemSet* other) const {
  if (other == nullptr) {
    return true;
  }
  if (length() > other->length()) {
    return false;
  }
  if (length() == 0) {
    return true;
  }
  if (length() == other->length()) {
    return *this == *other;
  }
  int matched = 0;
  for (int i = 0; i < other->length() && matched < length(); ++i) {
    const int sought = getItemAt(matched);
    const int item = other->getItemAt(i);
    if (sought < item) {
      return false;
    }
    if (sought == item) {
      ++matched;
    }
  }
  return matched == length();
}

bool ItemSet::operator==(const ItemSet& s) const {
  return hashCode_ == s.hashCode_ && length() == s.length() &&
         std::equal(items_.get(), items_.get() + length(), s.items_.get());
}

void ItemSet::updateItemSet(int item) { updateItemSet(item, 0); }

void ItemSet::updateItemSet(int item, int position) {
  items_[static_cast<std::size_t>(position)] = item;
  itemSetHash();
}

void ItemSet::updateItemSet(const OrderedArray& a) { updateItemSet(a.data, a.count); }

void ItemSet::updateItemSet(const int* values, int /*n*/) {
  if (length() > 0) {  // values may be this set's own array: then memmove is in place, std::copy is not
    std::memmove(items_.get(), values, static_cast<std::size_t>(length()) * sizeof(int));
  }
  itemSetHash();
}

void ItemSet::updateItemSet(const OrderedArray& values, const OrderedArray& index) {
  updateItemSet(values.data, values.count, index.data, index.count);
}

void ItemSet::updateItemSet(const int* values, int /*nValues*/, const int* index, int /*nIndex*/) {
  for (int i = 0; i < length(); ++i) {
    items_[static_cast<std::size_t>(i)] = values[index[i]];
  }
  itemSetHash();
}

void ItemSet::display() const { Display(std::cout); }

void ItemSet::Display(std::ostream& out) const {
  std::string text;
  for (int i = 0; i < length(); ++i) {
    text += ' ';
    text += std::to_string(getItemAt(i));  // decimal, whatever the stream's flags and locale
  }
  text += " End of Set \n";
  out << text << std::flush;
}

void ItemSet::displayAll() const {
  std::cout << "HashCode=" << std::to_string(hashCode_) << ", "
            << "Elements: ";
  display();
  std::cout << "Previous: ";
  if (prev_ != nullptr) {
    prev_->display();
  } else {
    std::cout << "NULL\n";
  }
  std::cout << "Next: ";
  if (next_ != nullptr) {
    next_->display();
  } else {
    std::cout << "NULL\n";
  }
}

void ItemSet::itemSetHash() { hashCode_ = korassoc::detail::hashItems(items_.get(), length()); }

bool operator<(const ItemSet& a, const ItemSet& b) {
  if (a.length() != b.length()) {
    return a.length() < b.length();
  }
  return std::lexicographical_compare(a.getTheArray(), a.getTheArray() + a.length(), b.getTheArray(),
                                      b.getTheArray() + b.length());
}
