// The itemset lattice as a document: every stored set with its figures and the items that extend it.

#pragma once

#include <iosfwd>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/xml/export/DocumentParts.h"
#include "korassoc/xml/export/ItemIndex.h"

namespace korassoc::detail {

// An AssocLattice document: what the sets were counted from, the items, and level by level the sets in the
// order in which the dictionary holds them.
//
// Ownership: works on the dictionary, which must not change before the document is written.
// Memory: one set's element at a time; the items.
// Errors: those of allocation propagate. A failing stream is the caller's to notice.
class LatticeDocument {
 public:
  // minSupport is written as given.
  LatticeDocument(SetDictionary& dictionary, double minSupport);

  void write(std::ostream& out) const;

 private:
  Element item(int reference) const;
  Element level(int level, double firstId) const;
  Element itemset(const HashTable::Entry& entry, double id) const;

  SetDictionary& dictionary_;
  double minSupport_;
  ItemIndex items_;
  double transactions_;  // at least 1, so that supports can be taken
};

}  // namespace korassoc::detail
