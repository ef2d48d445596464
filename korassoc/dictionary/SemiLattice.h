// What a host sees of the counted itemsets once they are ordered into a lattice.

#pragma once

#include <iosfwd>
#include <set>
#include <vector>

#include "korassoc/base/Export.h"
#include "korassoc/engine/KorStatus.h"
#include "korassoc/itemsets/ItemSet.h"

// The stored itemsets with their counts, ordered by inclusion. The order of the virtual operations is part of
// the binary interface: new ones are added at the end of the derived class.
class KORASSOC_EXPORT SemiLattice {
 public:
  // The number of stored itemsets, the empty one included; those on disk count too.
  virtual int getTotalSetCount() const = 0;
  // How many levels from level 1 on hold sets, up to the first that is empty.
  virtual int getHighestLevel() const = 0;
  // The number of stored sets of this many items.
  virtual int getLevelSize(int level) const = 0;
  // The number of sets in memory of more than this many items.
  virtual int getSizeAboveLevel(int level) const = 0;
  // Writes every stored set with its figures as a lattice document. minSupport is a remark in it and selects
  // nothing. The stream's state is the caller's to look at.
  virtual KorAssoc::KorStatus exportLatticeXML(std::ostream& out, double minSupport) = 0;
  // Asks a rule creation that is running to stop; every later one stops as well.
  virtual void setRestartFailed() = 0;
  virtual ~SemiLattice();
};
