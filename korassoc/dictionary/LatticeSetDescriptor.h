// The descriptor of an itemset in a built lattice.

#pragma once

#include <cstdint>
#include <iosfwd>

#include "korassoc/base/Export.h"
#include "korassoc/dictionary/SetCounter.h"
#include "korassoc/itemsets/OrderedArray.h"

// Adds the links of the lattice: item x stands in `adjacent` exactly when the set with x added is stored too.
class KORASSOC_EXPORT LatticeSetDescriptor : public SetCounter {
 public:
  // For a set that the lattice makes itself: the count is the largest there is, as for a set contained in
  // every transaction of an unbounded run.
  LatticeSetDescriptor();
  // room and growth (both items, growth at least 1) size the adjacency list.
  LatticeSetDescriptor(int initialCount, int transaction, int missed, int room = 10, int growth = 10);
  // Takes count, TID, max missed and, from a lattice descriptor, the adjacent items.
  explicit LatticeSetDescriptor(const SetCounter& source);
  LatticeSetDescriptor(const LatticeSetDescriptor& source);
  LatticeSetDescriptor& operator=(const LatticeSetDescriptor&) = delete;
  ~LatticeSetDescriptor() override;

  void display() const override;
  int getMaxMissed() const override;
  void setMaxMissed(int occurrences) override;
  void decrementMaxMissed() override;
  std::uint64_t writeObject(std::fstream& stream) const override;
  std::uint64_t readObject(std::fstream& stream) override;
  std::uint64_t writeObjectXML(std::ostream& out, int tabs) const override;
  std::uint64_t readObjectXML(std::ifstream& in) override;
  // The transaction at which the set was stored.
  virtual int getCreationTID() const;

  int maxMissed = 0;      // most occurrences that the set can have had before it was stored
  OrderedArray adjacent;  // the items that extend the set to a stored one, ascending
};
