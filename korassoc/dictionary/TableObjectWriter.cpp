#include "korassoc/dictionary/TableObjectWriter.h"

#include <ostream>

#include "korassoc/xml/XMLReader.h"

namespace korassoc::detail {

TableObjectWriter::TableObjectWriter(std::ostream& out, int entries, int tabs)
    : out_(out), tabs_(tabs), table_("HashtablePair", tabs), pair_("ISCPair", tabs + 1) {
  table_.StartObj(out_);
  table_.WriteSubElement(out_, entries);
  lines_ = kFrameLines + 1;
}

void TableObjectWriter::add(const ItemSet& set, const SetCounter& descriptor) {
  if (!out_.good()) return;
  pair_.StartObj(out_);
  lines_ += set.writeObjectXML(out_, tabs_ + 2);
  lines_ += descriptor.writeObjectXML(out_, tabs_ + 2);
  pair_.EndObj(out_);
  lines_ += kFrameLines;
}

std::uint64_t TableObjectWriter::finish() {
  table_.EndObj(out_);
  return lines_;
}

}  // namespace korassoc::detail
