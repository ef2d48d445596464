// ItemSet's record in the XML state format. It stands here because itemsets know nothing of XML.

#include <cstdint>
#include <fstream>
#include <iostream>
#include <vector>

#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/xml/XMLObj.h"
#include "korassoc/xml/XMLReader.h"

using KorAssocXML::ParseValue;

namespace {

// Reads the object. A negative length is taken as it stands, without items. The memory grows with the lines
// that are really there.
bool readItems(std::ifstream& in, int& length, std::vector<int>& items) {
  if (!KorAssocXML::ParseStartObj(in, "ItemSet") || !ParseValue(in, length)) return false;
  for (int i = 0; i < length; ++i) {
    int item = 0;
    if (!ParseValue(in, item)) return false;
    items.push_back(item);
  }
  return KorAssocXML::ParseEndObj(in);
}

}  // namespace

std::uint64_t ItemSet::writeObjectXML(std::ostream& out, int tabs) const {
  const KorAssocXML::XMLObj object("ItemSet", tabs);
  object.StartObj(out);
  object.WriteSubElement(out, length());
  for (int i = 0; i < length() && out.good(); ++i) object.WriteSubElement(out, getItemAt(i));
  object.EndObj(out);
  return static_cast<std::uint64_t>(length()) + 1 + korassoc::detail::kFrameLines;
}

std::uint64_t ItemSet::readObjectXML(std::ifstream& in) {
  int length = 0;
  std::vector<int> items;
  if (!readItems(in, length, items)) {
    std::cout << "Failure reading ItemSet!\n";
    return 0;
  }
  if (length >= 0) *this = ItemSet(items.data(), length);
  itemSetHash();
  next_ = prev_ = nullptr;
  return items.size() + 1 + korassoc::detail::kFrameLines;
}
