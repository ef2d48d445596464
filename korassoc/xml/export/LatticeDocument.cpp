#include "korassoc/xml/export/LatticeDocument.h"

#include <ostream>
#include <string>
#include <vector>

#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/xml/XMLTree.h"
#include "korassoc/xml/export/DocumentVocabulary.h"
#include "korassoc/xml/export/ElementSequence.h"

using KorAssocXML::XMLDocType;
using KorAssocXML::XMLElement;

namespace korassoc::detail {
namespace {

std::vector<int> itemsOfLevelOne(const SetDictionary& dictionary) {
  std::vector<int> items;
  dictionary.levelTable(1).forEach(
      [&](const HashTable::Entry& entry) { items.push_back(entry.key->getItemAt(0)); });
  return items;
}

// Without transactions the supports are the counts.
double divisorFor(int transactions) { return transactions == 0 ? 1 : transactions; }

}  // namespace

LatticeDocument::LatticeDocument(SetDictionary& dictionary, double minSupport)
    : dictionary_(dictionary),
      minSupport_(minSupport),
      items_(itemsOfLevelOne(dictionary)),
      transactions_(divisorFor(dictionary.getEmptySetCount())) {}

void LatticeDocument::write(std::ostream& out) const {
  const MiningAlgorithm algorithm = algorithmOf(dictionary_);
  const std::unique_ptr<XMLDocType> docType(XMLDocType::Create("AssocLattice", kLatticeDtd, 0));
  const Element root = newElement("AssocLattice");
  root->AddAttribute("version", "1.0");
  addHeader(*root, algorithm,
            std::string("Lattice from ") + algorithm.inText + " model for association rules");

  XMLElement& fields = addElement(*root, "DataDictionary");
  fields.AddAttribute("numberOfFields", 1);
  XMLElement& field = addElement(fields, "DataField");
  field.AddAttribute("name", "item");
  field.AddAttribute("optype", "categorical");

  XMLElement& model = addElement(*root, "AssociationModelLattice");
  XMLElement& stats = addElement(model, "AssocInputStats");
  stats.AddAttribute("numberOfTransactions", transactions_);
  stats.AddAttribute("minimumSupport", minSupport_);
  stats.AddAttribute("lengthLimit", dictionary_.maxLevel());
  stats.AddAttribute("numberOfItems", items_.count());
  stats.AddAttribute("numberOfItemsets", dictionary_.getTotalSetCount());

  model.AddElement(ElementSequence::Create([this](const ElementSequence::Sink& sink) {
    for (int reference = 1; reference <= items_.count(); ++reference) {
      if (!sink(*item(reference))) return;
    }
  }));
  model.AddElement(ElementSequence::Create([this](const ElementSequence::Sink& sink) {
    double firstId = 1;
    for (long long number = 0; number <= dictionary_.maxLevel(); ++number) {
      const int levelNumber = static_cast<int>(number);
      if (!sink(*level(levelNumber, firstId))) return;
      firstId += dictionary_.levelTable(levelNumber).count();
    }
  }));
  WriteTree(out, docType.get(), root.get(), true);
}

Element LatticeDocument::item(int reference) const {
  const int value = items_.itemAt(reference);
  Element element = newElement("Item");
  element->AddAttribute("id", reference);
  element->AddAttribute("value", value);
  element->AddAttribute("count", dictionary_.getCount(value));
  return element;
}

Element LatticeDocument::level(int level, double firstId) const {
  Element element = newElement("LatticeLevel");
  element->AddAttribute("level", level);
  element->AddAttribute("numberOfSets", dictionary_.getLevelSize(level));
  const HashTable& table = dictionary_.levelTable(level);
  if (table.count() == 0) return element;
  element->AddElement(ElementSequence::Create([this, &table, firstId](const ElementSequence::Sink& sink) {
    double id = firstId;
    bool wanted = true;
    table.forEach([&](const HashTable::Entry& entry) {
      if (wanted) wanted = sink(*itemset(entry, id++));
    });
  }));
  return element;
}

Element LatticeDocument::itemset(const HashTable::Entry& entry, double id) const {
  const ItemSet& set = *entry.key;
  const int count = entry.descriptor != nullptr ? entry.descriptor->count : 0;
  Element element = newElement("Itemset");
  element->AddAttribute("id", id);
  element->AddAttribute("count", count);
  element->AddAttribute("support", count / transactions_);
  element->AddAttribute("numberOfItems", set.length());
  addItemRefs(*element, set.getTheArray(), set.length(), items_);

  // Only a built lattice has links.
  const auto* descriptor = dynamic_cast<const LatticeSetDescriptor*>(entry.descriptor);
  const int links = descriptor != nullptr ? descriptor->adjacent.count : 0;
  XMLElement& adjacent = addElement(*element, "AdjacentList");
  adjacent.AddAttribute("numberOfItems", links);
  if (links > 0) addItemRefs(adjacent, descriptor->adjacent.data, links, items_);
  return element;
}

}  // namespace korassoc::detail
