// Writes the record of a table of sets in an XML state.

#pragma once

#include <cstdint>
#include <iosfwd>

#include "korassoc/dictionary/SetCounter.h"
#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/xml/XMLObj.h"

namespace korassoc::detail {

// An object "HashtablePair" with the number of entries and an object "ISCPair" for each, indented by so many
// tabs. Nothing is added to a stream that has failed.
class TableObjectWriter {
 public:
  TableObjectWriter(std::ostream& out, int entries, int tabs);

  void add(const ItemSet& set, const SetCounter& descriptor);
  // The lines written. To be called last.
  std::uint64_t finish();

 private:
  std::ostream& out_;
  int tabs_;
  KorAssocXML::XMLObj table_;
  KorAssocXML::XMLObj pair_;
  std::uint64_t lines_;
};

}  // namespace korassoc::detail
