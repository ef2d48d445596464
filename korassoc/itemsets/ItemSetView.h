// A look at an itemset that somebody else holds.

#pragma once

#include "korassoc/itemsets/ItemHash.h"
#include "korassoc/itemsets/ItemSet.h"

// The ascending items of a set with their hash code: the one form to which every form of a set argument
// (array, index selection, single item, ItemSet) is reduced before it is looked up. Owns nothing.
struct ItemSetView {
  ItemSetView(const int* setItems, int setLength)
      : ItemSetView(setItems, setLength, korassoc::detail::hashItems(setItems, setLength)) {}
  // For callers that know the hash code already.
  ItemSetView(const int* setItems, int setLength, int hashCode)
      : items(setItems), length(setLength), hash(hashCode) {}
  explicit ItemSetView(const ItemSet& set) : ItemSetView(set.getTheArray(), set.length(), set.hashcode()) {}

  const int* items;
  int length;
  int hash;
};
