// The parts that the rule document and the lattice document have in common.

#pragma once

#include <memory>
#include <string>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/xml/XMLElement.h"
#include "korassoc/xml/export/ItemIndex.h"

namespace korassoc::detail {

using Element = std::unique_ptr<KorAssocXML::XMLElement>;

// The algorithm that counted the sets, as documents name it.
struct MiningAlgorithm {
  const char* name;     // "CARMA", "Apriori"
  const char* inText;   // within a sentence: "Carma", "Apriori"
  const char* product;  // "Talvane Association Carma C++", ...
};
MiningAlgorithm algorithmOf(const SetDictionary& dictionary);

// A new element without attributes, and one that is a child of parent already.
Element newElement(const char* name);
KorAssocXML::XMLElement& addElement(KorAssocXML::XMLElement& parent, const char* name);

// Adds the Header: the copyright line, the description, and the application that made the document.
void addHeader(KorAssocXML::XMLElement& root, const MiningAlgorithm& algorithm,
               const std::string& description);

// Adds an ItemRef for each of the n items.
void addItemRefs(KorAssocXML::XMLElement& parent, const int* items, int n, const ItemIndex& index);

}  // namespace korassoc::detail
