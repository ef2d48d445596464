#include "korassoc/xml/export/DocumentParts.h"

#include "korassoc/base/Version.h"

using KorAssocXML::XMLElement;

namespace korassoc::detail {

MiningAlgorithm algorithmOf(const SetDictionary& dictionary) {
  const bool carma = dictionary.isBitsetOff();
  return {carma ? "CARMA" : "Apriori", carma ? "Carma" : "Apriori", applicationName(carma)};
}

Element newElement(const char* name) { return Element(XMLElement::Create(name)); }

XMLElement& addElement(XMLElement& parent, const char* name) {
  Element child = newElement(name);
  XMLElement& added = *child;
  parent.AddElement(child.release());
  return added;
}

void addHeader(XMLElement& root, const MiningAlgorithm& algorithm, const std::string& description) {
  XMLElement& header = addElement(root, "Header");
  header.AddAttribute("copyright", copyrightNotice());
  header.AddAttribute("description", description);
  XMLElement& application = addElement(header, "Application");
  application.AddAttribute("name", algorithm.product);
  application.AddAttribute("version", applicationVersion());
}

void addItemRefs(XMLElement& parent, const int* items, int n, const ItemIndex& index) {
  for (int i = 0; i < n; ++i)
    addElement(parent, "ItemRef").AddAttribute("itemRef", index.referenceOf(items[i]));
}

}  // namespace korassoc::detail
